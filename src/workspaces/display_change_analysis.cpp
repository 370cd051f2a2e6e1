#include "workspaces/display_change_analysis.h"

#include <array>
#include <utility>

namespace corvetta {

namespace {

constexpr std::array<std::pair<DisplayChangeType, std::string_view>, 8> kRawValues{{
    {DisplayChangeType::noChange, "no_change"},
    {DisplayChangeType::displayAdded, "display_added"},
    {DisplayChangeType::displayRemoved, "display_removed"},
    {DisplayChangeType::displayReplaced, "display_replaced"},
    {DisplayChangeType::mainDisplayChanged, "main_display_changed"},
    {DisplayChangeType::positionChanged, "position_changed"},
    {DisplayChangeType::potentialRestart, "potential_restart"},
    {DisplayChangeType::identicalMonitorSwap, "identical_monitor_swap"},
}};

}  // namespace

std::string_view rawValue(DisplayChangeType type) {
    for (const auto& [value, text] : kRawValues) {
        if (value == type) {
            return text;
        }
    }
    return {};
}

std::optional<DisplayChangeType> displayChangeTypeFromRawValue(std::string_view text) {
    for (const auto& [value, name] : kRawValues) {
        if (name == text) {
            return value;
        }
    }
    return std::nullopt;
}

}  // namespace corvetta
