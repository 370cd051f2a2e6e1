// method_menu_search.h: Finds the menu item that opens a new window, for the new-window methods.
#pragma once

#include <optional>
#include <string>

#include "foundation/expected.h"
#include "platform/accessibility.h"

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

}  // namespace corvetta
