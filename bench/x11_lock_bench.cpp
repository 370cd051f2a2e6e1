// How long the layout lock takes to follow a user's resize on a real X server: two test clients
// side by side under openbox, locked in this process on the program's own services. A bare X
// client resizes the left window and clicks, as the user's drag of its border ends; the time is
// from the scan that the mouse-up scheduled to the neighbour read back where it was sent (the
// fixed waits before the scan and before the read-back are timers, not counted).
//
//   corvetta_x11_lock_bench [RUNS]     (100 by default)

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "app/service_root.h"
#include "bench_main.h"
#include "bench_ranks.h"
#include "platform/x11/x11_desktop.h"
#include "support/child_process.h"
#include "support/fake_x_client.h"
#include "support/manual_plumbing.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"
#include "support/virtual_display.h"

namespace corvetta::testing {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

// Runs the queue, X events included, until `done` or five seconds pass.
template <class Done>
void pumpUntil(ManualQueue& queue, Done done, const char* what) {
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error(std::string("timed out waiting for ") + what);
        }
        queue.runUntilIdle();
        std::this_thread::sleep_for(1ms);
    }
}

int run(int runs) {
    TemporaryFolder root;
    VirtualDisplay display{
        {.monitors = {{0, 0, 1280, 800}}, .windowManager = WindowManager::openboxForTests}};
    const auto environment = display.environment(isolatedEnvironment(root.path()));
    std::vector<std::unique_ptr<RunningProcess>> clients;
    std::vector<std::uint32_t> windowIds;
    for (const char* name : {"left", "right"}) {
        clients.push_back(std::make_unique<RunningProcess>(
            std::vector<std::string>{CORVETTA_TEST_CLIENT_BINARY, "--class",
                                     std::string("org.example.") + name, "--title", name,
                                     "--geometry", "500x500+100+100"},
            environment));
        const auto line = clients.back()->waitForLine("mapped ");
        if (!line) {
            throw std::runtime_error("a test client did not map its window:\n" +
                                     clients.back()->errors());
        }
        windowIds.push_back(static_cast<std::uint32_t>(std::stoul(line->substr(7))));
    }

    ManualPlumbing plumbing(2);
    auto desktop =
        X11Desktop::open(display.displayName(), plumbing.queue, [](const std::string&) {});
    if (!desktop) {
        throw std::runtime_error(desktop.error());
    }
    ServiceRoot services(plumbing.on(**desktop));
    plumbing.queue.runUntilIdle();
    auto& ax = (*desktop)->accessibilityPort();
    std::vector<AXWindowRef> refs;
    for (const auto id : windowIds) {
        for (const auto& entry : (*desktop)->windowListPort().onScreenWindows()) {
            if (entry.number == id) {
                refs.push_back({AXElement(entry.ownerPid, id)});
            }
        }
    }
    if (refs.size() != 2) {
        throw std::runtime_error("the test clients' windows are not listed");
    }
    // Halves with a 10-point gap, as a layout with spacing places them.
    const std::vector<Rect> halves = {{0, 0, 635, 700}, {645, 0, 635, 700}};
    {
        AXWriteBatch batch(ax);
        for (std::size_t i = 0; i < 2; ++i) {
            ax.setAttributeValue(refs[i].element, AXAttribute::kPosition, halves[i].origin);
            ax.setAttributeValue(refs[i].element, AXAttribute::kSize, halves[i].size);
        }
    }
    auto& lock = services.layoutLock;
    lock.lock(refs);
    plumbing.queue.advance(1s);
    if (lock.map() == nullptr) {
        throw std::runtime_error("the layout lock did not start");
    }

    FakeClient user(display.displayName());
    user.moveTo(1270, 790);
    std::vector<double> milliseconds;
    int unverified = 0;
    for (int i = 0; i < runs; ++i) {
        const auto& left = lock.map()->windows[0];
        const double grow = i % 2 == 0 ? 40 : -40;
        const Rect before = left.frame;
        // The client's own size: the frame's less the decorations, which do not change.
        auto* geometry =
            xcb_get_geometry_reply(user.raw(), xcb_get_geometry(user.raw(), windowIds[0]), nullptr);
        const auto width = static_cast<std::uint32_t>(geometry->width + grow);
        std::free(geometry);
        xcb_configure_window(user.raw(), windowIds[0], XCB_CONFIG_WINDOW_WIDTH, &width);
        user.sync();
        pumpUntil(
            plumbing.queue,
            [&] {
                const auto size = ax.copyAttributeValue(refs[0].element, AXAttribute::kSize);
                return size && std::abs(std::get<Size>(*size).width - before.width() - grow) < 1;
            },
            "the resize");
        user.click(1);
        user.sync();
        pumpUntil(
            plumbing.queue, [&] { return plumbing.queue.timeUntilNextDue().has_value(); },
            "the mouse-up");

        const auto began = std::chrono::steady_clock::now();
        plumbing.queue.advance(LayoutLockManager::kMouseUpScanDelay);
        plumbing.queue.advance(LayoutLockManager::kVerificationDelay);
        const auto ended = std::chrono::steady_clock::now();
        milliseconds.push_back(Milliseconds(ended - began).count());

        const auto& right = lock.map()->windows[1];
        const double expectedLeft = before.maxX() + grow + 10;
        if (lock.isAdjusting() || std::abs(right.frame.minX() - expectedLeft) > 1 ||
            std::abs(right.frame.maxX() - 1280) > 1) {
            ++unverified;
        }
    }
    std::printf("Layout lock following a resize of one of 2 windows on Xvfb + openbox, %d runs\n",
                runs);
    std::printf("scan to neighbour verified, ms: p50 %.3f, p99 %.3f; not where sent: %d\n",
                rank(milliseconds, 0.5), rank(milliseconds, 0.99), unverified);
    const double p50 = rank(milliseconds, 0.5);
    std::printf("target p50 under 5 ms: %s\n", p50 < 5 ? "met" : "MISSED");
    return unverified == 0 ? 0 : 1;
}

}  // namespace
}  // namespace corvetta::testing

int main(int argc, char** argv) {
    return corvetta::testing::benchMain(argc, argv, "corvetta_x11_lock_bench", "RUNS", 100,
                                        corvetta::testing::run);
}
