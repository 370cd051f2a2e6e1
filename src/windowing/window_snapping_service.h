// window_snapping_service.h: Moves the current window, telling a repeated press from a first.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "diagnostics/deferred_logger.h"
#include "foundation/expected.h"
#include "foundation/preferences.h"
#include "platform/applications.h"
#include "windowing/calculation_settings.h"
#include "windowing/window_calculation_service.h"
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
    static constexpr const char* kLayoutSpacingKey = calculation_settings::kLayoutSpacing;

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
    struct SnapMemory;
    // The window an entry point acts on, where it is, and the display holding it.
    struct PlacedWindow {
        AXElement window;
        Rect frame;
        Screen screen;
    };
    // A snap that ended with the window where it was sent, remembered to tell a repeated press of
    // the same shortcut from a first one.
    struct CompletedSnap {
        AXElement window;
        WindowDirection pressedAction;
        // Where a size cycle stands: differs from the pressed action once the cycle advanced.
        WindowDirection placedAction;
        Rect frame;

        // Same window, same action, and the window still where this snap put it.
        bool isRepeatedBy(const PlacedWindow& placed, const WindowDirection& action) const;
    };

    // The application's focused window; none (the failure logged) when it has none.
    std::optional<AXElement> focusedWindow(const std::optional<RunningApplication>& application);
    // The window's frame and display, or the error text.
    Expected<PlacedWindow, std::string> place(const AXElement& window);
    // The same for the focused window of the target application.
    Expected<PlacedWindow, std::string> placeTargetWindow();
    void snap(const PlacedWindow& placed, const WindowDirection& action,
              std::string_view errorPrefix, SnapCompletion completion);
    // Starts a press of any kind: the snap before it stops being the last one, and an older
    // press that completes late can no longer record itself. Returns that snap.
    std::optional<CompletedSnap> startPress();
    // The frame for a press; `repeated` is the snap it repeats, if any.
    std::optional<CalculatedFrame> calculateFrame(const PlacedWindow& placed,
                                                  const WindowDirection& action,
                                                  const std::optional<CompletedSnap>& repeated);
    void moveToNeighbourDisplay(bool forward, SnapCompletion completion);
    // Hands the request to the mover; the completion logs the outcome.
    void move(WindowMoveRequest request, std::string successMessage, std::string_view errorPrefix,
              SnapCompletion completion);
    void fail(std::string_view errorPrefix, const std::string& error,
              const SnapCompletion& completion) const;
    // The window's title in quotes when it has one, else the element, for log lines.
    std::string windowName(const AXElement& window);

    WindowMover& windowMover_;
    ScreenDetectionService& screenDetection_;
    AccessibilityElement& accessibilityElement_;
    WindowCalculationService& calculationService_;
    ApplicationsPort& applications_;
    const Preferences& defaults_;
    LoggingService& logging_;
    DeferredLogger logger_;
    WillSnapHook willSnap_;
    std::shared_ptr<Tracking> tracking_;
    std::shared_ptr<SnapMemory> snapMemory_;
    Registration workspaceObserver_;
};

}  // namespace corvetta
