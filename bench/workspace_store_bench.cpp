// Loading and saving 1,000 workspaces of 10 windows each, against the JSON library alone parsing
// and serialising the same bytes. The save is measured twice: with the backup on a RAM file
// system, where the flush to disk costs nothing, and on the temporary folder's disk.

#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include "support/manual_plumbing.h"
#include "workspaces/workspace_json.h"
#include "workspaces/workspace_service.h"

namespace corvetta {
namespace {

std::vector<Workspace> thousandWorkspaces() {
    std::vector<Workspace> workspaces;
    for (int i = 0; i < 1000; ++i) {
        Workspace workspace{.id = Uuid::random(), .name = "Workspace " + std::to_string(i)};
        for (int w = 0; w < 10; ++w) {
            workspace.windowInfos.push_back(
                WindowInfo{.frame = {10.0 * w, 25.0 + w, 800, 600},
                           .monitorID = Uuid::random().string(),
                           .appBundleIdentifier = "com.example.app" + std::to_string(w),
                           .zOrder = w,
                           .windowTitle = "Document " + std::to_string(w) + " — Editor",
                           .windowIndex = w});
        }
        workspaces.push_back(std::move(workspace));
    }
    return workspaces;
}

const std::string& storedBytes() {
    static const std::string bytes = encodeWorkspaces(thousandWorkspaces()).value();
    return bytes;
}

std::filesystem::path scratchFolder(const std::filesystem::path& parent) {
    std::string pattern = parent / "corvetta-bench-XXXXXX";
    return mkdtemp(pattern.data());
}

// The service starts from the stored list, as the program does. Adding the workspaces one by one
// would save the growing list a thousand times, with a flush to disk each time, per run.
void storeThousandWorkspaces(Preferences& defaults) {
    const auto& bytes = storedBytes();
    defaults.set(WorkspaceService::kUserDefaultsKey, Bytes(bytes.begin(), bytes.end()));
}

void BM_WorkspaceLoad(benchmark::State& state) {
    testing::ManualPlumbing plumbing;
    storeThousandWorkspaces(plumbing.defaults);
    const auto folder = scratchFolder(std::filesystem::temp_directory_path());
    for (auto _ : state) {
        WorkspaceService service(plumbing.defaults, plumbing.notifications, plumbing.clock,
                                 plumbing.logging, folder);
        benchmark::DoNotOptimize(service.workspaces().size());
    }
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_WorkspaceLoad)->Unit(benchmark::kMillisecond);

void BM_WorkspaceBareParse(benchmark::State& state) {
    const auto& bytes = storedBytes();
    for (auto _ : state) {
        benchmark::DoNotOptimize(Json::parse(bytes));
    }
}
BENCHMARK(BM_WorkspaceBareParse)->Unit(benchmark::kMillisecond);

void saveBenchmark(benchmark::State& state, const std::filesystem::path& parent) {
    testing::ManualPlumbing plumbing;
    storeThousandWorkspaces(plumbing.defaults);
    const auto folder = scratchFolder(parent);
    WorkspaceService service(plumbing.defaults, plumbing.notifications, plumbing.clock,
                             plumbing.logging, folder);
    for (auto _ : state) {
        benchmark::DoNotOptimize(service.save());
    }
    std::filesystem::remove_all(folder);
}

void BM_WorkspaceSaveWithoutFsync(benchmark::State& state) {
    saveBenchmark(state, "/dev/shm");
}
BENCHMARK(BM_WorkspaceSaveWithoutFsync)->Unit(benchmark::kMillisecond);

void BM_WorkspaceSaveWithFsync(benchmark::State& state) {
    saveBenchmark(state, std::filesystem::temp_directory_path());
}
BENCHMARK(BM_WorkspaceSaveWithFsync)->Unit(benchmark::kMillisecond);

void BM_WorkspaceBareSerialise(benchmark::State& state) {
    const auto document = Json::parse(storedBytes());
    for (auto _ : state) {
        benchmark::DoNotOptimize(document.dump(2));
    }
}
BENCHMARK(BM_WorkspaceBareSerialise)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace corvetta
