// shortcut.h: A key combination as event flags or as Carbon masks, and conversions.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/hot_keys.h"

namespace corvetta {

// A key combination as records, exported files and the legacy store keep it: a macOS virtual key
// code and the event modifier-flag mask (ModifierFlag). Encoded as {"keyCode", "modifiers"}.
struct Shortcut {
    std::int64_t keyCode = 0;
    std::uint64_t modifiers = 0;

    bool operator==(const Shortcut&) const = default;
};

// The same combination in the hot-key layer's form: the Carbon modifier mask (CarbonModifier).
struct HotKeyShortcut {
    std::uint32_t carbonKeyCode = 0;
    std::uint32_t carbonModifiers = 0;

    bool operator==(const HotKeyShortcut&) const = default;
    HotKeyCombination combination() const { return {carbonKeyCode, carbonModifiers}; }
};

// Virtual key codes are 16-bit; anything outside cannot be registered or stored as a hot key.
inline constexpr std::int64_t kMaxVirtualKeyCode = 0xFFFF;

// Converts between the two forms, Shift, Control, Option and Command bit for bit; every other
// modifier bit is dropped.
struct ShortcutConverter {
    static std::uint32_t carbonModifiers(std::uint64_t eventFlags) {
        return carbonModifiersFromEventFlags(eventFlags);
    }
    static std::uint64_t eventModifierFlags(std::uint32_t carbonModifiers) {
        return eventFlagsFromCarbonModifiers(carbonModifiers);
    }
    // None for a key code that is not a virtual key code (negative or beyond 16 bits).
    static std::optional<HotKeyShortcut> toHotKeyShortcut(const Shortcut& shortcut);
    static Shortcut toShortcut(const HotKeyShortcut& shortcut);
};

}  // namespace corvetta
