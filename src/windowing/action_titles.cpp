#include "windowing/action_titles.h"

#include <array>

#include "windowing/window_action_rows.h"

namespace corvetta {

namespace {

constexpr std::size_t groupSize(ActionGroup group) {
    std::size_t size = 0;
    for (const auto& row : kKeyedWindowActionRows) {
        size += row.group == group;
    }
    return size;
}

// A group's rows ordered by their menu slots.
template <ActionGroup group>
constexpr auto titlesOf() {
    std::array<ActionTitle, groupSize(group)> titles{};
    for (const auto& row : kKeyedWindowActionRows) {
        if (row.group == group) {
            titles.at(static_cast<std::size_t>(row.slot)) = {row.title, row.keyName};
        }
    }
    return titles;
}

constexpr auto kHalves = titlesOf<ActionGroup::halves>();
constexpr auto kQuarters = titlesOf<ActionGroup::quarters>();
constexpr auto kThirds = titlesOf<ActionGroup::thirds>();
constexpr auto kOther = titlesOf<ActionGroup::other>();

}  // namespace

std::span<const ActionTitle> halvesActionTitles() {
    return kHalves;
}

std::span<const ActionTitle> quartersActionTitles() {
    return kQuarters;
}

std::span<const ActionTitle> thirdsActionTitles() {
    return kThirds;
}

std::span<const ActionTitle> otherActionTitles() {
    return kOther;
}

}  // namespace corvetta
