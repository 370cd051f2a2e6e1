#include "shortcuts/shortcut.h"

namespace corvetta {

std::optional<HotKeyShortcut> ShortcutConverter::toHotKeyShortcut(const Shortcut& shortcut) {
    if (shortcut.keyCode < 0 || shortcut.keyCode > kMaxVirtualKeyCode) {
        return std::nullopt;
    }
    return HotKeyShortcut{static_cast<std::uint32_t>(shortcut.keyCode),
                          carbonModifiers(shortcut.modifiers)};
}

Shortcut ShortcutConverter::toShortcut(const HotKeyShortcut& shortcut) {
    return {static_cast<std::int64_t>(shortcut.carbonKeyCode),
            eventModifierFlags(shortcut.carbonModifiers)};
}

}  // namespace corvetta
