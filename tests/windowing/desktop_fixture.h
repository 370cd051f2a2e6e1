// desktop_fixture.h: The program's services on a two-display simulated desktop, for window tests.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "app/service_root.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "windowing_fixture.h"

namespace corvetta::testing_support {

// A simulated desktop on the manual queue. The primary display is 1440x900 with a 25-point menu
// bar; the second lies to its right, 300 points lower and 1080 high, so the two coordinate spaces
// differ on both. The editor (pid 100) is in front; pid 200 hangs.
class DesktopTest : public WindowingTest {
protected:
    static constexpr ProcessId kEditor = 100;
    static constexpr ProcessId kFrozen = 200;
    static constexpr WindowNumber kFrozenWindow = 20;
    static constexpr Rect kPrimaryVisible{0, 0, 1440, 875};
    static constexpr Rect kSecondaryFrame{1440, -300, 1920, 1080};

    static SimulatedDesktopSetup desktopSetup(std::vector<SimulatedWindow> editorWindows) {
        SimulatedDesktopSetup setup;
        setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, kPrimaryVisible, 2, true},
                          {2, "External", kSecondaryFrame, kSecondaryFrame, 1, false}};
        setup.applications = {
            {.pid = kEditor, .name = "Editor", .windows = std::move(editorWindows)},
            {.pid = kFrozen,
             .name = "Frozen",
             .unresponsive = true,
             .windows = {{.number = kFrozenWindow, .frame = {0, 25, 200, 200}}}}};
        setup.frontmost = kEditor;
        return setup;
    }

    // A fresh desktop and fresh services; earlier ones are dropped first.
    void startDesktop(SimulatedDesktopSetup setup) {
        services.reset();
        desktop = std::make_unique<SimulatedDesktop>(std::move(setup), queue);
        services = std::make_unique<ServiceRoot>(
            ProcessPlumbing{*desktop, queue, preferences, notifications, logbook, logging});
    }
    void startDesktop(std::vector<SimulatedWindow> editorWindows) {
        startDesktop(desktopSetup(std::move(editorWindows)));
    }

    AXElement element(WindowNumber number) const { return desktop->windowElement(number).value(); }

    // Runs a move to its end; the completion must run exactly once, and only from the queue.
    WindowMoveResult move(WindowMoveRequest request) {
        std::optional<WindowMoveResult> result;
        int completions = 0;
        services->windowMover.moveWindow(std::move(request), [&](const WindowMoveResult& r) {
            result = r;
            ++completions;
        });
        EXPECT_EQ(completions, 0);
        queue.advance(std::chrono::seconds(2));
        EXPECT_EQ(completions, 1);
        return result.value();
    }

    ManualQueue queue{clock};
    std::unique_ptr<SimulatedDesktop> desktop;
    std::unique_ptr<ServiceRoot> services;
};

}  // namespace corvetta::testing_support
