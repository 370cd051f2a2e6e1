// The cost of one whole snap on the simulated desktop: the target window looked up, its frame
// computed with the gap, written through the accessibility port, read back and verified. The
// simulated applications answer at once, so what is measured is our own work per snap, with
// logging at warnings as the "Warnings & Errors Only" preset has it.

#include <array>

#include <benchmark/benchmark.h>

#include "app/service_root.h"
#include "platform/sim/simulated_desktop.h"
#include "support/manual_plumbing.h"

namespace corvetta {
namespace {

SimulatedDesktopSetup twoDisplays() {
    SimulatedDesktopSetup setup;
    setup.displays = {
        {1, "Built-in", Rect(0, 0, 1440, 900), Rect(0, 0, 1440, 875), 2, true},
        {2, "External", Rect(1440, 0, 2560, 1440), Rect(1440, 0, 2560, 1415), 1, false}};
    SimulatedApplication editor{101, "com.example.editor", "Editor"};
    editor.windows.push_back({.number = 11,
                              .title = "main.cpp",
                              .frame = Rect(100, 100, 800, 600),
                              .minSize = Size{300, 200}});
    setup.applications.push_back(editor);
    setup.frontmost = 101;
    return setup;
}

void BM_SnapThroughTheMover(benchmark::State& state) {
    testing::ManualPlumbing plumbing;
    plumbing.defaults.set("layoutSpacing", 10);
    auto& queue = plumbing.queue;
    SimulatedDesktop desktop(twoDisplays(), queue);
    ServiceRoot services(plumbing.on(desktop));

    using enum WindowDirection::Case;
    const std::array<WindowDirection, 6> actions = {leftHalf, rightTwoThirds,  bottomHalf,
                                                    center,   topRightQuarter, maximize};
    std::size_t next = 0;
    int failures = 0;
    for (auto _ : state) {
        services.windowSnappingService.snapFrontmostWindow(
            actions[next++ % actions.size()],
            [&](const SnapResult& result) { failures += result ? 0 : 1; });
        queue.runUntilIdle();
    }
    if (failures > 0) {
        state.SkipWithError("a snap failed");
    }
}
BENCHMARK(BM_SnapThroughTheMover);

}  // namespace
}  // namespace corvetta
