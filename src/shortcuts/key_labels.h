// key_labels.h: Labels key combinations as menus show them (⌃⌥←), on every desktop.
#pragma once

#include <cstdint>
#include <string>

#include "shortcuts/shortcut.h"

namespace corvetta {

// How a combination is shown to the user, the way the platform's menus show it: the modifier
// symbols in the order ⌃⌥⇧⌘, then the key ("⌃⌥←", "⌃⌥⇧Q", "⌘F1", "⌃Space"). Key codes are macOS
// virtual key codes (ANSI layout) on every desktop, so a label never depends on where it is shown.

// "⌃⌥⇧⌘" for whichever of the four event-flag modifiers are set.
std::string modifierSymbols(std::uint64_t eventModifierFlags);
// The key alone: letters upper-case, digits and punctuation as printed, arrows, ↩ ⇥ ⌫ ⌦ ⎋, "Space",
// "F1"…"F20", keypad keys as their character; "Key <code>" for a code with no key.
std::string keyLabel(std::int64_t keyCode);
std::string shortcutLabel(const Shortcut& shortcut);

}  // namespace corvetta
