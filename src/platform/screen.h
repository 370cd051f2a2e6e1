// screen.h: The displays port: each display's frames in screen space, and notice of rearrangements.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/geometry.h"
#include "foundation/registration.h"

namespace corvetta {

// The value of a display's "NSScreenNumber" device-description key: what tells two screens apart
// across reads, since frames change when the user rearranges displays.
using ScreenNumber = std::uint32_t;

// What a display tells about itself beyond its geometry, as CoreGraphics and the I/O registry
// report it (CGDisplayCreateUUIDFromDisplayID, CGDisplaySerialNumber, the registry's EDID,
// CGDisplayScreenSize, CGDisplayCopyColorSpace). Whatever the platform does not know is absent.
struct DisplayIdentity {
    std::optional<std::string> persistentUUID{};
    std::optional<std::string> serial{};
    // The raw EDID bytes; empty when the display gives none.
    std::vector<std::uint8_t> edid{};
    // Millimetres.
    std::optional<Size> physicalSize{};
    std::optional<std::string> colorSpace{};

    bool operator==(const DisplayIdentity&) const = default;
};

// One display as the platform reports it. Frames are in screen space (origin at the bottom-left
// of the primary display, y upward).
struct Screen {
    static constexpr const char* kScreenNumberKey = "NSScreenNumber";

    ScreenNumber number = 0;
    Rect frame;
    // The frame without the menu bar and the Dock.
    Rect visibleFrame;
    double backingScaleFactor = 1;
    std::string localizedName;
    // A laptop's own panel, as the display's vendor information tells.
    bool isBuiltIn = false;
    DisplayIdentity identity{};

    // Same display, whatever its geometry now.
    bool isSameScreen(const Screen& other) const { return number == other.number; }
    bool operator==(const Screen&) const = default;

    // "Name (NSScreenNumber 2, frame (0, 0, 1920, 1080))", for log lines.
    std::string description() const;
};

// The displays port. Answers are snapshots taken when asked.
class ScreenPort {
public:
    virtual ~ScreenPort() = default;

    // Every display, the primary (the one holding the menu bar) first.
    virtual std::vector<Screen> screens() const = 0;
    // The display with the key window; no value only when there are no displays.
    virtual std::optional<Screen> mainScreen() const = 0;
    // Called on the main thread after a display was added, removed, moved or resized, for as long
    // as the registration lives. The registration may outlive the port.
    [[nodiscard]] virtual Registration observeScreenParameters(std::function<void()> handler) = 0;
};

}  // namespace corvetta
