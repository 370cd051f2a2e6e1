// live_windows.h: An application's standard windows as they stand now, for capture and restore.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/expected.h"
#include "foundation/geometry.h"
#include "platform/accessibility.h"
#include "platform/applications.h"
#include "platform/window_list.h"

namespace corvetta {

// One standard window of a running application.
struct LiveWindow {
    AXElement element;
    // Accessibility space.
    Rect frame;
    std::string title;
    bool isMinimized = false;
    bool isFullscreen = false;
    std::optional<WindowNumber> number;

    bool operator==(const LiveWindow&) const = default;
};

// The application's standard windows front to back (minimized ones included); dialogs, panels
// and windows without a frame are left out, a window that names no subrole counts as standard.
// The error when its window list cannot be read.
Expected<std::vector<LiveWindow>, AXErrorCode> standardWindowsOf(AccessibilityPort& accessibility,
                                                                 ProcessId application);

// Every running copy of the application with this bundle identifier, in the port's order: a new
// window may come with a process of its own (a desktop action usually starts the program again).
std::vector<RunningApplication> runningCopiesOf(const ApplicationsPort& applications,
                                                const std::string& bundleIdentifier);

// The standard windows of every running copy, in that order; copies that cannot be read add none.
// This order is what a window's index among its application's windows counts.
std::vector<LiveWindow> standardWindowsOfApplication(AccessibilityPort& accessibility,
                                                     const ApplicationsPort& applications,
                                                     const std::string& bundleIdentifier);

}  // namespace corvetta
