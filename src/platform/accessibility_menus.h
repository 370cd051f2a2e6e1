// accessibility_menus.h: How an application's menus appear through the accessibility port.
#pragma once

#include <cstdint>
#include <string_view>

namespace corvetta {

// How the accessibility interface shows an application's menus: the application's "AXMenuBar",
// whose children are the menu bar items, each with one child of the menu role, whose children
// are the menu items.
namespace AXMenuAttribute {
inline constexpr std::string_view kMenuBar = "AXMenuBar";
inline constexpr std::string_view kChildren = "AXChildren";
inline constexpr std::string_view kRole = "AXRole";
inline constexpr std::string_view kEnabled = "AXEnabled";
// The key equivalent's character ("N") and its modifiers (the bits below).
inline constexpr std::string_view kCommandCharacter = "AXMenuItemCmdChar";
inline constexpr std::string_view kCommandModifiers = "AXMenuItemCmdModifiers";
}  // namespace AXMenuAttribute

namespace AXMenuRole {
inline constexpr std::string_view kMenuBar = "AXMenuBar";
inline constexpr std::string_view kMenuBarItem = "AXMenuBarItem";
inline constexpr std::string_view kMenu = "AXMenu";
inline constexpr std::string_view kMenuItem = "AXMenuItem";
}  // namespace AXMenuRole

// Key-equivalent modifier bits; none set means Command alone.
namespace AXMenuItemModifier {
inline constexpr std::int64_t kShift = 1 << 0;
inline constexpr std::int64_t kOption = 1 << 1;
inline constexpr std::int64_t kControl = 1 << 2;
inline constexpr std::int64_t kNoCommand = 1 << 3;
}  // namespace AXMenuItemModifier

}  // namespace corvetta
