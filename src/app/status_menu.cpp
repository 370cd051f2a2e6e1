#include "app/status_menu.h"

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

namespace {

class MenuWriter {
public:
    MenuWriter(const StatusMenuState& state, const ShortcutLabelLookup& labelFor)
        : state_(state), labelFor_(labelFor) {}

    // A row whose shortcut, if any, is `shortcutName`'s; a refused combination is marked so a
    // key that does nothing is never a mystery.
    MenuItem row(std::string title, std::string command, std::string_view shortcutName = {},
                 bool enabled = true) const {
        MenuItem item{
            .title = std::move(title), .command = std::move(command), .isEnabled = enabled};
        if (!shortcutName.empty()) {
            item.shortcutLabel = labelFor_(shortcutName);
            item.isShortcutInUse =
                !item.shortcutLabel.empty() && state_.shortcutsInUse.contains(shortcutName);
            if (item.isShortcutInUse) {
                item.shortcutLabel += StatusMenu::kInUseSuffix;
            }
        }
        return item;
    }

    // A submenu of records; with none, one disabled row says so.
    MenuItem records(std::string title, const std::vector<MenuRecord>& records, const char* command,
                     const char* emptyTitle, std::string_view checkedId = {}) const {
        MenuItem parent{.title = std::move(title)};
        for (const auto& record : records) {
            auto item = row(record.name, command, record.shortcutName);
            item.argument = record.id;
            item.isChecked = !checkedId.empty() && record.id == checkedId;
            parent.submenu.push_back(std::move(item));
        }
        if (parent.submenu.empty()) {
            parent.submenu.push_back({.title = emptyTitle, .isEnabled = false});
        }
        return parent;
    }

private:
    const StatusMenuState& state_;
    const ShortcutLabelLookup& labelFor_;
};

const MenuItem* findItem(const std::vector<MenuItem>& items, std::string_view command,
                         std::string_view argument) {
    for (const auto& item : items) {
        if (!item.command.empty() && item.command == command &&
            (argument.empty() || item.argument == argument)) {
            return &item;
        }
        if (const auto* inner = findItem(item.submenu, command, argument)) {
            return inner;
        }
    }
    return nullptr;
}

}  // namespace

StatusMenu StatusMenu::build(const StatusMenuState& state, const ShortcutLabelLookup& labelFor) {
    StatusMenu menu;
    auto& items = menu.items_;
    const MenuWriter writer(state, labelFor);
    const auto separator = [&] { items.push_back(MenuItem{.isSeparator = true}); };
    if (!state.isAccessibilityPermissionGranted) {
        items.push_back(writer.row("Grant Accessibility Access…", kRequestPermissionCommand));
        separator();
    }
    if (!state.hideWindowManagementMenuItems) {
        // Without the permission no window can be moved, so the actions are shown but greyed.
        const bool actionsEnabled =
            state.isAccessibilityPermissionGranted && state.isWindowManagementEnabled;
        const auto addGroup = [&](std::span<const ActionTitle> group) {
            for (const auto& action : group) {
                items.push_back(writer.row(std::string(action.title),
                                           std::string(*windowActionCommand(action.keyName)),
                                           action.keyName, actionsEnabled));
            }
            separator();
        };
        addGroup(halvesActionTitles());
        addGroup(quartersActionTitles());
        addGroup(thirdsActionTitles());
        addGroup(otherActionTitles());
    }
    items.push_back(writer.row("Command Palette…", kCommandPaletteCommand, "commandPalette"));
    items.push_back(writer.row("Save Current Workspace…", kSaveWorkspaceCommand, "saveWorkspace"));
    items.push_back(writer.records("Restore Workspace", state.workspaces, kRestoreWorkspaceCommand,
                                   "No Saved Workspaces"));
    items.push_back(writer.records("Switch Space", state.spaces, kSwitchSpaceCommand, "No Spaces",
                                   state.activeSpaceId));
    items.push_back(writer.row("Add Space…", kAddSpaceCommand, "addSpace"));
    items.push_back(
        writer.records("Apply Layout", state.layouts, kApplyLayoutCommand, "No Layouts"));
    separator();
    items.push_back(writer.row("About Corvetta", kAboutCommand));
    items.push_back(writer.row("Corvetta Help", kHelpCommand));
    separator();
    items.push_back(writer.row("Quit Corvetta", kQuitCommand, "quitApp"));
    return menu;
}

std::optional<MenuItem> StatusMenu::item(std::string_view command,
                                         std::string_view argument) const {
    const MenuItem* found = findItem(items_, command, argument);
    return found ? std::optional(*found) : std::nullopt;
}

}  // namespace corvetta
