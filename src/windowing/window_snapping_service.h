#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "diagnostics/deferred_logger.h"
#include "foundation/expected.h"
#include "foundation/preferences.h"
#include "platform/applications.h"
#include "windowing/window_direction.h"
#include "windowing/window_mover.h"

namespace corvetta {

enum class WindowSnappingError { noFrontmostWindow, noTargetScreen };

// "No frontmost window found", "No target screen found".
std::string_view description(WindowSnappingError error);

// How a snap ended: where the window went, or the error text that was logged.
using SnapResult = Expected<WindowMoveOutcome, std::string>;
using SnapCompletion = std::function<void(const SnapResult&)>;

// Called before a snap computes its frame, so a layout lock can let the window go.
using WillSnapHook = std::function<void(const AXElement& window)>;

// The one way shortcuts, the palette and automation move the current window: the focused window
// of the last application other than this one that came to the front.
class WindowSnappingService {
public:
    static constexpr const char* kLayoutSpacingKey = "layoutSpacing";

    WindowSnappingService(WindowMover& windowMover, ScreenDetectionService& screenDetection,
                          AccessibilityElement& accessibilityElement,
                          WindowCalculationService& calculationService,
                          ApplicationsPort& applications, const Preferences& defaults,
                          LoggingService& logging, WillSnapHook willSnap = {});
    WindowSnappingService(const WindowSnappingService&) = delete;
    WindowSnappingService& operator=(const WindowSnappingService&) = delete;

    // Every entry point logs its errors; the completion, when given, runs once with the outcome.
    void snapFrontmostWindow(const WindowDirection& action, SnapCompletion completion = {});
    void moveFrontmostWindowToNextDisplay(SnapCompletion completion = {});
    void moveFrontmostWindowToPreviousDisplay(SnapCompletion completion = {});
    void snapWindow(const RunningApplication& application, const WindowDirection& action,
                    SnapCompletion completion = {});
    // Gives the application's focused window a frame in screen space.
    void moveWindow(const RunningApplication& application, const Rect& frame,
                    SnapCompletion completion = {});

    // The action a stored snap position performs.
    WindowDirection direction(const SnapPosition& position);

    // The application the next snap acts on: the last other one that came to the front, else
    // the frontmost.
    std::optional<RunningApplication> targetApplication() const;

private:
    struct Tracking;

    WindowMover& windowMover_;
    ScreenDetectionService& screenDetection_;
    AccessibilityElement& accessibilityElement_;
    WindowCalculationService& calculationService_;
    ApplicationsPort& applications_;
    const Preferences& defaults_;
    DeferredLogger logger_;
    WillSnapHook willSnap_;
    std::shared_ptr<Tracking> tracking_;
    Registration workspaceObserver_;
};

}  // namespace corvetta
