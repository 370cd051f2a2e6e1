// Main-queue overhead: posting and running work, and scheduling delayed work that a newer request
// cancels (the debounce pattern).

#include <benchmark/benchmark.h>

#include "foundation/manual_queue.h"

namespace corvetta {
namespace {

void BM_PostAndRun(benchmark::State& state) {
    ManualClock clock;
    ManualQueue queue(clock);
    int counter = 0;
    for (auto _ : state) {
        for (int i = 0; i < 100; ++i) {
            queue.post([&counter] { ++counter; });
        }
        queue.runUntilIdle();
    }
    state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(BM_PostAndRun);

void BM_DebouncedReschedule(benchmark::State& state) {
    ManualClock clock;
    ManualQueue queue(clock);
    DelayedWorkSlot slot(queue);
    int fired = 0;
    for (auto _ : state) {
        for (int i = 0; i < 100; ++i) {
            slot.schedule(std::chrono::milliseconds(300), [&fired] { ++fired; });
        }
        queue.advance(std::chrono::milliseconds(300));
    }
    state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(BM_DebouncedReschedule);

}  // namespace
}  // namespace corvetta
