// How long a workspace capture takes on a real X server: 50 windows of 5 applications (test
// clients, ten windows each) on two monitors under openbox, captured in this process on the
// program's own services, as "capture_workspace" does before it saves. The capture runs on the
// main thread, so its time is time the program answers nothing else.
//
//   corvetta_x11_capture_bench [RUNS]     (50 by default)

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/service_root.h"
#include "bench_main.h"
#include "bench_ranks.h"
#include "platform/x11/x11_desktop.h"
#include "support/child_process.h"
#include "support/manual_plumbing.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"
#include "support/virtual_display.h"

namespace corvetta::testing {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kApplications = 5;
constexpr int kWindowsEach = 10;

int run(int runs) {
    TemporaryFolder root;
    VirtualDisplay display{{.monitors = {{0, 0, 1280, 800}, {1280, 0, 1920, 1080}},
                            .windowManager = WindowManager::openboxForTests}};
    const auto environment = display.environment(isolatedEnvironment(root.path()));
    std::vector<std::unique_ptr<RunningProcess>> clients;
    for (int i = 0; i < kApplications * kWindowsEach; ++i) {
        const int x = (i % 10) * 300, y = 40 + (i / 10) * 100;
        clients.push_back(std::make_unique<RunningProcess>(
            std::vector<std::string>{CORVETTA_TEST_CLIENT_BINARY, "--class",
                                     "org.example.app" + std::to_string(i / kWindowsEach),
                                     "--title", "window " + std::to_string(i), "--geometry",
                                     "400x300+" + std::to_string(x) + "+" + std::to_string(y)},
            environment));
        if (!clients.back()->waitForLine("mapped ")) {
            throw std::runtime_error("a test client did not map its window:\n" +
                                     clients.back()->errors());
        }
    }

    ManualPlumbing plumbing(2);
    auto desktop =
        X11Desktop::open(display.displayName(), plumbing.queue, [](const std::string&) {});
    if (!desktop) {
        throw std::runtime_error(desktop.error());
    }
    ServiceRoot services(plumbing.on(**desktop));
    plumbing.queue.runUntilIdle();
    std::vector<double> milliseconds, roundTrips;
    std::size_t captured = 0;
    for (int i = 0; i < runs + 1; ++i) {
        const auto trips = (*desktop)->roundTrips();
        const auto began = std::chrono::steady_clock::now();
        captured = services.workspaceCapture.captureWindows().size();
        const auto ended = std::chrono::steady_clock::now();
        if (i > 0) {  // the first pays for lazily fetched window properties
            milliseconds.push_back(Milliseconds(ended - began).count());
            roundTrips.push_back(static_cast<double>((*desktop)->roundTrips() - trips));
        }
        plumbing.queue.runUntilIdle();
    }
    std::printf("Capture of %zu windows of %d applications on Xvfb + openbox, %d runs\n", captured,
                kApplications, runs);
    std::printf("ms: p50 %.3f, p99 %.3f; X round trips: p50 %.0f, p99 %.0f\n",
                rank(milliseconds, 0.5), rank(milliseconds, 0.99), rank(roundTrips, 0.5),
                rank(roundTrips, 0.99));
    const double p50 = rank(milliseconds, 0.5);
    std::printf("target p50 under 20 ms: %s\n", p50 < 20 ? "met" : "MISSED");
    return captured == static_cast<std::size_t>(kApplications * kWindowsEach) ? 0 : 1;
}

}  // namespace
}  // namespace corvetta::testing

int main(int argc, char** argv) {
    return corvetta::testing::benchMain(argc, argv, "corvetta_x11_capture_bench", "RUNS", 50,
                                        corvetta::testing::run);
}
