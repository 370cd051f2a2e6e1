#include "layouts/layout_service.h"

#include <algorithm>
#include <utility>

#include "windowing/calculation_settings.h"
#include "windowing/layout_gap.h"

namespace corvetta {

namespace {

// Whether a window whose move ended so still stands in its pane, as far as anyone can tell: one
// the mover could not verify (a terminal sizing itself in character cells) is there all but a
// few points; one that went away, stayed full screen or was sent elsewhere since is not.
bool staysInPane(const WindowMoveResult& result) {
    if (result) {
        return true;
    }
    switch (result.error()) {
        case WindowMoveError::verificationFailed:
        case WindowMoveError::failedToSetPosition:
        case WindowMoveError::failedToGetWindowInfo:
            return true;
        case WindowMoveError::windowIsFullscreen:
        case WindowMoveError::noTargetScreen:
        case WindowMoveError::invalidWindow:
        case WindowMoveError::superseded:
            return false;
    }
    return false;
}

}  // namespace

std::string_view description(LayoutError error) {
    switch (error) {
        case LayoutError::noEligibleWindows:
            return "No eligible windows on screen for layout";
        case LayoutError::noWindowsOrPanes:
            return "No eligible windows or panes for custom layout";
        case LayoutError::noDisplays:
            return "No displays to lay out on";
    }
    return "No eligible windows on screen for layout";
}

Rect paneFrame(const Rect& pane, const Rect& visible, double spacing) {
    const Rect frame(visible.minX() + pane.origin.x * visible.width(),
                     visible.minY() + pane.origin.y * visible.height(),
                     pane.size.width * visible.width(), pane.size.height * visible.height());
    return insetByLayoutGap(frame, visible, spacing);
}

struct LayoutService::Run {
    LayoutOutcome outcome;
    LayoutCompletion done;
    // In placement order: display by display, pane by pane.
    std::vector<AXElement> placed;
    std::vector<bool> handOver;
    int movesPending = 0;
};

LayoutService::LayoutService(Ports ports, AccessibilityElement& accessibilityElement,
                             WindowMover& windowMover, LayoutLockTarget& layoutLock,
                             Preferences& defaults, MainQueue& queue, LoggingService& logging)
    : ports_(ports),
      accessibilityElement_(accessibilityElement),
      windowMover_(windowMover),
      layoutLock_(layoutLock),
      defaults_(defaults),
      queue_(queue),
      logger(logging, kServiceName),
      alive_(std::make_shared<bool>(true)) {}

LayoutService::~LayoutService() {
    // Moves still under way complete into nothing.
    alive_.reset();
}

std::vector<Screen> LayoutService::targetDisplays(bool allDisplays) const {
    auto displays = ports_.screens.screens();
    if (allDisplays || displays.empty()) {
        return displays;
    }
    const Point pointer = ports_.pointer.mouseLocation();
    const auto under = std::ranges::find_if(
        displays, [&](const Screen& display) { return display.frame.contains(pointer); });
    return {under != displays.end() ? *under : displays.front()};
}

void LayoutService::applyCustomLayout(const CustomLayoutTemplate& layout, LayoutCompletion done) {
    const auto displays = targetDisplays(layout.applyToAllDisplays);
    if (displays.empty()) {
        logger.error("Failed to apply custom layout: " +
                     std::string(description(LayoutError::noDisplays)));
        fail(done, LayoutError::noDisplays);
        return;
    }
    const auto windows = eligibleWindows(displays);
    if (windows.empty()) {
        logger.warning(std::string(description(LayoutError::noEligibleWindows)));
        fail(done, LayoutError::noEligibleWindows);
        return;
    }
    if (layout.panes.empty()) {
        logger.warning(std::string(description(LayoutError::noWindowsOrPanes)));
        fail(done, LayoutError::noWindowsOrPanes);
        return;
    }
    auto run = std::make_shared<Run>();
    run->outcome.templateName = layout.name;
    run->done = std::move(done);
    place(run, layout, displays, windows);
}

void LayoutService::place(const std::shared_ptr<Run>& run, const CustomLayoutTemplate& layout,
                          const std::vector<Screen>& displays,
                          const std::vector<EligibleWindow>& windows) {
    const double spacing =
        calculation_settings::read(defaults_, calculation_settings::kLayoutSpacing, &logger);
    std::vector<WindowMoveRequest> moves;
    for (const auto& display : displays) {
        std::size_t count = 0;
        for (const auto& candidate : windows) {
            if (count == layout.panes.size()) {
                break;  // the rest stay where they are
            }
            if (!candidate.display.isSameScreen(display)) {
                continue;
            }
            moves.push_back(WindowMoveRequest{
                .window = candidate.window,
                .targetFrame = paneFrame(layout.panes[count], display.visibleFrame, spacing),
                .targetScreen = display,
                .maxAttempts = kMoveAttempts,
                .layoutSpacing = spacing});
            ++count;
        }
        if (count > 0) {
            logger.info("Applying custom layout '" + layout.name + "' to " + std::to_string(count) +
                        " window(s) on " + display.localizedName);
        }
    }

    run->outcome.windowsPlaced = static_cast<int>(moves.size());
    run->movesPending = static_cast<int>(moves.size());
    run->handOver.assign(moves.size(), false);
    for (const auto& move : moves) {
        run->placed.push_back(move.window);
    }
    // All in flight at once: each window is verified and retried on its own.
    windowMover_.moveWindows(moves, [this, alive = std::weak_ptr<bool>(alive_), run](
                                        std::size_t i, const WindowMoveResult& result) {
        if (alive.lock()) {
            moved(run, i, result);
        }
    });
}

void LayoutService::moved(const std::shared_ptr<Run>& run, std::size_t index,
                          const WindowMoveResult& result) {
    if (result) {
        ++run->outcome.windowsVerified;
    }
    run->handOver[index] = staysInPane(result);
    if (--run->movesPending > 0) {
        return;
    }
    std::vector<AXWindowRef> windows;
    for (std::size_t i = 0; i < run->placed.size(); ++i) {
        if (run->handOver[i]) {
            windows.push_back(AXWindowRef{run->placed[i]});
        }
    }
    layoutLock_.lock(std::move(windows));
    if (run->done) {
        run->done(run->outcome);
    }
}

void LayoutService::fail(const LayoutCompletion& done, LayoutError error) {
    if (!done) {
        return;
    }
    queue_.post([alive = std::weak_ptr<bool>(alive_), done, error] {
        if (alive.lock()) {
            done(unexpected(error));
        }
    });
}

}  // namespace corvetta
