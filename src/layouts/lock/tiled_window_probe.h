// tiled_window_probe.h: What the layout lock reads of its windows and displays through the ports.
#pragma once

#include <optional>
#include <string>

#include "foundation/geometry.h"
#include "layouts/ax_window_ref.h"
#include "platform/applications.h"
#include "platform/screen.h"

namespace corvetta {

class LearnedMinSizeStore;

struct TiledWindowReading {
    bool minimized = false;
    // Accessibility space.
    Rect frame;
};

// Reads only; every failure reads as "not known", since a window that does not answer keeps what
// the lock knew of it.
class TiledWindowProbe {
public:
    TiledWindowProbe(AccessibilityPort& accessibility, ApplicationsPort& applications,
                     ScreenPort& screens, LearnedMinSizeStore& learned);

    // "AXMinimized", "AXPosition" and "AXSize" in one read; none when the frame cannot be read.
    std::optional<TiledWindowReading> read(const AXWindowRef& window) const;
    // Per dimension: learned for the application, else "AXMinSize", else 100 points, and never
    // below what the window was seen refusing (`observed`).
    Size minimumSize(const AXWindowRef& window, Size observed) const;
    std::optional<std::string> bundleIdentifier(const AXWindowRef& window) const;
    // Whether the frame fills the visible frame of the display holding its centre, within 5 points
    // in position and size.
    bool fillsItsDisplay(const Rect& frame) const;

private:
    AccessibilityPort& accessibility_;
    ApplicationsPort& applications_;
    ScreenPort& screens_;
    LearnedMinSizeStore& learned_;
};

}  // namespace corvetta
