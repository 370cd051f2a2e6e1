#include "app/status_menu.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "windowing/action_titles.h"

namespace corvetta {

namespace {

// Command names follow the menu's own vocabulary, which predates the shortcut names.
constexpr std::array<std::pair<std::string_view, std::string_view>, 21> kCommandsByShortcutName{{
    {"leftHalf", "snapLeft"},
    {"rightHalf", "snapRight"},
    {"topHalf", "snapTopHalf"},
    {"bottomHalf", "snapBottomHalf"},
    {"topLeftQuarter", "snapTopLeftQuarter"},
    {"topRightQuarter", "snapTopRightQuarter"},
    {"bottomLeftQuarter", "snapBottomLeftQuarter"},
    {"bottomRightQuarter", "snapBottomRightQuarter"},
    {"leftThird", "snapLeftThird"},
    {"centerThird", "snapCenterThird"},
    {"rightThird", "snapRightThird"},
    {"leftTwoThirds", "snapLeftTwoThirds"},
    {"centerTwoThirds", "snapCenterTwoThirds"},
    {"rightTwoThirds", "snapRightTwoThirds"},
    {"topThird", "snapTopThird"},
    {"centerVerticalThird", "snapCenterVerticalThird"},
    {"bottomThird", "snapBottomThird"},
    {"fullscreen", "snapFullscreen"},
    {"center", "snapCenter"},
    {"moveToPreviousDisplay", "moveWindowToPreviousDisplay"},
    {"moveToNextDisplay", "moveWindowToNextDisplay"},
}};

}  // namespace

std::optional<std::string_view> windowActionCommand(std::string_view shortcutName) {
    for (const auto& [name, command] : kCommandsByShortcutName) {
        if (name == shortcutName) {
            return command;
        }
    }
    return std::nullopt;
}

std::optional<std::string_view> windowActionShortcutName(std::string_view command) {
    for (const auto& [name, candidate] : kCommandsByShortcutName) {
        if (candidate == command) {
            return name;
        }
    }
    return std::nullopt;
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
