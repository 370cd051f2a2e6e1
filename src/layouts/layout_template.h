// layout_template.h: The six built-in pane arrangements that seed and restore the user's layouts.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/geometry.h"

namespace corvetta {

// The arrangements that ship with the program. They exist as data only: the layout store makes
// user-editable copies of them. Iterated in declaration order, which seeding and restoring follow.
enum class LayoutTemplate { full, halves, thirds, fourths, mainLeft, mainRight };

// One built-in arrangement. Panes are unit rectangles of the usable area, origin at its lower-left
// corner and y upward, in fill order (the main pane first, the upper of a stacked pair first).
struct LayoutTemplateRow {
    LayoutTemplate value;
    std::string_view rawValue;
    std::string_view name;
    std::string_view description;
    std::vector<Rect> panes;
    // The shortcut name the case had before templates carried their own shortcuts.
    std::string_view legacyShortcutName;
};

// Every case, in enumeration order.
std::span<const LayoutTemplateRow> layoutTemplateTable();
const LayoutTemplateRow& layoutTemplateRow(LayoutTemplate value);
std::optional<LayoutTemplate> layoutTemplateFromRawValue(std::string_view rawValue);

}  // namespace corvetta
