#include "layouts/layout_template.h"

#include <algorithm>

namespace corvetta {

namespace {

// The thirds are the nearest doubles of 1/3 and 2/3, never rounded decimals, so three columns
// meet exactly where the window actions' thirds do.
constexpr double kThird = 1.0 / 3;
constexpr double kTwoThirds = 2.0 / 3;

const std::vector<LayoutTemplateRow>& rows() {
    static const std::vector<LayoutTemplateRow> table = {
        {LayoutTemplate::full,
         "full",
         "Full",
         "1 window taking the full screen",
         {{0, 0, 1, 1}},
         "applyLayoutFull"},
        {LayoutTemplate::halves,
         "halves",
         "Halves",
         "2 windows side by side",
         {{0, 0, 0.5, 1}, {0.5, 0, 0.5, 1}},
         "applyLayoutHalves"},
        {LayoutTemplate::thirds,
         "thirds",
         "Thirds",
         "3 windows in equal columns",
         {{0, 0, kThird, 1}, {kThird, 0, kThird, 1}, {kTwoThirds, 0, kThird, 1}},
         "applyLayoutThirds"},
        {LayoutTemplate::fourths,
         "fourths",
         "Fourths",
         "4 windows in a 2×2 grid",
         {{0, 0.5, 0.5, 0.5}, {0.5, 0.5, 0.5, 0.5}, {0, 0, 0.5, 0.5}, {0.5, 0, 0.5, 0.5}},
         "applyLayoutFourths"},
        {LayoutTemplate::mainLeft,
         "mainLeft",
         "Main Left",
         "Large window left, 2 stacked right",
         {{0, 0, 0.5, 1}, {0.5, 0.5, 0.5, 0.5}, {0.5, 0, 0.5, 0.5}},
         "applyLayoutMainLeft"},
        {LayoutTemplate::mainRight,
         "mainRight",
         "Main Right",
         "Large window right, 2 stacked left",
         {{0.5, 0, 0.5, 1}, {0, 0.5, 0.5, 0.5}, {0, 0, 0.5, 0.5}},
         "applyLayoutMainRight"},
    };
    return table;
}

}  // namespace

std::span<const LayoutTemplateRow> layoutTemplateTable() {
    return rows();
}

const LayoutTemplateRow& layoutTemplateRow(LayoutTemplate value) {
    return rows()[static_cast<std::size_t>(value)];
}

std::optional<LayoutTemplate> layoutTemplateFromRawValue(std::string_view rawValue) {
    const auto& table = rows();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const auto& row) { return row.rawValue == rawValue; });
    return found == table.end() ? std::nullopt : std::optional(found->value);
}

}  // namespace corvetta
