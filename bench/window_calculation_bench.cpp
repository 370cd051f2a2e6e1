// The cost of one window calculation, every action over random windows and arrangements, with
// logging at warnings as a user running the "Warnings & Errors Only" preset has it.

#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "platform/in_memory_screens.h"
#include "windowing/window_calculation_service.h"

namespace corvetta {
namespace {

std::vector<Screen> randomArrangement(std::mt19937& random) {
    std::uniform_int_distribution<int> count(1, 3);
    std::uniform_int_distribution<int> extent(800, 3000);
    std::uniform_int_distribution<int> shift(-100, 100);
    std::vector<Screen> screens;
    double x = 0;
    const int n = count(random);
    for (int i = 0; i < n; ++i) {
        const Rect frame(x, shift(random), extent(random), extent(random));
        const Rect visible(frame.minX(), frame.minY(), frame.width(), frame.height() - 25);
        screens.push_back(
            {static_cast<ScreenNumber>(i + 1), frame, visible, 2, "Display " + std::to_string(i)});
        x += frame.width();
    }
    return screens;
}

void BM_WindowCalculation(benchmark::State& state) {
    InMemoryPreferences loggingDefaults({{LoggingService::kMinimumLogLevelKey, 2}});
    NotificationCenter notifications;
    SystemClock clock;
    Logbook logbook(loggingDefaults, notifications, clock, nullptr);
    LoggingService logging(loggingDefaults, logbook);
    // Mode 2: the half actions go across displays where there are several.
    InMemoryPreferences defaults({{"subsequentExecutionSpace", 2}, {"curtainChangeSize", true}});

    std::mt19937 random(42);
    std::uniform_real_distribution<double> unit(0, 1);
    struct Scene {
        std::unique_ptr<InMemoryScreens> screens;
        std::unique_ptr<ScreenDetectionService> detection;
        std::unique_ptr<WindowCalculationService> service;
        std::vector<TargetWindow> windows;
    };
    std::vector<Scene> scenes;
    for (int i = 0; i < 16; ++i) {
        Scene scene;
        scene.screens = std::make_unique<InMemoryScreens>(randomArrangement(random));
        scene.detection = std::make_unique<ScreenDetectionService>(*scene.screens, logging);
        scene.service =
            std::make_unique<WindowCalculationService>(*scene.detection, defaults, logging);
        for (int w = 0; w < 64; ++w) {
            const Rect v = scene.screens->screens().front().visibleFrame;
            scene.windows.push_back(
                {{v.minX() + unit(random) * v.width() / 2, v.minY() + unit(random) * v.height() / 2,
                  200 + unit(random) * v.width() / 2, 200 + unit(random) * v.height() / 2}});
        }
        scenes.push_back(std::move(scene));
    }
    std::vector<std::vector<Screen>> screenLists;
    for (const auto& scene : scenes) {
        screenLists.push_back(scene.screens->screens());
    }

    std::size_t calculations = 0;
    std::size_t index = 0;
    for (auto _ : state) {
        const auto& scene = scenes[index % scenes.size()];
        const auto& list = screenLists[index % scenes.size()];
        const Screen& screen = list[index % list.size()];
        const TargetWindow& window = scene.windows[index % scene.windows.size()];
        for (auto action : allWindowDirectionCases()) {
            const WindowDirection direction = action == WindowDirection::Case::custom
                                                  ? WindowDirection::custom(window.frame)
                                                  : WindowDirection(action);
            benchmark::DoNotOptimize(scene.service->calculate(direction, window, screen));
        }
        calculations += kWindowDirectionCaseCount;
        ++index;
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(calculations));
    state.counters["ns_per_calculation"] =
        benchmark::Counter(static_cast<double>(calculations),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_WindowCalculation);

}  // namespace
}  // namespace corvetta
