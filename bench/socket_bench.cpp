// Round trips of "list_displays" through the automation socket: a client's request read, checked,
// run on the main queue by the real methods over a simulated desktop, and answered. Measured with
// one client and with sixteen at once; the latencies of every request give the p50 and p99.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "app/window_services.h"
#include "automation/automation_methods.h"
#include "automation/mcp_bridge_service.h"
#include "automation/socket_client.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/event_loop.h"
#include "foundation/notification_center.h"
#include "platform/sim/simulated_desktop.h"

namespace corvetta {
namespace {

SimulatedDesktopSetup twoDisplays() {
    SimulatedDesktopSetup setup;
    setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true},
                      {2, "External", {1440, 0, 2560, 1440}, {1440, 0, 2560, 1415}, 1, false}};
    SimulatedApplication editor{101, "com.example.editor", "Editor"};
    editor.windows.push_back({.number = 11, .title = "main.cpp", .frame = {100, 100, 800, 600}});
    setup.applications.push_back(editor);
    setup.frontmost = 101;
    return setup;
}

std::filesystem::path temporaryFolder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "corvetta-bench-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        std::abort();
    }
    return pattern;
}

// The program's pieces that serve the socket, with the main queue on its own thread and logging
// at warnings, as the "Warnings & Errors Only" preset has it.
struct ServedDesktop {
    ServedDesktop() {
        std::promise<void> running;
        loop.post([&] { running.set_value(); });
        mainThread = std::thread([this] { loop.run(); });
        running.get_future().wait();
        if (server.start() != MCPBridgeService::StartResult::listening) {
            std::abort();
        }
    }
    ~ServedDesktop() {
        server.stop();
        loop.stop();
        mainThread.join();
        std::filesystem::remove_all(folder);
    }

    std::filesystem::path folder = temporaryFolder();
    InMemoryPreferences loggingDefaults{{{LoggingService::kMinimumLogLevelKey, 2}}};
    InMemoryPreferences defaults;
    NotificationCenter notifications;
    SystemClock clock;
    Logbook logbook{loggingDefaults, notifications, clock, nullptr};
    LoggingService logging{loggingDefaults, logbook};
    EventLoop loop{clock};
    SimulatedDesktop desktop{twoDisplays(), loop};
    WindowServices services{desktop, loop, defaults, logging};
    AutomationMethods methods{AutomationContext{desktop,
                                                loop,
                                                services.screenDetection,
                                                services.windowSnappingService,
                                                services.windowMover,
                                                logbook,
                                                logging,
                                                "Corvetta 0.1.0",
                                                "simulated benchmark desktop",
                                                [] { return std::string("Ready"); },
                                                {}}};
    MCPBridgeService server{folder / "mcp.sock", methods, loop, logging};
    std::thread mainThread;
};

// Each iteration, every client sends this many requests one after another.
constexpr int kRequestsPerClient = 200;

void BM_ListDisplaysRoundTrip(benchmark::State& state) {
    const auto clientCount = static_cast<std::size_t>(state.range(0));
    ServedDesktop served;
    std::vector<SocketClient> clients;
    for (std::size_t i = 0; i < clientCount; ++i) {
        clients.push_back(SocketClient::connect(served.server.socketPath()).value());
    }
    const std::string request = R"({"id":"b","method":"list_displays"})"
                                "\n";
    std::vector<std::vector<double>> latencies(clientCount);
    std::atomic<bool> failed = false;
    for (auto _ : state) {
        std::vector<std::thread> threads;
        for (std::size_t c = 0; c < clientCount; ++c) {
            threads.emplace_back([&, c] {
                for (int i = 0; i < kRequestsPerClient; ++i) {
                    const auto sent = std::chrono::steady_clock::now();
                    clients[c].send(request);
                    const auto answer = clients[c].readLine(std::chrono::seconds(10));
                    latencies[c].push_back(std::chrono::duration<double, std::micro>(
                                               std::chrono::steady_clock::now() - sent)
                                               .count());
                    if (!answer || answer->find("\"displayCount\":2") == std::string::npos) {
                        failed = true;
                    }
                }
            });
        }
        for (auto& thread : threads) {
            thread.join();
        }
    }
    if (failed) {
        state.SkipWithError("a request was not answered with the displays");
        return;
    }
    std::vector<double> all;
    for (const auto& perClient : latencies) {
        all.insert(all.end(), perClient.begin(), perClient.end());
    }
    std::sort(all.begin(), all.end());
    state.counters["p50_us"] = all[all.size() / 2];
    state.counters["p99_us"] = all[all.size() * 99 / 100];
    state.SetItemsProcessed(static_cast<std::int64_t>(all.size()));
}
BENCHMARK(BM_ListDisplaysRoundTrip)->Arg(1)->Arg(16)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace corvetta
