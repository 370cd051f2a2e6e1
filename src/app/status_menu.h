// status_menu.h: Builds the status-bar menu and maps its commands to window actions.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace corvetta {

// One row of the status-bar menu, as the user interface draws it: a title, the shortcut label
// beside it, whether it can be chosen, and the delegate command it runs.
struct MenuItem {
    std::string title{};
    // The delegate command ("snapLeft", "moveWindowToNextDisplay", "quit", ...); empty for a
    // separator or a submenu's own row.
    std::string command{};
    // What the command acts on: a workspace's, space's or layout's id; empty for most.
    std::string argument{};
    // "⌃⌥←"; empty when the command has no shortcut.
    std::string shortcutLabel{};
    bool isEnabled = true;
    bool isSeparator = false;
    // The active space in the space submenu.
    bool isChecked = false;
    // Another program holds the combination, so the key does nothing until it lets go.
    bool isShortcutInUse = false;
    std::vector<MenuItem> submenu{};

    bool operator==(const MenuItem&) const = default;
};

// One workspace, space or layout as a submenu lists it.
struct MenuRecord {
    std::string id;
    std::string name;
    // The record's own shortcut, by its registered name ("workspace_<id>"), for the label.
    std::string shortcutName{};
};

// What the menu depends on.
struct StatusMenuState {
    bool isAccessibilityPermissionGranted = false;
    bool isWindowManagementEnabled = true;
    bool hideWindowManagementMenuItems = false;
    std::vector<MenuRecord> workspaces{};
    std::vector<MenuRecord> spaces{};
    // The id of the active space among `spaces`; empty for the global one.
    std::string activeSpaceId{};
    std::vector<MenuRecord> layouts{};
    // The shortcut names whose combinations another program holds.
    std::set<std::string, std::less<>> shortcutsInUse{};
};

// The delegate command that performs a window action, by the action's shortcut name
// ("leftHalf" → "snapLeft"); none for a name that is no window action.
std::optional<std::string_view> windowActionCommand(std::string_view shortcutName);
// The reverse: the window action's shortcut name a command performs.
std::optional<std::string_view> windowActionShortcutName(std::string_view command);

// The label of a shortcut name's current combination, "" for none.
using ShortcutLabelLookup = std::function<std::string(std::string_view shortcutName)>;

class StatusMenu {
public:
    static constexpr const char* kQuitCommand = "quit";
    static constexpr const char* kRequestPermissionCommand = "requestAccessibilityPermission";
    static constexpr const char* kCommandPaletteCommand = "openCommandPalette";
    static constexpr const char* kSaveWorkspaceCommand = "saveCurrentWorkspace";
    static constexpr const char* kRestoreWorkspaceCommand = "restoreSavedWorkspaceMenuItem";
    static constexpr const char* kSwitchSpaceCommand = "switchSpaceMenuItem";
    static constexpr const char* kAddSpaceCommand = "addSpaceMenuItem";
    static constexpr const char* kApplyLayoutCommand = "applyLayoutMenuItem";
    static constexpr const char* kAboutCommand = "openAbout";
    static constexpr const char* kHelpCommand = "openHelp";
    // Marks a label whose combination another program holds.
    static constexpr const char* kInUseSuffix = " (in use)";

    static StatusMenu build(const StatusMenuState& state, const ShortcutLabelLookup& labelFor);

    const std::vector<MenuItem>& items() const { return items_; }
    // The item running a command (with that argument, when one is given), submenus included;
    // none when the menu does not offer it.
    std::optional<MenuItem> item(std::string_view command, std::string_view argument = {}) const;

private:
    std::vector<MenuItem> items_;
};

}  // namespace corvetta
