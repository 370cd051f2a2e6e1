// hot_keys.h: The hot-key port for system-wide shortcuts, with Carbon modifier masks.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

#include "foundation/expected.h"
#include "foundation/registration.h"
#include "platform/input_events.h"

namespace corvetta {

// The Carbon modifier mask the system-wide hot-key service takes.
namespace CarbonModifier {
inline constexpr std::uint32_t kCommand = 0x100;
inline constexpr std::uint32_t kShift = 0x200;
inline constexpr std::uint32_t kOption = 0x800;
inline constexpr std::uint32_t kControl = 0x1000;
}  // namespace CarbonModifier

// The four modifiers both masks know, as (event flag, Carbon bit).
inline constexpr std::array<std::pair<std::uint64_t, std::uint32_t>, 4> kModifierBitPairs{{
    {ModifierFlag::kShift, CarbonModifier::kShift},
    {ModifierFlag::kControl, CarbonModifier::kControl},
    {ModifierFlag::kOption, CarbonModifier::kOption},
    {ModifierFlag::kCommand, CarbonModifier::kCommand},
}};

// Bit for bit; every other bit (Caps Lock, numeric pad, function key) is dropped, as hot keys
// ignore them.
constexpr std::uint32_t carbonModifiersFromEventFlags(std::uint64_t eventFlags) {
    std::uint32_t carbon = 0;
    for (const auto& [flag, bit] : kModifierBitPairs) {
        if ((eventFlags & flag) != 0) {
            carbon |= bit;
        }
    }
    return carbon;
}

constexpr std::uint64_t eventFlagsFromCarbonModifiers(std::uint32_t carbon) {
    std::uint64_t flags = 0;
    for (const auto& [flag, bit] : kModifierBitPairs) {
        if ((carbon & bit) != 0) {
            flags |= flag;
        }
    }
    return flags;
}

// A key combination as the hot-key service registers it: a macOS virtual key code and a Carbon
// modifier mask.
struct HotKeyCombination {
    std::uint32_t keyCode = 0;
    std::uint32_t carbonModifiers = 0;

    bool operator==(const HotKeyCombination&) const = default;
};

using HotKeyId = std::uint32_t;

enum class HotKeyRegistrationError {
    // Another application (or this one, under another id) holds the combination.
    combinationTaken,
    // The id is already registered; ids are never shared.
    idInUse,
};

// "The key combination is already in use", "The hot key id is already registered".
std::string_view description(HotKeyRegistrationError error);

enum class HotKeyEventKind { pressed, released };

struct HotKeyEvent {
    HotKeyEventKind kind = HotKeyEventKind::pressed;
    HotKeyId id = 0;

    bool operator==(const HotKeyEvent&) const = default;
};

using HotKeyEventHandler = std::function<void(const HotKeyEvent&)>;

// The hot-key port: system-wide key combinations that reach this program whichever application
// is in front (RegisterEventHotKey, UnregisterEventHotKey, InstallEventHandler for the pressed and
// released hot-key events). Events arrive on the main thread.
class HotKeyPort {
public:
    virtual ~HotKeyPort() = default;

    virtual Expected<void, HotKeyRegistrationError> registerHotKey(
        HotKeyId id, HotKeyCombination combination) = 0;
    // An id that is not registered is ignored.
    virtual void unregisterHotKey(HotKeyId id) = 0;
    // Every registered hot key's presses and releases go to the handler while the registration
    // lives.
    [[nodiscard]] virtual Registration installHotKeyHandler(HotKeyEventHandler handler) = 0;
};

}  // namespace corvetta
