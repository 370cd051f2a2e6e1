// action_titles.h: The four lists of titles under which menus and settings show window actions.
#pragma once

#include <span>
#include <string_view>

namespace corvetta {

// How an action is shown to the user. The key name is also the action's shortcut name.
struct ActionTitle {
    std::string_view title;
    std::string_view keyName;

    bool operator==(const ActionTitle&) const = default;
};

// The four groups menus and settings show, each in its display order.
std::span<const ActionTitle> halvesActionTitles();
std::span<const ActionTitle> quartersActionTitles();
std::span<const ActionTitle> thirdsActionTitles();
// Includes the two display moves, which are shortcut commands rather than window directions.
std::span<const ActionTitle> otherActionTitles();

}  // namespace corvetta
