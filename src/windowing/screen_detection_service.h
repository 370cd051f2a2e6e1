// screen_detection_service.h: Orders the displays and finds the one that holds a window.
#pragma once

#include <optional>
#include <vector>

#include "diagnostics/deferred_logger.h"
#include "platform/screen.h"

namespace corvetta {

// The displays in reading order, and the display that holds a window. The order is cached until
// the platform reports a change of the screen parameters.
class ScreenDetectionService {
public:
    ScreenDetectionService(ScreenPort& screens, LoggingService& logging);
    ScreenDetectionService(const ScreenDetectionService&) = delete;
    ScreenDetectionService& operator=(const ScreenDetectionService&) = delete;

    // Top to bottom; displays whose vertical centres lie within 50 points of each other read left
    // to right. The reference stays valid until the next screen-parameters change.
    const std::vector<Screen>& orderedScreens();
    // Forgets the cached order, for a display change announced other than by the platform.
    void refresh() { cachedOrderedScreens_.reset(); }

    // The display holding a frame given in screen space: the first in order that wholly contains
    // it, else the one sharing the largest part of it (the earlier on a tie), else the main screen.
    std::optional<Screen> screenContaining(const Rect& frame);
    // The same for a frame in accessibility space (top-left origin), as windows report it.
    std::optional<Screen> screenContainingAccessibilityFrame(const Rect& frame);

    // Whether a is read before b; not transitive for every arrangement, which is why the sort
    // below never assumes it is.
    static bool readsBefore(const Screen& a, const Screen& b);

private:
    // Between screen space and accessibility space; the same formula goes both ways.
    Rect flipped(const Rect& frame) const;

    ScreenPort& screens_;
    DeferredLogger logger_;
    std::optional<std::vector<Screen>> cachedOrderedScreens_;
    Registration screenObserver_;
};

}  // namespace corvetta
