// How much one log call costs on the calling thread, with and without the platform log, and how
// the log book behaves when many threads log at once.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "diagnostics/logbook.h"
#include "diagnostics/logger.h"
#include "diagnostics/logging_service.h"
#include "diagnostics/stderr_log.h"

namespace corvetta {
namespace {

struct LoggingStack {
    InMemoryPreferences preferences;
    NotificationCenter notifications;
    SystemClock clock;
    Logbook logbook;
    LoggingService service;
    Logger logger;

    explicit LoggingStack(PlatformLog* platformLog)
        : logbook(preferences, notifications, clock, platformLog),
          service(preferences, logbook),
          logger(service, "BenchService", LogCategory::windowPositioning()) {}
};

void BM_LogIntoTheBook(benchmark::State& state) {
    LoggingStack stack(nullptr);
    for (auto _ : state) {
        stack.logger.info("Window positioned successfully on attempt 1");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogIntoTheBook);

void BM_LogFilteredOut(benchmark::State& state) {
    LoggingStack stack(nullptr);
    stack.preferences.set(LoggingService::kMinimumLogLevelKey, 2);
    stack.service.reloadSettings();
    for (auto _ : state) {
        stack.logger.debug("Calculated leftHalf");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogFilteredOut);

void BM_LogThroughThePlatformLog(benchmark::State& state) {
    const int devNull = open("/dev/null", O_WRONLY | O_CLOEXEC);
    {
        StderrLog platformLog(devNull);
        LoggingStack stack(&platformLog);
        for (auto _ : state) {
            stack.logger.info("Window positioned successfully on attempt 1");
        }
        platformLog.flush();
    }
    close(devNull);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogThroughThePlatformLog);

LoggingStack* sharedStack = nullptr;

void BM_LogFromManyThreads(benchmark::State& state) {
    if (state.thread_index() == 0) {
        sharedStack = new LoggingStack(nullptr);
    }
    for (auto _ : state) {
        sharedStack->logger.info("Selected screen: Built-in");
    }
    if (state.thread_index() == 0) {
        delete sharedStack;
        sharedStack = nullptr;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogFromManyThreads)->Threads(1)->Threads(2)->Threads(4);

void BM_FilterRecentEntries(benchmark::State& state) {
    LoggingStack stack(nullptr);
    for (int i = 0; i < 500; ++i) {
        stack.logger.info("Entry number " + std::to_string(i));
    }
    LogFilter filter;
    filter.search = "number 49";
    filter.limit = 50;
    for (auto _ : state) {
        benchmark::DoNotOptimize(stack.logbook.recentEntries(filter));
    }
}
BENCHMARK(BM_FilterRecentEntries);

}  // namespace
}  // namespace corvetta
