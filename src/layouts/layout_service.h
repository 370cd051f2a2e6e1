// layout_service.h: Applies a layout template to the front windows of the target displays.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/expected.h"
#include "foundation/main_queue.h"
#include "foundation/preferences.h"
#include "layouts/custom_layout_template.h"
#include "layouts/layout_lock_target.h"
#include "platform/accessibility.h"
#include "platform/applications.h"
#include "platform/pointer.h"
#include "platform/screen.h"
#include "platform/window_list.h"
#include "windowing/accessibility_element.h"
#include "windowing/window_mover.h"

namespace corvetta {

enum class LayoutError {
    // No window left to place on any target display.
    noEligibleWindows,
    // The template has no panes.
    noWindowsOrPanes,
    // The platform lists no display at all.
    noDisplays,
};

// "No eligible windows on screen for layout", ...
std::string_view description(LayoutError error);

// How an application of a template ended: every window sent to a pane had its move verified,
// retried or given up on.
struct LayoutOutcome {
    std::string templateName;
    // Windows sent to a pane, over all target displays.
    int windowsPlaced = 0;
    // Those the mover saw arrive.
    int windowsVerified = 0;
};

using LayoutResult = Expected<LayoutOutcome, LayoutError>;
using LayoutCompletion = std::function<void(const LayoutResult&)>;

// Where pane `pane` (a unit rectangle, origin lower-left) of a display with the visible frame
// `visible` lies, in screen space: every side not on the visible frame's edge moves in by half the
// spacing, so neighbouring panes end up `spacing` apart and outer ones touch the edges.
Rect paneFrame(const Rect& pane, const Rect& visible, double spacing);

// A window of the window list that a layout may place, with the display it belongs to.
struct EligibleWindow {
    Screen display;
    AXElement window;
};

// Places the frontmost windows of a display, or of every display, into a template's panes, the
// layout spacing between neighbouring panes and none against the display's edges, and hands the
// placed windows to the layout lock. docs/layouts.md, "Applying a layout", has the rules.
// Main thread only.
class LayoutService {
public:
    static constexpr const char* kServiceName = "LayoutService";
    // Attempts of each window's move before it counts as not verified.
    static constexpr int kMoveAttempts = 3;

    struct Ports {
        AccessibilityPort& accessibility;
        WindowListPort& windowList;
        ApplicationsPort& applications;
        ScreenPort& screens;
        PointerPort& pointer;
    };

    LayoutService(Ports ports, AccessibilityElement& accessibilityElement, WindowMover& windowMover,
                  LayoutLockTarget& layoutLock, Preferences& defaults, MainQueue& queue,
                  LoggingService& logging);
    ~LayoutService();
    LayoutService(const LayoutService&) = delete;
    LayoutService& operator=(const LayoutService&) = delete;

    // Sends the windows to their panes at once; `done` runs on the main queue once every move has
    // ended, after the placed windows went to the lock. A failure moves nothing.
    void applyCustomLayout(const CustomLayoutTemplate& layout, LayoutCompletion done = {});

    // The displays a template fills: all of them for a template with "applyToAllDisplays", else
    // the first whose frame holds the pointer, else the first (the primary).
    std::vector<Screen> targetDisplays(bool allDisplays) const;

    // The windows of the window list on `displays` that a layout may place, front to back. No
    // displays means the one under the pointer.
    std::vector<EligibleWindow> eligibleWindows(std::optional<std::vector<Screen>> displays = {});

    // One application's windows by window number. Windows that do not tell their number are
    // matched by frame against `listed`, the window-list entries of the same process.
    using WindowMap = std::unordered_map<WindowNumber, AXElement>;
    WindowMap windowMap(ProcessId process, const std::vector<WindowListEntry>& listed);

private:
    struct Run;
    // Sends every window of every target display to its pane in one batch of writes, then has
    // the mover verify and retry each.
    void place(const std::shared_ptr<Run>& run, const CustomLayoutTemplate& layout,
               const std::vector<Screen>& displays, const std::vector<EligibleWindow>& windows);
    void moved(const std::shared_ptr<Run>& run, std::size_t index, const WindowMoveResult& result);
    void fail(const LayoutCompletion& done, LayoutError error);
    bool isExcluded(ProcessId process, std::unordered_map<ProcessId, bool>& known) const;

    Ports ports_;
    AccessibilityElement& accessibilityElement_;
    WindowMover& windowMover_;
    LayoutLockTarget& layoutLock_;
    Preferences& defaults_;
    MainQueue& queue_;
    Logger logger;
    std::shared_ptr<bool> alive_;
};

}  // namespace corvetta
