// status_menu.h: Builds the status-bar menu and maps its commands to window actions.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvetta {

// One row of the status-bar menu, as the user interface draws it: a title, the shortcut label
// beside it, whether it can be chosen, and the delegate command it runs.
struct MenuItem {
    std::string title{};
    // The delegate command ("snapLeft", "moveWindowToNextDisplay", "quit", ...); empty for a
    // separator.
    std::string command{};
    // "⌃⌥←"; empty when the command has no shortcut.
    std::string shortcutLabel{};
    bool isEnabled = true;
    bool isSeparator = false;

    bool operator==(const MenuItem&) const = default;
};

// What the menu depends on.
struct StatusMenuState {
    bool isAccessibilityPermissionGranted = false;
    bool isWindowManagementEnabled = true;
    bool hideWindowManagementMenuItems = false;
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

    static StatusMenu build(const StatusMenuState& state, const ShortcutLabelLookup& labelFor);

    const std::vector<MenuItem>& items() const { return items_; }
    // The item running a command; none when the menu does not offer it.
    std::optional<MenuItem> item(std::string_view command) const;

private:
    std::vector<MenuItem> items_;
};

}  // namespace corvetta
