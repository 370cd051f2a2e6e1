// x11_key_codes.h: Maps macOS key codes and Carbon modifiers to X keysyms and masks.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include <xcb/xcb.h>

namespace corvetta {

// The core protocol's modifier masks, as key events' state and GrabKey take them.
namespace X11Modifier {
inline constexpr std::uint16_t kShift = 1 << 0;
inline constexpr std::uint16_t kLock = 1 << 1;
inline constexpr std::uint16_t kControl = 1 << 2;
inline constexpr std::uint16_t kMod1 = 1 << 3;
inline constexpr std::uint16_t kMod4 = 1 << 6;
// The eight modifier bits; the bits above them are mouse buttons.
inline constexpr std::uint16_t kAll = 0xff;
}  // namespace X11Modifier

// The key symbol that a macOS virtual key code stands for on a US layout; none for codes that
// have no counterpart on a PC keyboard.
std::optional<std::uint32_t> keySymbolForVirtualKeyCode(std::uint32_t virtualKeyCode);

// Control → Control, Option → Super (Mod4), Command → Alt (Mod1), Shift → Shift.
std::uint16_t x11ModifiersFromCarbon(std::uint32_t carbonModifiers);
// The other way, in the event-flag form; lock and other modifier bits are dropped.
std::uint64_t eventFlagsFromX11Modifiers(std::uint16_t state);

// The modifier bits each key code sets, from the server's modifier mapping; none when it does not
// answer.
using ModifierMasksOfKeys = std::array<std::uint16_t, 256>;
ModifierMasksOfKeys readModifierMasksOfKeys(xcb_connection_t* connection);

}  // namespace corvetta
