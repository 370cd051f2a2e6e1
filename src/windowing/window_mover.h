// window_mover.h: Moves a window to a frame, verifies it and retries.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "diagnostics/deferred_logger.h"
#include "foundation/expected.h"
#include "foundation/main_queue.h"
#include "windowing/accessibility_element.h"
#include "windowing/screen_detection_service.h"
#include "windowing/window_calculation_service.h"

namespace corvetta {

enum class WindowMoveError {
    failedToGetWindowInfo,
    windowIsFullscreen,
    failedToSetPosition,
    verificationFailed,
    noTargetScreen,
    invalidWindow,
    // A newer move of the same window took over before this one was verified: no failure, the
    // window is simply no longer going here.
    superseded,
};

// "Failed to get window information", ...
std::string_view description(WindowMoveError error);

struct WindowMoveRequest {
    AXElement window{};
    // Screen space.
    Rect targetFrame{};
    // The display the frame was computed on; else the one holding the window, else the main one.
    std::optional<Screen> targetScreen{};
    // Whether the target rests on the bottom of the visible frame: such a move follows a Dock that
    // appears or disappears during it, and is verified more loosely in y.
    bool isBottomAligned = false;
    // At least 1.
    int maxAttempts = 1;
    // The action the frame came from, to recalculate it when the Dock changes the visible frame.
    std::optional<WindowDirection> action{};
    // The gap the caller inset the frame by (see layout_gap.h), applied again to a recalculation.
    double layoutSpacing = 0;
};

// Where the window ended up.
struct WindowMoveOutcome {
    Rect frame;
    int attempts = 0;
};

using WindowMoveResult = Expected<WindowMoveOutcome, WindowMoveError>;
using WindowMoveCompletion = std::function<void(const WindowMoveResult&)>;

// Applies a frame to a window, checks that the window went there, and retries with growing waits.
// A move is a chain of main-queue work; nothing blocks between attempts.
class WindowMover {
public:
    WindowMover(AccessibilityElement& accessibilityElement,
                WindowCalculationService& calculationService,
                ScreenDetectionService& screenDetection, ScreenPort& screens, MainQueue& queue,
                LoggingService& logging);
    // Moves still waiting for their next attempt are dropped without completing.
    ~WindowMover();
    WindowMover(const WindowMover&) = delete;
    WindowMover& operator=(const WindowMover&) = delete;

    // The first attempt runs before this returns; the completion runs once, on the main queue,
    // after the last attempt. A move of a window whose earlier move still waits for a retry
    // supersedes that one: its attempts stop and it completes with `superseded`.
    void moveWindow(WindowMoveRequest request, WindowMoveCompletion completion = {});

    // Several windows at once, as a layout or a workspace places them: every frame is first sent
    // in one batch of writes (where writes wait for the window manager, ten windows cost one wait,
    // not ten), then each window is moved, verified and retried on its own as moveWindow does, all
    // in flight together. `completion` runs once per request, with its index.
    void moveWindows(const std::vector<WindowMoveRequest>& requests,
                     std::function<void(std::size_t, const WindowMoveResult&)> completion);

    // Runs `callback` on the main queue once no move is under way: at once when none is, else
    // after the completions of the moves under way have been posted. A caller that must see every
    // window where it was sent (an automation client's sync) waits for this.
    void whenIdle(std::function<void()> callback);

private:
    struct Move;
    void attempt(std::shared_ptr<Move> move, int number);
    // Ends the window's move under way, if any, as superseded, and makes `move` the window's.
    void supersedeEarlierMove(const std::shared_ptr<Move>& move);
    // Follows a Dock that appeared or went away while the frame was set.
    void followDockChange(Move& move, const Rect& visibleBefore);
    bool isVerified(const Move& move, const Rect& frame, int number) const;
    // Hands the result to the completion on the main queue, once.
    void finish(const std::shared_ptr<Move>& move, WindowMoveResult result);
    // The display's geometry now, which a Dock or a rearrangement may have changed.
    Screen currentGeometry(const Screen& screen) const;
    bool isOnPrimaryDisplay(const Screen& screen) const;
    static bool isInvalidElement(const AccessibilityError& error);

    AccessibilityElement& accessibilityElement_;
    WindowCalculationService& calculationService_;
    ScreenDetectionService& screenDetection_;
    ScreenPort& screens_;
    MainQueue& queue_;
    DeferredLogger logger_;
    std::shared_ptr<bool> alive_;
    int movesUnderWay_ = 0;
    // The move under way for each window.
    std::unordered_map<AXElement, std::weak_ptr<Move>> movesByWindow_;
    std::vector<std::function<void()>> idleCallbacks_;
};

}  // namespace corvetta
