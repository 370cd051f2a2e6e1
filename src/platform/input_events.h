// input_events.h: The event monitor port: mouse and key events, other applications' too.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "foundation/geometry.h"
#include "foundation/registration.h"

namespace corvetta {

// Event kinds with the platform's type numbers; a mask has bit (1 << type) set per kind.
enum class EventType : std::uint8_t {
    leftMouseDown = 1,
    leftMouseUp = 2,
    rightMouseDown = 3,
    rightMouseUp = 4,
    mouseMoved = 5,
    leftMouseDragged = 6,
    rightMouseDragged = 7,
    keyDown = 10,
    keyUp = 11,
    flagsChanged = 12,
    scrollWheel = 22,
    otherMouseDown = 25,
    otherMouseUp = 26,
    otherMouseDragged = 27,
};

using EventTypeMask = std::uint64_t;

constexpr EventTypeMask eventMask(EventType type) {
    return EventTypeMask{1} << static_cast<unsigned>(type);
}

// Event modifier flags, as records and files store them.
namespace ModifierFlag {
inline constexpr std::uint64_t kShift = 0x20000;
inline constexpr std::uint64_t kControl = 0x40000;
inline constexpr std::uint64_t kOption = 0x80000;
inline constexpr std::uint64_t kCommand = 0x100000;
}  // namespace ModifierFlag

struct InputEvent {
    EventType type = EventType::mouseMoved;
    // Screen space (bottom-left origin of the primary display).
    Point location;
    std::uint64_t modifierFlags = 0;
    // Only for key events.
    std::uint16_t keyCode = 0;

    bool operator==(const InputEvent&) const = default;
};

using EventHandler = std::function<void(const InputEvent&)>;

// The event monitor port. Global monitors see events sent to other applications, local monitors
// those sent to this one; both are called on the main thread while their registration lives.
class EventMonitorPort {
public:
    virtual ~EventMonitorPort() = default;

    [[nodiscard]] virtual Registration addGlobalMonitor(EventTypeMask mask,
                                                        EventHandler handler) = 0;
    [[nodiscard]] virtual Registration addLocalMonitor(EventTypeMask mask,
                                                       EventHandler handler) = 0;
};

}  // namespace corvetta
