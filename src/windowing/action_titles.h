// action_titles.h: The window actions' titles for menus and settings, in groups.
#pragma once

#include <array>
#include <string_view>

namespace corvetta {

// How an action is shown to the user. The key name is also the action's shortcut name.
struct ActionTitle {
    std::string_view title;
    std::string_view keyName;

    bool operator==(const ActionTitle&) const = default;
};

// The four groups menus and settings show, each in its display order.
const std::array<ActionTitle, 4>& halvesActionTitles();
const std::array<ActionTitle, 4>& quartersActionTitles();
const std::array<ActionTitle, 9>& thirdsActionTitles();
// Includes the two display moves, which are shortcut commands rather than window directions.
const std::array<ActionTitle, 4>& otherActionTitles();

}  // namespace corvetta
