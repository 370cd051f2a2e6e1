// window_list.h: The window list port: on-screen windows front to back, as the server lists them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/geometry.h"
#include "platform/accessibility.h"

namespace corvetta {

// The window server's number for a window; what "_AXWindowID" gives for the same window.
using WindowNumber = std::uint32_t;

// One entry of the window server's list. Bounds are in accessibility space (top-left origin of
// the primary display, y downward), as the window server reports them.
struct WindowListEntry {
    static constexpr const char* kNumberKey = "kCGWindowNumber";
    static constexpr const char* kLayerKey = "kCGWindowLayer";
    static constexpr const char* kOwnerPidKey = "kCGWindowOwnerPID";
    static constexpr const char* kBoundsKey = "kCGWindowBounds";
    static constexpr const char* kOwnerNameKey = "kCGWindowOwnerName";
    static constexpr const char* kNameKey = "kCGWindowName";

    WindowNumber number = 0;
    // 0 for normal application windows; panels, menus and the Dock sit on higher layers.
    int layer = 0;
    ProcessId ownerPid = 0;
    Rect bounds;
    std::optional<std::string> ownerName;
    // Only where the platform shares it.
    std::optional<std::string> title;

    bool operator==(const WindowListEntry&) const = default;
};

// The window list port.
class WindowListPort {
public:
    virtual ~WindowListPort() = default;

    // The windows on screen, front to back, without desktop elements (the wallpaper, desktop
    // icons). Minimized windows and those of hidden applications are not on screen.
    virtual std::vector<WindowListEntry> onScreenWindows() const = 0;

    // The numbers of those windows, front to back, without the details (what CGWindowListCreate
    // gives). A backend may answer it more cheaply and then also name windows that are not on
    // screen, such as minimized ones: it orders windows known otherwise, it does not find them.
    virtual std::vector<WindowNumber> windowNumbersFrontToBack() const {
        std::vector<WindowNumber> numbers;
        for (const auto& entry : onScreenWindows()) {
            numbers.push_back(entry.number);
        }
        return numbers;
    }
};

}  // namespace corvetta
