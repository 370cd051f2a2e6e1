#include "layouts/lock/layout_lock_manager.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "layouts/lock/learned_min_size_store.h"
#include "layouts/lock/tiling_calculator.h"

namespace corvetta {

namespace {
// A frame read back this close to the one written has settled.
constexpr double kSettledTolerance = 1;
// Wider or taller than asked by more than this: the window has a minimum we did not know.
constexpr double kRefusalTolerance = 0.5;
// Refused by more than this: worth remembering for the application, not just this window.
constexpr double kLearningThreshold = 20;

bool near(const Rect& a, const Rect& b, double tolerance) {
    return std::abs(a.minX() - b.minX()) <= tolerance &&
           std::abs(a.minY() - b.minY()) <= tolerance &&
           std::abs(a.width() - b.width()) <= tolerance &&
           std::abs(a.height() - b.height()) <= tolerance;
}
}  // namespace

LayoutLockManager::LayoutLockManager(LayoutLockDependencies dependencies)
    : deps_(dependencies),
      probe_(deps_.accessibility, deps_.applications, deps_.screens, deps_.learnedMinSizes),
      logger_(deps_.logging, "LayoutLockManager"),
      mouseUpMonitor_(
          deps_.events, eventMask(EventType::leftMouseUp), [this](const InputEvent&) { mouseUp(); },
          deps_.logging),
      settle_(deps_.queue),
      settleScan_(deps_.queue),
      pendingScanWorkItem_(deps_.queue),
      verificationWorkItem_(deps_.queue) {}

LayoutLockManager::~LayoutLockManager() = default;

bool LayoutLockManager::hasDrifted(const TiledWindow& window) {
    return !near(window.frame, window.originalFrame, kSettledTolerance);
}

void LayoutLockManager::lock(std::vector<AXWindowRef> windows) {
    if (!deps_.defaults.boolValue(kEnabledKey).value_or(true) || windows.size() < 2) {
        return;
    }
    unlock();
    settle_.schedule(kSettleDelay, [this, windows = std::move(windows)] { start(windows); });
}

void LayoutLockManager::start(const std::vector<AXWindowRef>& windows) {
    std::vector<TiledWindow> tiled;
    for (const auto& ref : windows) {
        if (const auto reading = probe_.read(ref)) {
            tiled.push_back({ref, reading->frame, reading->frame, true});
        }
    }
    if (tiled.size() < 2) {
        logger_.warning("Layout Lock not started: fewer than 2 windows could be read");
        return;
    }
    map_ = buildAdjacencyMap(std::move(tiled));
    dividerMode_ = deps_.defaults.boolValue(kDividerDragKey).value_or(false);
    mouseUpMonitor_.start();
    logger_.info("Layout Lock active: " + std::to_string(map_->windows.size()) + " tiled windows");
    settleScan_.schedule(kSettleScanDelay, [this] { rereadAfterSettling(); });
}

// Windows that were still taking their frames when the lock started are where they meant to go
// now: that is the layout, not a user's resize.
void LayoutLockManager::rereadAfterSettling() {
    if (!map_ || isAdjusting_) {
        return;
    }
    bool changed = false;
    for (auto& window : map_->windows) {
        const auto reading = window.isTiled ? probe_.read(window.ref) : std::nullopt;
        if (!reading) {
            continue;
        }
        if (reading->minimized) {
            leave(window, "Window minimized out of Layout Lock tiling group");
        } else if (reading->frame != window.frame) {
            window.frame = window.originalFrame = reading->frame;
            changed = true;
        }
    }
    if (changed) {
        map_ = buildAdjacencyMap(std::move(map_->windows));
        logger_.info("Layout Lock re-read window frames after settling");
    }
    updatePill();
}

void LayoutLockManager::unlock() {
    mouseUpMonitor_.stop();
    settle_.cancel();
    settleScan_.cancel();
    pendingScanWorkItem_.cancel();
    verificationWorkItem_.cancel();
    unverified_.clear();
    unreadable_.clear();
    forcedEdges_.clear();
    isAdjusting_ = false;
    map_.reset();
    updatePill();
}

void LayoutLockManager::mouseUp() {
    if (!map_) {
        return;
    }
    const bool tracked = tiledDragTracked_ && tiledDragTracked_();
    pendingScanWorkItem_.schedule(tracked ? kTrackedDragScanDelay : kMouseUpScanDelay,
                                  [this] { scan(); });
}

void LayoutLockManager::scan() {
    if (!map_ || isAdjusting_) {
        return;
    }
    struct Resize {
        AXWindowRef ref;
        Rect oldFrame;
        Rect newFrame;
    };
    std::optional<Resize> dragged;
    for (auto& window : map_->windows) {
        if (!window.isTiled) {
            continue;
        }
        const auto reading = probe_.read(window.ref);
        if (!reading) {
            unreadable_.insert(window.ref);
            continue;
        }
        unreadable_.erase(window.ref);
        const auto edges = TilingCalculator::resizedEdges(window.frame, reading->frame);
        if (reading->minimized) {
            leave(window, "Window minimized out of Layout Lock tiling group");
        } else if (edges.empty()) {
            if (std::abs(reading->frame.minX() - window.frame.minX()) > kResizeTolerance ||
                std::abs(reading->frame.minY() - window.frame.minY()) > kResizeTolerance) {
                leave(window, "Window moved out of Layout Lock tiling group");
            }
        } else if (probe_.fillsItsDisplay(reading->frame)) {
            leave(window, "Window maximized out of Layout Lock tiling group");
        } else if (!dragged) {
            dragged = Resize{window.ref, window.frame, reading->frame};
        } else {
            // Two windows resized between mouse-ups: follow the first, keep the other as it is.
            window.frame = reading->frame;
        }
    }
    if (std::none_of(map_->windows.begin(), map_->windows.end(),
                     [](const TiledWindow& w) { return w.isTiled; })) {
        logger_.info("All windows left the tiling group — ending Layout Lock session");
        unlock();
        return;
    }
    if (dragged) {
        follow(dragged->ref, dragged->oldFrame, dragged->newFrame);
    }
    updatePill();
}

void LayoutLockManager::windowWillSnap(const AXElement& element) {
    if (!map_) {
        return;
    }
    auto* window = map_->find(AXWindowRef{element});
    if (window == nullptr || !window->isTiled) {
        return;
    }
    leave(*window, "Window snapped out of Layout Lock tiling group");
    if (std::none_of(map_->windows.begin(), map_->windows.end(),
                     [](const TiledWindow& w) { return w.isTiled; })) {
        logger_.info("All windows left the tiling group — ending Layout Lock session");
        unlock();
        return;
    }
    updatePill();
}

void LayoutLockManager::leave(TiledWindow& window, const char* message) {
    window.isTiled = false;
    unreadable_.erase(window.ref);
    logger_.info(message);
}

void LayoutLockManager::follow(const AXWindowRef& dragged, const Rect& oldFrame,
                               const Rect& newFrame) {
    std::unordered_map<AXWindowRef, Size> minSizes;
    for (const auto& window : map_->windows) {
        if (window.isTiled && !(window.ref == dragged)) {
            minSizes[window.ref] = probe_.minimumSize(window.ref, minSizeCache_[window.ref]);
        }
    }
    const auto adjustment =
        TilingCalculator::adjust(*map_, dragged, oldFrame, newFrame, minSizes, forcedEdges_);
    forcedEdges_.clear();
    map_->find(dragged)->frame = newFrame;

    std::vector<std::pair<AXWindowRef, Rect>> frames;
    if (!near(adjustment.draggedFrame, newFrame, kSettledTolerance)) {
        frames.emplace_back(dragged, adjustment.draggedFrame);
    }
    for (const auto& window : map_->windows) {
        for (const auto* moved : {&adjustment.neighborFrames, &adjustment.siblingFrames}) {
            if (const auto found = moved->find(window.ref); found != moved->end()) {
                frames.emplace_back(window.ref, found->second);
            }
        }
    }
    // Debug: one line per followed resize, for whoever wonders why a neighbour moved.
    logger_.debug("Layout Lock followed a resize of " + dragged.element.description() + " to " +
                  newFrame.description() + ": " + std::to_string(frames.size()) +
                  " window(s) adjusted");
    setFrames(frames);
}

void LayoutLockManager::reset() {
    if (!map_) {
        return;
    }
    std::vector<std::pair<AXWindowRef, Rect>> frames;
    for (const auto& window : map_->windows) {
        if (window.isTiled) {
            frames.emplace_back(window.ref, window.originalFrame);
        }
    }
    logger_.info("Layout Lock reset to original frames");
    setFrames(frames);
    updatePill();
}

void LayoutLockManager::perform(DriftPillCommand command) {
    switch (command) {
        case DriftPillCommand::reset:
            reset();
            break;
        case DriftPillCommand::untile:
            untile();
            break;
    }
}

void LayoutLockManager::setFrames(const std::vector<std::pair<AXWindowRef, Rect>>& frames) {
    if (frames.empty()) {
        return;
    }
    isAdjusting_ = true;
    {
        AXWriteBatch batch(deps_.accessibility);
        for (const auto& entry : frames) {
            const auto& [ref, frame] = entry;
            const auto failed = [this, &entry](const char* what) {
                const auto& [window, requested] = entry;
                logger_.warning(what + window.element.description() +
                                " frame=" + requested.description());
            };
            if (deps_.accessibility.setAttributeValue(ref.element, AXAttribute::kPosition,
                                                      frame.origin) != AXErrorCode::success) {
                failed("setFrame pos failed: ");
            }
            if (deps_.accessibility.setAttributeValue(ref.element, AXAttribute::kSize,
                                                      frame.size) != AXErrorCode::success) {
                failed("setFrame size failed: ");
            }
            map_->find(ref)->frame = frame;
            unverified_.emplace_back(ref, frame);
        }
    }
    verificationWorkItem_.schedule(kVerificationDelay, [this] { verify(); });
}

void LayoutLockManager::verify() {
    for (const auto& [ref, requested] : std::exchange(unverified_, {})) {
        auto* window = map_ ? map_->find(ref) : nullptr;
        const auto reading = window ? probe_.read(ref) : std::nullopt;
        if (reading) {
            window->frame = reading->frame;
            learn(ref, requested, reading->frame);
        }
    }
    isAdjusting_ = false;
    updatePill();
}

void LayoutLockManager::learn(const AXWindowRef& window, const Rect& requested,
                              const Rect& observed) {
    auto& cached = minSizeCache_[window];
    const double extraWidth = observed.width() - requested.width();
    const double extraHeight = observed.height() - requested.height();
    if (extraWidth > kRefusalTolerance) {
        cached.width = std::max(cached.width, observed.width());
    }
    if (extraHeight > kRefusalTolerance) {
        cached.height = std::max(cached.height, observed.height());
    }
    const auto bundle = probe_.bundleIdentifier(window);
    if (!bundle) {
        return;
    }
    const double learnedWidth = extraWidth > kLearningThreshold ? observed.width() : 0;
    const double learnedHeight = extraHeight > kLearningThreshold ? observed.height() : 0;
    if (learnedWidth > 0 || learnedHeight > 0) {
        deps_.learnedMinSizes.record(*bundle, learnedWidth, learnedHeight);
        logger_.info("Learned minimum size for " + *bundle + ": " +
                     Size{learnedWidth, learnedHeight}.description());
    }
    deps_.learnedMinSizes.lower(*bundle, observed.width(), observed.height());
}

void LayoutLockManager::updatePill() {
    bool changed = false;
    if (!map_) {
        changed = pill_.update(false, false, false);
    } else {
        bool drifted = false;
        bool anyVisible = false;
        Rect group = Rect::null();
        for (const auto& window : map_->windows) {
            if (window.isTiled) {
                drifted = drifted || hasDrifted(window);
                anyVisible = anyVisible || !unreadable_.contains(window.ref);
                group = group.unionWith(window.frame);
            }
        }
        changed = pill_.update(true, drifted, anyVisible, group);
    }
    if (changed) {
        deps_.notifications.post(kPillDidChange);
    }
}

}  // namespace corvetta
