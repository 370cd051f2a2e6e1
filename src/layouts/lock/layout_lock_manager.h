// layout_lock_manager.h: Keeps the windows a layout placed together while the user resizes them.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/main_queue.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "layouts/layout_lock_target.h"
#include "layouts/lock/adjacency_map.h"
#include "layouts/lock/drift_pill.h"
#include "layouts/lock/tiled_window_probe.h"
#include "platform/input_events.h"
#include "windowing/event_monitor.h"

namespace corvetta {

class LearnedMinSizeStore;

struct LayoutLockDependencies {
    AccessibilityPort& accessibility;
    ApplicationsPort& applications;
    ScreenPort& screens;
    EventMonitorPort& events;
    MainQueue& queue;
    Preferences& defaults;
    LearnedMinSizeStore& learnedMinSizes;
    LoggingService& logging;
    NotificationCenter& notifications;
};

// The one active lock: after a layout placed two or more windows it watches left mouse-ups, and
// when one tiled window was resized it moves the windows across the moved edges and along its line
// so the shared edges stay together; a window moved away, minimized or maximized leaves the group.
// Its own moves are checked afterwards, and a window that would not shrink as asked teaches the
// minimum size of its application. Main thread only.
class LayoutLockManager final : public LayoutLockTarget {
public:
    static constexpr std::chrono::milliseconds kSettleDelay{300};
    static constexpr std::chrono::milliseconds kSettleScanDelay{500};
    static constexpr std::chrono::milliseconds kMouseUpScanDelay{120};
    static constexpr std::chrono::milliseconds kTrackedDragScanDelay{10};
    // Time for the windows to take the frames just written before they are read back.
    static constexpr std::chrono::milliseconds kVerificationDelay{50};
    static constexpr const char* kEnabledKey = "layoutLockEnabled";
    static constexpr const char* kDividerDragKey = "dividerDragEnabled";
    // Posted whenever what the drift pill shows changes.
    static constexpr const char* kPillDidChange = "com.corvetta.driftPillDidChange";

    explicit LayoutLockManager(LayoutLockDependencies dependencies);
    ~LayoutLockManager() override;
    LayoutLockManager(const LayoutLockManager&) = delete;
    LayoutLockManager& operator=(const LayoutLockManager&) = delete;

    // Ends any lock at once and starts the new one once the windows have settled.
    void lock(std::vector<AXWindowRef> windows) override;
    void unlock();
    // Every tiled window back to where the layout put it.
    void reset();
    // Ends the lock, leaving the windows where they are.
    void untile() { unlock(); }
    // A shortcut or the socket is about to snap this window somewhere else: it leaves the group
    // first, so the next mouse-up does not take the snap for a resize its neighbours must follow.
    void windowWillSnap(const AXElement& window);
    void perform(DriftPillCommand command);

    // None while no lock is active (also while a new one settles).
    const AdjacencyMap* map() const { return map_ ? &*map_ : nullptr; }
    bool isSettling() const { return settle_.isPending(); }
    // True while the lock moves windows itself, until it has read them back.
    bool isAdjusting() const { return isAdjusting_; }
    bool dividerMode() const { return dividerMode_; }
    const DriftPill& pill() const { return pill_; }
    // Whether a window sits away from where the layout put it.
    static bool hasDrifted(const TiledWindow& window);

    // Asked at each mouse-up: true when a drag of a tiled window was just tracked, so the scan
    // can follow at once.
    void setTiledDragTracker(std::function<bool()> tracker) {
        tiledDragTracked_ = std::move(tracker);
    }
    // The next adjustment treats these edges as the dragged ones (a divider drag).
    void forceEdges(std::vector<Edge> edges) { forcedEdges_ = std::move(edges); }

private:
    void start(const std::vector<AXWindowRef>& windows);
    void rereadAfterSettling();
    void mouseUp();
    void scan();
    void leave(TiledWindow& window, const char* message);
    void follow(const AXWindowRef& dragged, const Rect& oldFrame, const Rect& newFrame);
    void setFrames(const std::vector<std::pair<AXWindowRef, Rect>>& frames);
    void verify();
    void learn(const AXWindowRef& window, const Rect& requested, const Rect& observed);
    void updatePill();

    LayoutLockDependencies deps_;
    TiledWindowProbe probe_;
    Logger logger_;
    std::optional<AdjacencyMap> map_;
    EventMonitor mouseUpMonitor_;
    bool isAdjusting_ = false;
    bool dividerMode_ = false;
    std::vector<Edge> forcedEdges_;
    DriftPill pill_;
    DelayedWorkSlot settle_;
    DelayedWorkSlot settleScan_;
    DelayedWorkSlot pendingScanWorkItem_;
    DelayedWorkSlot verificationWorkItem_;
    // Frames written and not yet read back.
    std::vector<std::pair<AXWindowRef, Rect>> unverified_;
    // Sizes windows were seen refusing to go below, by however little.
    std::unordered_map<AXWindowRef, Size> minSizeCache_;
    // Tiled windows whose last read failed (closed, or their application gone quiet).
    std::unordered_set<AXWindowRef> unreadable_;
    std::function<bool()> tiledDragTracked_;
};

}  // namespace corvetta
