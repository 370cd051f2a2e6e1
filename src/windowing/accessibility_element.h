// accessibility_element.h: Reads and sets other applications' window frames, in screen space.
#pragma once

#include <optional>
#include <vector>

#include "diagnostics/deferred_logger.h"
#include "foundation/expected.h"
#include "platform/accessibility.h"
#include "platform/applications.h"
#include "platform/pointer.h"
#include "platform/screen.h"
#include "platform/window_list.h"
#include "windowing/accessibility_error.h"

namespace corvetta {

// Reads and writes the geometry of other applications' windows. Frames cross this class in screen
// space (bottom-left origin, y upward); the conversion to and from the accessibility space of the
// port happens here and nowhere else. Holds no state of its own beyond the ports it speaks to.
class AccessibilityElement {
public:
    AccessibilityElement(AccessibilityPort& accessibility, ScreenPort& screens,
                         WindowListPort& windowList, ApplicationsPort& applications,
                         PointerPort& pointer, LoggingService& logging);

    bool isTrusted() const;

    // The focused window of the frontmost application; noValue while no application is in front.
    Expected<AXElement, AccessibilityError> frontmostWindow();
    // The focused window ("AXFocusedWindow") of an application.
    Expected<AXElement, AccessibilityError> focusedWindow(ProcessId application);
    // The windows ("AXWindows") of an application, front to back.
    Expected<std::vector<AXElement>, AccessibilityError> windows(ProcessId application);

    // The window's frame in screen space, from "AXPosition" and "AXSize" read together.
    Expected<Rect, AccessibilityError> frame(const AXElement& window);
    struct FrameAndFullScreen {
        Expected<Rect, AccessibilityError> frame;
        Expected<bool, AccessibilityError> fullScreen;
    };
    // Both in one read, for a move about to start.
    FrameAndFullScreen frameAndFullScreen(const AXElement& window);
    // Writes size, then position, then size again (a window that could not grow at its old place
    // can at its new one), logging the frame before and after. Every write is tried, so a window
    // that refuses its size still moves; the first failure is what is returned.
    Expected<void, AccessibilityError> setFrame(const AXElement& window, const Rect& frame);
    // "AXMinSize"; none when the window does not say.
    std::optional<Size> minimumSize(const AXElement& window);
    Expected<bool, AccessibilityError> isFullScreen(const AXElement& window);
    Expected<std::string, AccessibilityError> title(const AXElement& window);
    // The window server's number for the window ("_AXWindowID").
    std::optional<WindowNumber> windowNumber(const AXElement& window);
    // The process owning the element.
    Expected<ProcessId, AccessibilityError> process(const AXElement& element);

    // The screen whose frame contains the centre of the window's frame.
    std::optional<Screen> screenOf(const AXElement& window);
    // The frontmost normal window under the pointer.
    std::optional<AXElement> windowUnderMouse();

    // Writes made while it lives may go out together (see AXWriteBatch).
    AXWriteBatch writeBatch() { return AXWriteBatch(accessibility_); }

    // Between screen space and accessibility space; the same formula goes both ways. Without
    // displays the frame is returned unchanged.
    Rect convertFrame(const Rect& frame) const;

private:
    Expected<Rect, AccessibilityError> frameOf(const Expected<AXValue, AXErrorCode>& position,
                                               const Expected<AXValue, AXErrorCode>& size);

    AccessibilityPort& accessibility_;
    ScreenPort& screens_;
    WindowListPort& windowList_;
    ApplicationsPort& applications_;
    PointerPort& pointer_;
    DeferredLogger logger_;
};

}  // namespace corvetta
