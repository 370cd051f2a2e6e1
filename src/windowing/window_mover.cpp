#include "windowing/window_mover.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "windowing/layout_gap.h"

namespace corvetta {

namespace {

// How far the visible frame may shift before the Dock counts as having appeared or gone.
constexpr double kVisibleFrameChangeThreshold = 10;
constexpr std::chrono::milliseconds kRetryStep{50};

std::string flagText(bool flag) {
    return flag ? "true" : "false";
}

bool movedBeyond(const Rect& a, const Rect& b, double threshold) {
    return std::fabs(a.minX() - b.minX()) > threshold ||
           std::fabs(a.minY() - b.minY()) > threshold ||
           std::fabs(a.width() - b.width()) > threshold ||
           std::fabs(a.height() - b.height()) > threshold;
}

}  // namespace

std::string_view description(WindowMoveError error) {
    switch (error) {
        case WindowMoveError::failedToGetWindowInfo:
            return "Failed to get window information";
        case WindowMoveError::windowIsFullscreen:
            return "Window is in fullscreen mode";
        case WindowMoveError::failedToSetPosition:
            return "Failed to set window position";
        case WindowMoveError::verificationFailed:
            return "Failed to verify window position after move";
        case WindowMoveError::noTargetScreen:
            return "No target screen found";
        case WindowMoveError::invalidWindow:
            return "Invalid or inaccessible window";
        case WindowMoveError::superseded:
            return "Superseded by a newer move of the window";
    }
    return "Invalid or inaccessible window";
}

struct WindowMover::Move {
    WindowMoveRequest request;
    WindowMoveCompletion completion;
    // The frame the window should end up with; a Dock change during the move replaces it.
    Rect target;
    // The display as first chosen; its geometry is read afresh for every attempt.
    Screen screen;
    int maxAttempts = 1;
    // The next attempt while one is waiting.
    WorkItem retry;
    bool finished = false;
};

WindowMover::WindowMover(AccessibilityElement& accessibilityElement,
                         WindowCalculationService& calculationService,
                         ScreenDetectionService& screenDetection, ScreenPort& screens,
                         MainQueue& queue, LoggingService& logging)
    : accessibilityElement_(accessibilityElement),
      calculationService_(calculationService),
      screenDetection_(screenDetection),
      screens_(screens),
      queue_(queue),
      logger_(logging, "WindowMover", LogCategory::windowPositioning()),
      alive_(std::make_shared<bool>(true)) {}

WindowMover::~WindowMover() {
    // Pending attempts and completions hold only a weak reference to this token.
    alive_.reset();
}

void WindowMover::moveWindow(WindowMoveRequest request, WindowMoveCompletion completion) {
    logger_.info(
        [&] { return "Moving window with isBottomAligned: " + flagText(request.isBottomAligned); });
    logger_.info([&] {
        return "Target frame: " + request.targetFrame.description() +
               ", bottomAligned: " + flagText(request.isBottomAligned);
    });

    auto move = std::make_shared<Move>();
    ++movesUnderWay_;
    move->completion = std::move(completion);
    move->target = request.targetFrame;
    move->maxAttempts = std::max(1, request.maxAttempts);
    move->request = std::move(request);
    const AXElement& window = move->request.window;

    if (!window.isValid()) {
        finish(move, unexpected(WindowMoveError::invalidWindow));
        return;
    }
    supersedeEarlierMove(move);
    // A full-screen window owns its own space; moving it would only be undone by the system, so
    // it is refused rather than taken out of full screen behind the user's back. Windows that do
    // not report the attribute are not full screen.
    // Read together with the frame: on a display server every read is a round trip.
    const auto [current, fullScreen] = accessibilityElement_.frameAndFullScreen(window);
    if (fullScreen && *fullScreen) {
        finish(move, unexpected(WindowMoveError::windowIsFullscreen));
        return;
    }
    if (!current) {
        logger_.logger().error("Failed to read the window's frame: " +
                               current.error().description());
        finish(move, unexpected(isInvalidElement(current.error())
                                    ? WindowMoveError::invalidWindow
                                    : WindowMoveError::failedToGetWindowInfo));
        return;
    }

    auto screen = move->request.targetScreen;
    if (!screen) {
        screen = screenDetection_.screenContaining(*current);
    }
    if (!screen) {
        screen = screens_.mainScreen();
    }
    if (!screen) {
        finish(move, unexpected(WindowMoveError::noTargetScreen));
        return;
    }
    move->screen = *screen;
    attempt(std::move(move), 1);
}

void WindowMover::moveWindows(
    const std::vector<WindowMoveRequest>& requests,
    std::function<void(std::size_t, const WindowMoveResult&)> completion) {
    {
        auto batch = accessibilityElement_.writeBatch();
        for (const auto& request : requests) {
            if (const auto set =
                    accessibilityElement_.setFrame(request.window, request.targetFrame);
                !set) {
                logger_.info([&] {
                    return "Sending the frame of " + request.window.description() +
                           " failed; its move tries again: " + set.error().description();
                });
            }
        }
    }
    for (std::size_t i = 0; i < requests.size(); ++i) {
        moveWindow(requests[i],
                   [completion, i](const WindowMoveResult& result) { completion(i, result); });
    }
}

void WindowMover::supersedeEarlierMove(const std::shared_ptr<Move>& move) {
    const AXElement& window = move->request.window;
    if (const auto found = movesByWindow_.find(window); found != movesByWindow_.end()) {
        // Its next attempt would pull the window back to where the user no longer wants it.
        if (const auto earlier = found->second.lock(); earlier && !earlier->finished) {
            earlier->retry.cancel();
            finish(earlier, unexpected(WindowMoveError::superseded));
        }
    }
    movesByWindow_[window] = move;
}

bool WindowMover::isInvalidElement(const AccessibilityError& error) {
    return (error.kind == AccessibilityError::Kind::failedToGetAttribute ||
            error.kind == AccessibilityError::Kind::failedToSetAttribute) &&
           error.code == AXErrorCode::invalidUIElement;
}

Screen WindowMover::currentGeometry(const Screen& screen) const {
    for (auto& candidate : screens_.screens()) {
        if (candidate.isSameScreen(screen)) {
            return std::move(candidate);
        }
    }
    // The display went away during the move; its last known geometry is the best guess.
    return screen;
}

bool WindowMover::isOnPrimaryDisplay(const Screen& screen) const {
    const auto all = screens_.screens();
    return !all.empty() && all.front().isSameScreen(screen);
}

void WindowMover::attempt(std::shared_ptr<Move> move, int number) {
    const AXElement& window = move->request.window;
    const Rect visibleBefore = currentGeometry(move->screen).visibleFrame;

    const auto set = accessibilityElement_.setFrame(window, move->target);
    if (!set) {
        logger_.logger().error("Error setting window frame: " + set.error().description());
        if (isInvalidElement(set.error())) {
            finish(move, unexpected(WindowMoveError::invalidWindow));
            return;
        }
    }

    followDockChange(*move, visibleBefore);

    const auto reached = accessibilityElement_.frame(window);
    if (reached && isVerified(*move, *reached, number)) {
        logger_.info(
            [&] { return "Window positioned successfully on attempt " + std::to_string(number); });
        finish(move, WindowMoveOutcome{*reached, number});
        return;
    }

    if (number < move->maxAttempts) {
        logger_.info([&] {
            return "Window position verification failed on attempt " + std::to_string(number) +
                   ", retrying...";
        });
        move->retry = queue_.postDelayed(kRetryStep * number,
                                         [this, alive = std::weak_ptr<bool>(alive_), move, number] {
                                             if (alive.lock() && !move->finished) {
                                                 attempt(move, number + 1);
                                             }
                                         });
        return;
    }

    logger_.logger().warning("Window position verification failed after " + std::to_string(number) +
                             " attempts: the window is at " +
                             (reached ? reached->description() : reached.error().description()) +
                             ", the target was " + move->target.description());
    finish(move, unexpected(set ? WindowMoveError::verificationFailed
                                : WindowMoveError::failedToSetPosition));
}

void WindowMover::followDockChange(Move& move, const Rect& visibleBefore) {
    const Screen screen = currentGeometry(move.screen);
    const Rect& visibleAfter = screen.visibleFrame;
    logger_.info([&] {
        return "Visible frame before: " + visibleBefore.description() +
               ", after:" + visibleAfter.description();
    });
    const bool bottomAligned = move.request.isBottomAligned;
    const bool changed = movedBeyond(visibleBefore, visibleAfter, kVisibleFrameChangeThreshold) ||
                         (bottomAligned && std::fabs(move.target.minY() - visibleAfter.minY()) >
                                               kVisibleFrameChangeThreshold);
    if (!changed) {
        return;
    }
    if (!bottomAligned) {
        logger_.info(
            [] { return "Visible frame changed; the target is not bottom-aligned, keeping it"; });
        return;
    }
    const auto& action = move.request.action;
    if (!action) {
        logger_.info([] {
            return "Visible frame changed; no action to recalculate the bottom-aligned target "
                   "from, keeping it";
        });
        return;
    }

    logger_.info([&] { return "Recalculating with direction: " + std::string(action->name()); });
    const AXElement& window = move.request.window;
    const Rect current = accessibilityElement_.frame(window).value_or(move.target);
    // The same placement on the changed visible frame, not another press: a half action must not
    // be sent on to the next display or through its size cycle here.
    const Rect recalculated =
        calculationService_.calculate(*action, TargetWindow{current}, screen, false);
    if (recalculated.isNull()) {
        logger_.info([] { return "No frame for the new visible frame; keeping the target"; });
        return;
    }
    move.target = insetByLayoutGap(recalculated, visibleAfter, move.request.layoutSpacing);
    logger_.info(
        [&] { return "New target frame after dock change: " + move.target.description(); });
    if (const auto set = accessibilityElement_.setFrame(window, move.target); !set) {
        logger_.logger().error("Error setting window frame: " + set.error().description());
    }
    logger_.info([&] {
        const auto readBack = accessibilityElement_.frame(window);
        return "Final frame after dock change adjustment: " +
               (readBack ? readBack->description() : readBack.error().description());
    });
}

bool WindowMover::isVerified(const Move& move, const Rect& frame, int number) const {
    // "Main screen" here is the primary display (the first the platform lists), not the display
    // with the key window: that one follows focus, and this program's own panels can hold it.
    const bool primary = isOnPrimaryDisplay(move.screen);
    const double t = primary ? (number == 1 ? 1 : 2) : (number == 1 ? 2 : 4);
    const Rect& target = move.target;
    const double yTolerance = move.request.isBottomAligned ? 3 * t : t;
    return std::fabs(frame.minX() - target.minX()) <= t &&
           std::fabs(frame.minY() - target.minY()) <= yTolerance &&
           std::fabs(frame.width() - target.width()) <= 5 * t &&
           std::fabs(frame.height() - target.height()) <= 5 * t;
}

void WindowMover::finish(const std::shared_ptr<Move>& move, WindowMoveResult result) {
    if (!result && result.error() == WindowMoveError::superseded) {
        logger_.info([] { return "Window move superseded by a newer move of the same window"; });
    } else if (!result) {
        logger_.logger().warning("Window move failed: " + std::string(description(result.error())));
    }
    move->finished = true;
    if (const auto found = movesByWindow_.find(move->request.window);
        found != movesByWindow_.end() && found->second.lock() == move) {
        movesByWindow_.erase(found);
    }
    --movesUnderWay_;
    if (auto completion = std::exchange(move->completion, nullptr)) {
        queue_.post([alive = std::weak_ptr<bool>(alive_), completion = std::move(completion),
                     result = std::move(result)] {
            if (alive.lock()) {
                completion(result);
            }
        });
    }
    if (movesUnderWay_ == 0) {
        for (auto& callback : std::exchange(idleCallbacks_, {})) {
            whenIdle(std::move(callback));
        }
    }
}

void WindowMover::whenIdle(std::function<void()> callback) {
    if (movesUnderWay_ > 0) {
        idleCallbacks_.push_back(std::move(callback));
        return;
    }
    queue_.post([alive = std::weak_ptr<bool>(alive_), callback = std::move(callback)] {
        if (alive.lock()) {
            callback();
        }
    });
}

}  // namespace corvetta
