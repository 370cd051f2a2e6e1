// "list_windows" over a simulated desktop with many applications, each with two windows: the
// method runs on the main thread, so its cost is time the program does not answer anything else.
// Run with --benchmark_filter=ListWindows; the time per call should grow with the count, not its
// square.

#include <string>

#include <benchmark/benchmark.h>

#include "app/window_services.h"
#include "automation/automation_methods.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/manual_queue.h"
#include "foundation/notification_center.h"
#include "platform/sim/simulated_desktop.h"

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
    InMemoryPreferences loggingDefaults{{{LoggingService::kMinimumLogLevelKey, 2}}};
    InMemoryPreferences defaults;
    NotificationCenter notifications;
    ManualClock clock;
    ManualQueue queue{clock};
    Logbook logbook{loggingDefaults, notifications, clock, nullptr};
    LoggingService logging{loggingDefaults, logbook};
    SimulatedDesktop desktop{manyApplications(count), queue};
    WindowServices services{desktop, queue, defaults, logging};
    AutomationMethods methods{AutomationContext{desktop,
                                                queue,
                                                services.screenDetection,
                                                services.windowSnappingService,
                                                services.windowMover,
                                                logbook,
                                                logging,
                                                "Corvetta 0.1.0",
                                                "simulated benchmark desktop",
                                                [] { return std::string("Ready"); },
                                                {}}};
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
