#include "app/status_menu.h"

#include <algorithm>
#include <span>

#include "windowing/action_titles.h"
#include "windowing/window_action_rows.h"

namespace corvetta {

std::optional<std::string_view> windowActionCommand(std::string_view shortcutName) {
    const WindowActionRow* row = findWindowActionByKeyName(shortcutName);
    return row ? std::optional(row->command) : std::nullopt;
}

std::optional<std::string_view> windowActionShortcutName(std::string_view command) {
    const WindowActionRow* row = findWindowActionByCommand(command);
    return row ? std::optional(row->keyName) : std::nullopt;
}

StatusMenu StatusMenu::build(const StatusMenuState& state, const ShortcutLabelLookup& labelFor) {
    StatusMenu menu;
    auto& items = menu.items_;
    const auto separator = [&] { items.push_back(MenuItem{.isSeparator = true}); };
    if (!state.isAccessibilityPermissionGranted) {
        items.push_back(
            {.title = "Grant Accessibility Access…", .command = kRequestPermissionCommand});
        separator();
    }
    if (!state.hideWindowManagementMenuItems) {
        // Without the permission no window can be moved, so the actions are shown but greyed.
        const bool actionsEnabled =
            state.isAccessibilityPermissionGranted && state.isWindowManagementEnabled;
        const auto addGroup = [&](std::span<const ActionTitle> group) {
            for (const auto& action : group) {
                items.push_back({.title = std::string(action.title),
                                 .command = std::string(*windowActionCommand(action.keyName)),
                                 .shortcutLabel = labelFor(action.keyName),
                                 .isEnabled = actionsEnabled});
            }
            separator();
        };
        addGroup(halvesActionTitles());
        addGroup(quartersActionTitles());
        addGroup(thirdsActionTitles());
        addGroup(otherActionTitles());
    }
    items.push_back(
        {.title = "Quit Corvetta", .command = kQuitCommand, .shortcutLabel = labelFor("quitApp")});
    return menu;
}

std::optional<MenuItem> StatusMenu::item(std::string_view command) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [&](const MenuItem& item) { return item.command == command; });
    if (found == items_.end()) {
        return std::nullopt;
    }
    return *found;
}

}  // namespace corvetta
