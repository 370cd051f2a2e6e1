// "list_windows" over a simulated desktop with many applications, each with two windows: the
// method runs on the main thread, so its cost is time the program does not answer anything else.
// Run with --benchmark_filter=ListWindows; the time per call should grow with the count, not its
// square.

#include <string>

#include <benchmark/benchmark.h>

#include "app/service_root.h"
#include "automation/automation_methods.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/manual_plumbing.h"

namespace corvetta {
namespace {

SimulatedDesktopSetup manyApplications(int count) {
    SimulatedDesktopSetup setup;
    setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true}};
    for (int i = 0; i < count; ++i) {
        const ProcessId pid = 1000 + i;
        SimulatedApplication app{pid, "com.example.app" + std::to_string(i),
                                 "App " + std::to_string(i)};
        const auto firstWindow = static_cast<WindowNumber>(10 + 2 * i);
        app.windows = {{.number = firstWindow, .title = "one", .frame = {10, 40, 600, 400}},
                       {.number = firstWindow + 1, .title = "two", .frame = {50, 80, 600, 400}}};
        setup.applications.push_back(std::move(app));
    }
    setup.frontmost = 1000;
    return setup;
}

void BM_ListWindows(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    testing::ManualPlumbing plumbing;
    SimulatedDesktop desktop{manyApplications(count), plumbing.queue};
    ServiceRoot services{plumbing.on(desktop, "simulated benchmark desktop")};
    AutomationMethods& methods = *services.automationMethods;
    std::size_t listed = 0;
    for (auto _ : state) {
        methods.dispatch("list_windows", Json::object(), [&](MethodOutcome outcome) {
            listed = outcome ? (*outcome)["windows"].size() : 0;
        });
    }
    if (listed != static_cast<std::size_t>(2 * count)) {
        state.SkipWithError("list_windows did not list every window");
    }
    state.SetItemsProcessed(state.iterations() * 2 * count);
}
BENCHMARK(BM_ListWindows)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace corvetta
