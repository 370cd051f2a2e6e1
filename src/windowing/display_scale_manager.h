// display_scale_manager.h: Keeps a calculated frame inside its display and on whole points.
#pragma once

#include "diagnostics/deferred_logger.h"
#include "platform/screen.h"

namespace corvetta {

// Keeps a computed frame inside its display and on whole points.
class DisplayScaleManager {
public:
    explicit DisplayScaleManager(LoggingService& logging);

    // Limits the size to the screen's full frame, moves the origin inside it, then floors all four
    // values. The full frame, not the visible one: a frame may still cover the menu bar or Dock.
    // The null rectangle comes out as a zero-sized rectangle at the frame's maximum corner.
    Rect adjust(const Rect& rect, const Screen& screen) const;

private:
    DeferredLogger logger_;
};

}  // namespace corvetta
