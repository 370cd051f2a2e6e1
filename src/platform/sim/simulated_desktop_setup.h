// simulated_desktop_setup.h: What a simulated desktop starts from: displays, apps, windows.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/clock.h"
#include "foundation/geometry.h"
#include "platform/applications.h"
#include "platform/hot_keys.h"
#include "platform/screen.h"
#include "platform/window_list.h"

namespace corvetta {

// What a simulated desktop starts from: the contents of a desktop file, or what a test builds.

struct SimulatedDisplay {
    ScreenNumber id = 0;
    std::string name{};
    // Screen space (bottom-left origin of the first display, y upward).
    Rect frame{};
    // The frame without the menu bar and, while it shows, the Dock.
    Rect visibleFrame{};
    double scale = 1;
    bool builtin = false;
    DisplayIdentity identity{};
};

// How a simulated application's window takes the frames it is given. The defaults are a window
// that takes any frame at once.
struct SimulatedWindow {
    WindowNumber number = 0;
    std::string title{};
    // Accessibility space (top-left origin of the first display, y downward).
    Rect frame{};
    // Sizes below are raised to it, as applications enforce their minimum size.
    std::optional<Size> minSize{};
    // False: the minimum is enforced but "AXMinSize" is unsupported, as many applications do.
    bool reportsMinSize = true;
    std::optional<Size> maxSize{};
    // Sizes are taken in whole steps above minSize (or zero), rounding down, like a terminal
    // that sizes itself in character cells.
    std::optional<Size> resizeIncrements{};
    // Position and size writes take effect only after this long; reads report the old frame
    // until then.
    Duration applyDelay{0};
    // A window that refuses to move accepts the position write and stays where it is; one that
    // refuses to resize does the same for its size.
    bool movable = true;
    bool resizable = true;
    bool fullScreen = false;
    bool minimized = false;
    int layer = 0;
    std::string subrole = "AXStandardWindow";
    // For a window of an installed application: it appears this long after the application
    // started, as slow applications open their windows one after another.
    Duration appearsAfter{0};
    // Whether the window tells its window-server number ("_AXWindowID"); some windows do not,
    // and are then known only by their frame.
    bool reportsWindowNumber = true;
};

// One item of an application's menu, as the accessibility interface shows it: a title, a key
// equivalent, whether it can be chosen, and what choosing it does.
struct SimulatedMenuItem {
    std::string title{};
    // The key equivalent's character ("N"); empty for an item without one.
    std::string key{};
    // Which modifiers the key equivalent needs; Command alone is the usual case.
    bool command = true;
    bool shift = false;
    bool option = false;
    bool control = false;
    bool enabled = true;
    // Pressing the item opens this window in front of the application's others, `opensAfter`
    // later, under the next free window number (`number` is ignored).
    std::optional<SimulatedWindow> opensWindow{};
    Duration opensAfter{0};
};

// A menu of the menu bar ("File", "Shell").
struct SimulatedMenu {
    std::string title{};
    std::vector<SimulatedMenuItem> items{};
};

struct SimulatedApplication {
    ProcessId pid = 0;
    std::optional<std::string> bundleIdentifier{};
    std::string name{};
    ActivationPolicy activationPolicy = ActivationPolicy::regular;
    bool hidden = false;
    // Every accessibility call on the application and its windows fails with cannotComplete,
    // as with an application that hangs.
    bool unresponsive = false;
    // Front to back; the first is the focused window.
    std::vector<SimulatedWindow> windows{};
    // The menu bar, left to right; none for an application without one.
    std::vector<SimulatedMenu> menus{};
    // For an installed application: launching it starts it this long later.
    Duration launchDelay{0};
};

enum class DockEdge { bottom, left, right };

// A Dock on one display. While it shows, the display's visible frame is the one given for the
// display; while hidden, that visible frame grows by `size` on the Dock's edge.
struct SimulatedDock {
    ScreenNumber display = 0;
    DockEdge edge = DockEdge::bottom;
    double size = 0;
    bool hidden = false;
    // Hides while a window on its display overlaps it and shows again once none does, as docks
    // with "intelligent hiding" behave.
    bool intellihide = false;
};

struct SimulatedDesktopSetup {
    std::vector<SimulatedDisplay> displays;
    std::vector<SimulatedApplication> applications;
    std::optional<ProcessId> frontmost;
    std::optional<SimulatedDock> dock;
    bool accessibilityTrusted = true;
    // Screen space.
    Point mouseLocation;
    // Applications that are installed but not running; launching one starts it with its windows.
    std::vector<SimulatedApplication> installed;
    // Combinations other applications hold; registering one fails.
    std::vector<HotKeyCombination> reservedHotKeys;
    // This program as the simulated workspace sees it: an accessory application without windows.
    SimulatedApplication self{
        1, "com.corvetta.Corvetta", "Corvetta", ActivationPolicy::accessory, false, false, {}};
};

}  // namespace corvetta
