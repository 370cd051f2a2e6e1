// The cost of a setting change that is written through to disk, and of typed reads.

#include <filesystem>

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include "foundation/json_file_preferences.h"

namespace corvetta {
namespace {

std::filesystem::path scratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "corvetta-bench-XXXXXX");
    return mkdtemp(pattern.data());
}

void BM_PreferencesWriteThrough(benchmark::State& state) {
    const auto folder = scratchFolder();
    SystemClock clock;
    JsonFilePreferences prefs(folder / "preferences.json", clock);
    // A realistic store: a few dozen settings besides the one being changed.
    for (int i = 0; i < state.range(0); ++i) {
        prefs.set("setting" + std::to_string(i), i * 1.5);
    }
    int value = 0;
    for (auto _ : state) {
        prefs.set("layoutSpacing", ++value);
    }
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_PreferencesWriteThrough)->Arg(40)->Arg(400)->Unit(benchmark::kMicrosecond);

void BM_PreferencesFloatRead(benchmark::State& state) {
    InMemoryPreferences prefs;
    for (int i = 0; i < 40; ++i) {
        prefs.set("setting" + std::to_string(i), i * 1.5);
    }
    prefs.set("almostMaximizeHeight", 0.9);
    for (auto _ : state) {
        benchmark::DoNotOptimize(prefs.floatValue("almostMaximizeHeight"));
    }
}
BENCHMARK(BM_PreferencesFloatRead);

}  // namespace
}  // namespace corvetta
