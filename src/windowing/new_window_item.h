// new_window_item.h: Finds how an application opens a new window: a menu item or a launcher action.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "foundation/expected.h"
#include "platform/accessibility.h"
#include "platform/applications.h"

namespace corvetta {

// A menu item found through the application's menu bar.
struct FoundMenuItem {
    AXElement item;
    std::string menuName;
    std::string itemTitle;
    // The key equivalent as menus show it ("⌘N", "⇧⌘N"); empty when the item has none.
    std::string shortcut;
};

// The enabled menu item that opens a new window, best first: one titled "New Window"; else one
// whose key equivalent is Command-N alone; else one whose title begins with "New ". Ties go to
// the first in menu-bar order. Submenus are not searched. None when the application has no menu
// bar or no such item; the error text when its menu bar cannot be read.
Expected<std::optional<FoundMenuItem>, std::string> findNewWindowMenuItem(
    AccessibilityPort& accessibility, ProcessId application);

// The action whose identifier is "new-window" (any case, any separators), else the first one
// named "New Window".
std::optional<ApplicationAction> newWindowAction(const std::vector<ApplicationAction>& actions);

// How an application is asked for a new window: its menu item where it has a menu bar (macOS),
// else its launcher's action (a Linux desktop entry's "new-window"). A workspace saves the menu
// and item title, or the action's identifier and name, to find it again.
struct NewWindowItem {
    std::variant<FoundMenuItem, ApplicationAction> how;
    std::string menuName;
    std::string itemTitle;
    std::string shortcut;
};

// The menu item first, then the launcher's action; none when the application offers neither,
// the error text when its menu bar cannot be read.
Expected<std::optional<NewWindowItem>, std::string> findNewWindowItem(
    AccessibilityPort& accessibility, const ApplicationsPort& applications, ProcessId application);

}  // namespace corvetta
