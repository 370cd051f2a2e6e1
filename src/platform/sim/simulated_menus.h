// simulated_menus.h: Shows simulated applications' menu bars through the accessibility port.
#pragma once

// How an application's menu bar looks through the accessibility port: the menu bar, its items
// (one per menu), the menu under each, and the menu's items. Private to the simulated-desktop
// library.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "foundation/expected.h"
#include "platform/accessibility.h"
#include "platform/sim/simulated_desktop_setup.h"

namespace corvetta::sim {

enum class MenuElementKind : std::uint8_t { menuBar, menuBarItem, menu, menuItem };

// One element of an application's menu bar, by position: menus do not change while the desktop
// runs, so positions name elements for good.
struct MenuElement {
    MenuElementKind kind = MenuElementKind::menuBar;
    std::size_t menu = 0;
    std::size_t item = 0;
};

// Whether an element token of the application names a menu element rather than a window.
bool isMenuToken(std::uint64_t token);
std::uint64_t menuToken(const MenuElement& element);
// None when the token names a menu or item the application does not have.
std::optional<MenuElement> findMenuElement(const SimulatedApplication& application,
                                           std::uint64_t token);

// The application's "AXMenuBar"; noValue for an application without menus.
Expected<AXValue, AXErrorCode> menuBarOf(const SimulatedApplication& application);
Expected<AXValue, AXErrorCode> menuAttribute(const SimulatedApplication& application,
                                             const MenuElement& element,
                                             std::string_view attribute);

// What an action on a menu element does: for "AXPress" on an enabled item, the item chosen (the
// caller carries out what it opens); pressing a menu bar item only opens its menu, which gives no
// item. Errors as the interface gives them.
Expected<const SimulatedMenuItem*, AXErrorCode> menuAction(const SimulatedApplication& application,
                                                           const MenuElement& element,
                                                           std::string_view action);

}  // namespace corvetta::sim
