// How long restoring a workspace takes on a real X server, seen from outside: ten windows of five
// running applications (test clients, two windows each) on two monitors under openbox all stand
// elsewhere, "restore_workspace" is sent to the real program, and the clock stops at its answer,
// which comes once every window has been verified where the workspace wants it. Next to it, in the
// same run, what a user's script does: one `wmctrl -e` per window, one after another, timed until
// the X server has all ten frames where they belong.
//
//   corvetta_x11_restore_bench [RUNS]     (50 by default, each way)

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/service_root.h"
#include "bench_main.h"
#include "platform/x11/x11_desktop.h"
#include "support/child_process.h"
#include "support/manual_plumbing.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"
#include "support/virtual_display.h"
#include "x11_bench_support.h"
#include "x11_frame_watch.h"
#include "x_probe.h"

namespace corvetta::testing {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kApplications = 5;
constexpr int kWindowsEach = 2;
constexpr int kWindows = kApplications * kWindowsEach;
constexpr int kClientWidth = 400, kClientHeight = 300;
// Only a hung program or window manager takes this long; a single miss ends the run.
constexpr std::chrono::seconds kDeadline{10};

class RestoreBench {
public:
    RestoreBench() {
        for (int i = 0; i < kWindows; ++i) {
            // Five per monitor, in a row.
            const int x = (i < 5 ? 20 : 1300) + (i % 5) * 150, y = 60 + (i % 5) * 60;
            clients_.push_back(std::make_unique<RunningProcess>(
                std::vector<std::string>{CORVETTA_TEST_CLIENT_BINARY, "--class",
                                         "org.example.app" + std::to_string(i / kWindowsEach),
                                         "--title", "window " + std::to_string(i), "--geometry",
                                         std::to_string(kClientWidth) + "x" +
                                             std::to_string(kClientHeight) + "+" +
                                             std::to_string(x) + "+" + std::to_string(y)},
                environment()));
            const auto line = clients_.back()->waitForLine("mapped ");
            if (!line) {
                throw std::runtime_error("a test client did not map its window:\n" +
                                         clients_.back()->errors());
            }
            windows_.push_back(static_cast<uint32_t>(std::stoul(line->substr(7))));
        }
        probe_ = std::make_unique<XProbe>(display_.displayName());
        watch_ = std::make_unique<FrameWatch>(display_.displayName(), windows_.front());
        for (const auto window : windows_) {
            watch_->watch(window);
            const auto frame = probe_->outerFrame(window);
            if (!frame) {
                throw std::runtime_error("a test client's frame cannot be read");
            }
            home_.push_back(*frame);
            // Somewhere else on the first monitor, smaller: a restore must move and resize.
            away_.push_back(XFrame{40 + static_cast<int>(away_.size()) * 30, 500, 300, 200});
        }
        // What openbox adds around the client, which wmctrl's size (the client's) leaves out.
        extraWidth_ = home_.front().width - kClientWidth;
        extraHeight_ = home_.front().height - kClientHeight;
        corvetta_ = std::make_unique<ProgramUnderTest>(root_.path(), environment());
        const std::string captured =
            corvetta_->ask(R"("capture_workspace","params":{"name":"Bench"})");
        if (captured.find("\"windowCount\":10") == std::string::npos) {
            throw std::runtime_error("the capture did not hold the ten windows: " + captured);
        }
    }

    std::vector<double> measureCorvetta(int runs) {
        return measure(runs, [&] {
            const std::string answer =
                corvetta_->ask(R"("restore_workspace","params":{"name":"Bench"})");
            if (answer.find("\"windowsPlaced\":10") == std::string::npos) {
                throw std::runtime_error("the restore did not place every window: " + answer);
            }
        });
    }

    std::vector<double> measureWmctrl(int runs) {
        return measure(runs, [&] {
            for (std::size_t i = 0; i < windows_.size(); ++i) {
                moveWithWmctrl(windows_[i], home_[i], extraWidth_, extraHeight_, environment());
            }
        });
    }

    // The same restores inside this process on the program's own services, counting how often
    // each waits for the X server. Every window is verified on its first attempt here (the
    // out-of-process runs show it), so the queue needs no clock to finish.
    struct InProcess {
        std::vector<double> milliseconds, roundTrips;
    };
    InProcess measureInProcess(int runs) {
        ManualPlumbing plumbing(2);
        auto desktop =
            X11Desktop::open(display_.displayName(), plumbing.queue, [](const std::string&) {});
        if (!desktop) {
            throw std::runtime_error(desktop.error());
        }
        auto processPlumbing = plumbing.on(**desktop);
        processPlumbing.configFolder = root_.path() / "in-process";
        ServiceRoot services(processPlumbing);
        plumbing.queue.runUntilIdle();
        const auto workspace = services.workspaceCapture.captureWorkspace("Bench");
        if (!workspace || workspace->windowInfos.size() != kWindows) {
            throw std::runtime_error("the in-process capture did not hold the ten windows");
        }
        InProcess result;
        std::uint64_t trips = 0;
        const auto samples = measure(runs, [&] {
            trips = (*desktop)->roundTrips();
            bool done = false;
            services.workspaceRestoration.restore(*workspace, RestoreTrigger::user,
                                                  [&](const RestoreReport&) { done = true; });
            for (int turn = 0; !done && turn < 100000; ++turn) {
                plumbing.queue.runUntilIdle();
            }
            if (!done) {
                throw std::runtime_error("the in-process restore did not finish");
            }
            result.roundTrips.push_back(static_cast<double>((*desktop)->roundTrips() - trips));
        });
        result.milliseconds = samples;
        result.roundTrips.erase(result.roundTrips.begin());
        return result;
    }

private:
    // Scatters the windows (untimed), then times `restore` until every frame is home.
    std::vector<double> measure(int runs, const std::function<void()>& restore) {
        std::vector<double> samples;
        for (int run = 0; run < runs + 1; ++run) {
            for (std::size_t i = 0; i < windows_.size(); ++i) {
                watch_->moveResize(windows_[i], away_[i], extraWidth_, extraHeight_);
            }
            if (!watch_->waitUntil([&] { return framesAre(*probe_, windows_, away_); },
                                   Clock::now() + kDeadline)) {
                throw std::runtime_error("the windows did not scatter");
            }
            if (corvetta_) {
                corvetta_->ask(R"("sync")");
            }
            const auto began = Clock::now();
            restore();
            if (!watch_->waitUntil([&] { return framesAre(*probe_, windows_, home_); },
                                   began + kDeadline)) {
                throw std::runtime_error("the windows did not come home:\n" + corvetta_->errors());
            }
            const auto ended = Clock::now();
            if (run > 0) {  // the first pays for lazily fetched window properties
                samples.push_back(Milliseconds(ended - began).count());
            }
            if (corvetta_) {
                corvetta_->drainErrors();
            }
        }
        return samples;
    }

    std::vector<std::string> environment() const {
        return display_.environment(isolatedEnvironment(root_.path()));
    }

    TemporaryFolder root_;
    VirtualDisplay display_{{.monitors = {{0, 0, 1280, 800}, {1280, 0, 1920, 1080}},
                             .windowManager = WindowManager::openboxForTests}};
    std::vector<std::unique_ptr<RunningProcess>> clients_;
    std::vector<uint32_t> windows_;
    std::vector<XFrame> home_, away_;
    int extraWidth_ = 0, extraHeight_ = 0;
    std::unique_ptr<XProbe> probe_;
    std::unique_ptr<FrameWatch> watch_;
    std::unique_ptr<ProgramUnderTest> corvetta_;
};

int run(int runs) {
    RestoreBench bench;
    const auto wmctrl = bench.measureWmctrl(runs);
    const auto corvetta = bench.measureCorvetta(runs);
    const auto inProcess = bench.measureInProcess(runs);
    std::printf("Restore of 10 windows of 5 running applications on Xvfb + openbox, %d runs (ms)\n",
                runs);
    std::printf("%-40s %8s %8s\n", "", "p50", "p99");
    std::printf("%-40s %8.2f %8.2f\n", "corvetta restore_workspace", rank(corvetta, 0.5),
                rank(corvetta, 0.99));
    std::printf("%-40s %8.2f %8.2f\n", "10 x wmctrl -e, one after another", rank(wmctrl, 0.5),
                rank(wmctrl, 0.99));
    std::printf("%-40s %8.2f %8.2f\n", "in process, warnings logged",
                rank(inProcess.milliseconds, 0.5), rank(inProcess.milliseconds, 0.99));
    std::printf("X round trips per restore in process: p50 %.0f, p99 %.0f\n",
                rank(inProcess.roundTrips, 0.5), rank(inProcess.roundTrips, 0.99));
    std::printf("target p50 under 50 ms: %s; faster than wmctrl: %s\n",
                rank(corvetta, 0.5) < 50 ? "met" : "MISSED",
                rank(corvetta, 0.5) < rank(wmctrl, 0.5) ? "yes" : "NO");
    return 0;
}

}  // namespace
}  // namespace corvetta::testing

int main(int argc, char** argv) {
    return corvetta::testing::benchMain(argc, argv, "corvetta_x11_restore_bench", "RUNS", 50,
                                        corvetta::testing::run);
}
