#include "windowing/window_snapping_service.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "windowing/calculation_settings.h"
#include "windowing/layout_gap.h"
#include "windowing/usable_screens.h"
#include "windowing/window_action_rows.h"

namespace corvetta {

namespace {

// A window sitting a little off target is put right by the mover's later attempts; a third one
// covers applications that take their frame late without holding up a key press for long.
constexpr int kMoveAttempts = 3;

// How far, in each of x, y, width and height, a window may sit from where the last snap left it
// and still count as untouched: applications round or nudge a frame by a point after taking it.
constexpr double kRepeatTolerance = 2;

// Targets that rest on the bottom of the visible frame, which a Dock appearing or disappearing
// during the move would leave floating or covered.
bool isBottomAligned(const WindowDirection& action) {
    using enum WindowDirection::Case;
    switch (action.kind()) {
        case bottomHalf:
        case bottomLeft:
        case bottomRight:
        case bottomThird:
        case bottomLeftQuarter:
        case bottomRightQuarter:
            return true;
        default:
            return false;
    }
}

// Keeps the window's place and size relative to the visible frame it leaves, scaled to the one it
// enters, and then wholly inside that one: displays of different sizes keep a half a half.
Rect frameOnOtherDisplay(const Rect& frame, const Rect& fromVisible, const Rect& toVisible) {
    const double scaleX = fromVisible.width() > 0 ? toVisible.width() / fromVisible.width() : 1;
    const double scaleY = fromVisible.height() > 0 ? toVisible.height() / fromVisible.height() : 1;
    const double width = std::min(frame.width() * scaleX, toVisible.width());
    const double height = std::min(frame.height() * scaleY, toVisible.height());
    const double x = toVisible.minX() + (frame.minX() - fromVisible.minX()) * scaleX;
    const double y = toVisible.minY() + (frame.minY() - fromVisible.minY()) * scaleY;
    return Rect(std::max(toVisible.minX(), std::min(x, toVisible.maxX() - width)),
                std::max(toVisible.minY(), std::min(y, toVisible.maxY() - height)), width, height)
        .floored();
}

}  // namespace

std::string_view description(WindowSnappingError error) {
    switch (error) {
        case WindowSnappingError::noFrontmostWindow:
            return "No frontmost window found";
        case WindowSnappingError::noTargetScreen:
            return "No target screen found";
    }
    return "Unknown window snapping error";
}

// Shared with the activation callback, which holds it weakly: a notification delivered while the
// service is being torn down finds nothing to update.
struct WindowSnappingService::Tracking {
    std::optional<std::string> ownBundleIdentifier;
    ProcessId ownProcess = 0;
    std::optional<RunningApplication> lastNonCorvettaApp;
};

// Shared with the completions of moves under way, which hold it weakly and may run after the
// service is gone.
struct WindowSnappingService::SnapMemory {
    std::optional<CompletedSnap> last;
    // Counts presses, so that only the newest one records its completion.
    std::uint64_t presses = 0;
};

bool WindowSnappingService::CompletedSnap::isRepeatedBy(const PlacedWindow& placed,
                                                        const WindowDirection& action) const {
    const auto near = [](double a, double b) { return std::fabs(a - b) <= kRepeatTolerance; };
    const Rect& now = placed.frame;
    return placed.window == window && action == pressedAction && near(now.minX(), frame.minX()) &&
           near(now.minY(), frame.minY()) && near(now.width(), frame.width()) &&
           near(now.height(), frame.height());
}

WindowSnappingService::WindowSnappingService(WindowMover& windowMover,
                                             ScreenDetectionService& screenDetection,
                                             AccessibilityElement& accessibilityElement,
                                             WindowCalculationService& calculationService,
                                             ApplicationsPort& applications,
                                             const Preferences& defaults, LoggingService& logging,
                                             WillSnapHook willSnap)
    : windowMover_(windowMover),
      screenDetection_(screenDetection),
      accessibilityElement_(accessibilityElement),
      calculationService_(calculationService),
      applications_(applications),
      defaults_(defaults),
      logging_(logging),
      logger_(logging, "WindowSnappingService", LogCategory::windowPositioning()),
      willSnap_(std::move(willSnap)),
      tracking_(std::make_shared<Tracking>()),
      snapMemory_(std::make_shared<SnapMemory>()) {
    const RunningApplication self = applications_.currentApplication();
    tracking_->ownBundleIdentifier = self.bundleIdentifier;
    tracking_->ownProcess = self.processIdentifier;
    // The application in front when the service starts is the target until another comes forward,
    // even when Corvetta's own menu comes to the front first.
    if (auto frontmost = applications_.frontmostApplication();
        frontmost && frontmost->processIdentifier != self.processIdentifier) {
        tracking_->lastNonCorvettaApp = std::move(frontmost);
    }
    // Our own menu or palette coming to the front must not take the target away from the window
    // the user is about to act on.
    workspaceObserver_ = applications_.observeDidActivateApplication(
        [weakTracking = std::weak_ptr<Tracking>(tracking_)](const RunningApplication& app) {
            const auto tracking = weakTracking.lock();
            if (tracking && app.bundleIdentifier != tracking->ownBundleIdentifier) {
                tracking->lastNonCorvettaApp = app;
            }
        });
}

std::optional<RunningApplication> WindowSnappingService::targetApplication() const {
    if (tracking_->lastNonCorvettaApp) {
        if (auto running = applications_.runningApplication(
                tracking_->lastNonCorvettaApp->processIdentifier)) {
            return running;
        }
    }
    auto frontmost = applications_.frontmostApplication();
    if (frontmost && frontmost->processIdentifier == tracking_->ownProcess) {
        return std::nullopt;
    }
    return frontmost;
}

void WindowSnappingService::snapFrontmostWindow(const WindowDirection& action,
                                                SnapCompletion completion) {
    logger_.info([&] { return "Snapping frontmost window to " + action.description(); });
    constexpr std::string_view kErrorPrefix = "Error snapping window: ";
    const auto placed = placeTargetWindow();
    if (!placed) {
        fail(kErrorPrefix, placed.error(), completion);
        return;
    }
    snap(*placed, action, kErrorPrefix, std::move(completion));
}

void WindowSnappingService::snapWindow(const RunningApplication& application,
                                       const WindowDirection& action, SnapCompletion completion) {
    constexpr std::string_view kErrorPrefix = "Error snapping window for app: ";
    const auto window = focusedWindow(application);
    if (!window) {
        const std::string message = "No focused window for " + application.description();
        logger_.logger().warning(message);
        if (completion) {
            completion(unexpected(message));
        }
        return;
    }
    const auto placed = place(*window);
    if (!placed) {
        fail(kErrorPrefix, placed.error(), completion);
        return;
    }
    snap(*placed, action, kErrorPrefix, std::move(completion));
}

void WindowSnappingService::moveWindow(const RunningApplication& application, const Rect& frame,
                                       SnapCompletion completion) {
    constexpr std::string_view kErrorPrefix = "Error moving window for app: ";
    startPress();
    const auto window = focusedWindow(application);
    if (!window) {
        fail(kErrorPrefix, std::string(description(WindowSnappingError::noFrontmostWindow)),
             completion);
        return;
    }
    const auto screen = screenDetection_.screenContaining(frame);
    if (!screen) {
        fail(kErrorPrefix, std::string(description(WindowSnappingError::noTargetScreen)),
             completion);
        return;
    }
    std::string success = "Moved " + windowName(*window) + " to " + frame.description() + " on " +
                          screen->description();
    move(WindowMoveRequest{*window, frame, *screen, false, kMoveAttempts, std::nullopt, 0},
         std::move(success), kErrorPrefix, std::move(completion));
}

void WindowSnappingService::moveFrontmostWindowToNextDisplay(SnapCompletion completion) {
    moveToNeighbourDisplay(true, std::move(completion));
}

void WindowSnappingService::moveFrontmostWindowToPreviousDisplay(SnapCompletion completion) {
    moveToNeighbourDisplay(false, std::move(completion));
}

WindowDirection WindowSnappingService::direction(const SnapPosition& position) {
    logger_.info([&] { return "Converting position " + position.description() + " to direction"; });
    if (position.isCustom()) {
        return WindowDirection::custom(position.customRect());
    }
    // The table row of the position's name holds the placement it performs: the same-named one,
    // maximize for fullscreen.
    return *findWindowActionByKeyName(position.name())->direction;
}

std::optional<AXElement> WindowSnappingService::focusedWindow(
    const std::optional<RunningApplication>& application) {
    if (!application) {
        return std::nullopt;
    }
    auto window = accessibilityElement_.focusedWindow(application->processIdentifier);
    if (!window) {
        logger_.logger().error("Failed to get focused window: " + window.error().description());
        return std::nullopt;
    }
    return *window;
}

Expected<WindowSnappingService::PlacedWindow, std::string>
WindowSnappingService::placeTargetWindow() {
    const auto window = focusedWindow(targetApplication());
    if (!window) {
        return unexpected(std::string(description(WindowSnappingError::noFrontmostWindow)));
    }
    return place(*window);
}

Expected<WindowSnappingService::PlacedWindow, std::string> WindowSnappingService::place(
    const AXElement& window) {
    const auto frame = accessibilityElement_.frame(window);
    if (!frame) {
        return unexpected(frame.error().description());
    }
    auto screen = screenDetection_.screenContaining(*frame);
    if (!screen) {
        return unexpected(std::string(description(WindowSnappingError::noTargetScreen)));
    }
    return PlacedWindow{window, *frame, std::move(*screen)};
}

void WindowSnappingService::snap(const PlacedWindow& placed, const WindowDirection& action,
                                 std::string_view errorPrefix, SnapCompletion completion) {
    if (willSnap_) {
        willSnap_(placed.window);
    }
    auto repeated = startPress();
    if (repeated && repeated->isRepeatedBy(placed, action)) {
        logger_.info([&] { return "Repeated " + action.description() + " press"; });
    } else {
        repeated.reset();
    }
    const auto calculated = calculateFrame(placed, action, repeated);
    if (!calculated) {
        const std::string message = "No frame calculated for " + action.description();
        logger_.info([&] { return message; });
        if (completion) {
            completion(unexpected(message));
        }
        return;
    }
    // Read on every snap, so a change in the settings applies to the next key press. The gap is
    // taken on the display the calculation chose: a repeated half press may have moved on.
    const double spacing = calculation_settings::read(
        defaults_, calculation_settings::kLayoutSpacing, &logger_.logger());
    const Screen& screen = calculated->screen;
    const Rect target = insetByLayoutGap(calculated->rect, screen.visibleFrame, spacing);
    // Where a size cycle stands, for the next repetition; the window goes where the calculation
    // put it, and the log and the Dock handling speak of the action pressed.
    const WindowDirection& placedAction = calculated->resultingAction;
    std::string success = "Snapped " + windowName(placed.window) + " to " + action.description() +
                          " on " + screen.description();
    // The snap is remembered only once the window is verified where it was sent: a press after a
    // failed move starts afresh.
    SnapCompletion remember =
        [memory = std::weak_ptr<SnapMemory>(snapMemory_), press = snapMemory_->presses,
         snapped = CompletedSnap{placed.window, action, placedAction, {}},
         completion = std::move(completion)](const SnapResult& result) mutable {
            const auto shared = memory.lock();
            if (result && shared && shared->presses == press) {
                snapped.frame = result->frame;
                shared->last = snapped;
            }
            if (completion) {
                completion(result);
            }
        };
    move(WindowMoveRequest{placed.window, target, screen, isBottomAligned(action), kMoveAttempts,
                           action, spacing},
         std::move(success), errorPrefix, std::move(remember));
}

std::optional<WindowSnappingService::CompletedSnap> WindowSnappingService::startPress() {
    ++snapMemory_->presses;
    return std::exchange(snapMemory_->last, std::nullopt);
}

std::optional<CalculatedFrame> WindowSnappingService::calculateFrame(
    const PlacedWindow& placed, const WindowDirection& action,
    const std::optional<CompletedSnap>& repeated) {
    // Used as it comes: the size cycle's frame is the zero-sized one at the display's far corner.
    return calculationService_.calculateWithScreen(
        action, TargetWindow{placed.frame}, placed.screen, repeated.has_value(),
        repeated ? std::optional(repeated->placedAction) : std::nullopt);
}

void WindowSnappingService::moveToNeighbourDisplay(bool forward, SnapCompletion completion) {
    const std::string_view errorPrefix = forward ? "Error moving window to next display: "
                                                 : "Error moving window to previous display: ";
    startPress();
    const auto placed = placeTargetWindow();
    if (!placed) {
        fail(errorPrefix, placed.error(), completion);
        return;
    }
    // A copy: the ordered list is replaced when the displays change during the move.
    const std::vector<Screen> ordered = screenDetection_.orderedScreens();
    const UsableScreens usable(ordered, placed->screen, logging_);
    const Screen target = forward ? usable.nextScreen() : usable.previousScreen();
    const Rect frame =
        frameOnOtherDisplay(placed->frame, placed->screen.visibleFrame, target.visibleFrame);
    logger_.info([&] {
        return "Moving window from " + placed->frame.description() + " to " + frame.description();
    });
    std::string success = "Moved " + windowName(placed->window) + " to " + target.description();
    move(WindowMoveRequest{placed->window, frame, target, false, kMoveAttempts, std::nullopt, 0},
         std::move(success), errorPrefix, std::move(completion));
}

void WindowSnappingService::move(WindowMoveRequest request, std::string successMessage,
                                 std::string_view errorPrefix, SnapCompletion completion) {
    // The completion may run after this service is gone; it keeps only copies.
    windowMover_.moveWindow(std::move(request),
                            [logger = logger_, successMessage = std::move(successMessage),
                             prefix = std::string(errorPrefix),
                             completion = std::move(completion)](const WindowMoveResult& result) {
                                if (!result) {
                                    const std::string error(description(result.error()));
                                    // A newer press took the window over: nothing went wrong.
                                    if (result.error() == WindowMoveError::superseded) {
                                        logger.info([&] { return error; });
                                    } else {
                                        logger.logger().error(prefix + error);
                                    }
                                    if (completion) {
                                        completion(unexpected(error));
                                    }
                                    return;
                                }
                                logger.info([&] { return successMessage; });
                                if (completion) {
                                    completion(*result);
                                }
                            });
}

void WindowSnappingService::fail(std::string_view errorPrefix, const std::string& error,
                                 const SnapCompletion& completion) const {
    logger_.logger().error(std::string(errorPrefix) + error);
    if (completion) {
        completion(unexpected(error));
    }
}

std::string WindowSnappingService::windowName(const AXElement& window) {
    const auto title = accessibilityElement_.title(window);
    if (title && !title->empty()) {
        return "\"" + *title + "\"";
    }
    return window.description();
}

}  // namespace corvetta
