// How long applying a four-pane layout takes on a real X server, seen from outside: four windows
// of four test clients on one monitor under openbox stand elsewhere, "apply_workspace_layout"
// {"name": "Fourths"} is sent to the real program, and the clock stops once the X server has
// every window in its pane (the answer itself comes only after the program verified each one).
// Next to it, in the same run, what a user's script does: one `wmctrl -e` per window, one after
// another, timed until the X server has all four frames where the layout put them.
//
//   corvetta_x11_layout_bench [RUNS]     (100 by default, each way)
//
// Measure a release build (docs/x11-desktop.md, "Benchmarks").

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
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

constexpr int kWindows = 4;
constexpr int kClientWidth = 300, kClientHeight = 200;
// Only a hung program or window manager takes this long; a single miss ends the run.
constexpr std::chrono::seconds kDeadline{10};
constexpr const char* kApply = R"("apply_workspace_layout","params":{"name":"Fourths"})";

class LayoutBench {
public:
    LayoutBench() {
        for (int i = 0; i < kWindows; ++i) {
            const int x = 40 + i * 120, y = 60 + i * 50;
            clients_.push_back(std::make_unique<RunningProcess>(
                std::vector<std::string>{
                    CORVETTA_TEST_CLIENT_BINARY, "--class", "org.example.app" + std::to_string(i),
                    "--title", "window " + std::to_string(i), "--geometry",
                    std::to_string(kClientWidth) + "x" + std::to_string(kClientHeight) + "+" +
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
            // Where each window is sent before every run: small, overlapping, none in a pane.
            away_.push_back(XFrame{100 + static_cast<int>(away_.size()) * 40, 150, 320, 220});
            extraWidth_ = frame->width - kClientWidth;
            extraHeight_ = frame->height - kClientHeight;
        }
        corvetta_ = std::make_unique<ProgramUnderTest>(root_.path(), environment());
        // Where the layout puts each window: learned once, then every run must get there.
        scatter();
        const std::string answer = corvetta_->ask(kApply);
        if (answer.find("\"windowCount\":4") == std::string::npos) {
            throw std::runtime_error("the layout did not place the four windows: " + answer);
        }
        for (const auto window : windows_) {
            panes_.push_back(probe_->outerFrame(window).value());
        }
    }

    std::vector<double> measureCorvetta(int runs) {
        return measure(runs, [&] {
            const std::string answer = corvetta_->ask(kApply);
            if (answer.find("\"windowsVerified\":4") == std::string::npos) {
                throw std::runtime_error("the layout did not verify every window: " + answer);
            }
        });
    }

    std::vector<double> measureWmctrl(int runs) {
        return measure(runs, [&] {
            for (std::size_t i = 0; i < windows_.size(); ++i) {
                moveWithWmctrl(windows_[i], panes_[i], extraWidth_, extraHeight_, environment());
            }
        });
    }

    // The same layout inside this process on the program's own services, counting how often each
    // application waits for the X server. Every window is verified on its first attempt here (the
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
        const auto fourths = CustomLayoutTemplate::builtIn(LayoutTemplate::fourths);
        InProcess result;
        const auto samples = measure(runs, [&] {
            const std::uint64_t trips = (*desktop)->roundTrips();
            std::optional<LayoutResult> done;
            services.layoutService.applyCustomLayout(fourths,
                                                     [&](const LayoutResult& r) { done = r; });
            for (int turn = 0; !done && turn < 100000; ++turn) {
                plumbing.queue.runUntilIdle();
            }
            if (!done || !*done || (*done)->windowsVerified != kWindows) {
                throw std::runtime_error("the in-process layout did not verify every window");
            }
            result.roundTrips.push_back(static_cast<double>((*desktop)->roundTrips() - trips));
        });
        result.milliseconds = samples;
        result.roundTrips.erase(result.roundTrips.begin());
        return result;
    }

private:
    void scatter() {
        for (std::size_t i = 0; i < windows_.size(); ++i) {
            watch_->moveResize(windows_[i], away_[i], extraWidth_, extraHeight_);
        }
        if (!watch_->waitUntil([&] { return framesAre(*probe_, windows_, away_); },
                               Clock::now() + kDeadline)) {
            throw std::runtime_error("the windows did not scatter");
        }
        corvetta_->ask(R"("sync")");
    }

    // Scatters the windows (untimed), then times `apply` until every frame is in its pane.
    std::vector<double> measure(int runs, const std::function<void()>& apply) {
        std::vector<double> samples;
        for (int run = 0; run < runs + 1; ++run) {
            scatter();
            const auto began = Clock::now();
            apply();
            if (!watch_->waitUntil([&] { return framesAre(*probe_, windows_, panes_); },
                                   began + kDeadline)) {
                throw std::runtime_error("the windows did not reach their panes:\n" +
                                         corvetta_->errors());
            }
            const auto ended = Clock::now();
            if (run > 0) {  // the first pays for lazily fetched window properties
                samples.push_back(Milliseconds(ended - began).count());
            }
            corvetta_->drainErrors();
        }
        return samples;
    }

    std::vector<std::string> environment() const {
        return display_.environment(isolatedEnvironment(root_.path()));
    }

    TemporaryFolder root_;
    // One monitor: the pointer, wherever Xvfb leaves it, is on it.
    VirtualDisplay display_{
        {.monitors = {{0, 0, 1280, 800}}, .windowManager = WindowManager::openboxForTests}};
    std::vector<std::unique_ptr<RunningProcess>> clients_;
    std::vector<uint32_t> windows_;
    std::vector<XFrame> away_, panes_;
    int extraWidth_ = 0, extraHeight_ = 0;
    std::unique_ptr<XProbe> probe_;
    std::unique_ptr<FrameWatch> watch_;
    std::unique_ptr<ProgramUnderTest> corvetta_;
};

int run(int runs) {
    LayoutBench bench;
    const auto wmctrl = bench.measureWmctrl(runs);
    const auto corvetta = bench.measureCorvetta(runs);
    const auto inProcess = bench.measureInProcess(runs);
    std::printf("Fourths applied to 4 windows on Xvfb + openbox, %d runs (ms)\n", runs);
    std::printf("%-40s %8s %8s\n", "", "p50", "p99");
    std::printf("%-40s %8.2f %8.2f\n", "corvetta apply_workspace_layout", rank(corvetta, 0.5),
                rank(corvetta, 0.99));
    std::printf("%-40s %8.2f %8.2f\n", "4 x wmctrl -e, one after another", rank(wmctrl, 0.5),
                rank(wmctrl, 0.99));
    std::printf("%-40s %8.2f %8.2f\n", "in process, warnings logged",
                rank(inProcess.milliseconds, 0.5), rank(inProcess.milliseconds, 0.99));
    std::printf("X round trips per layout in process: p50 %.0f, p99 %.0f\n",
                rank(inProcess.roundTrips, 0.5), rank(inProcess.roundTrips, 0.99));
    std::printf("target p50 under 10 ms: %s; faster than wmctrl: %s\n",
                rank(corvetta, 0.5) < 10 ? "met" : "MISSED",
                rank(corvetta, 0.5) < rank(wmctrl, 0.5) ? "yes" : "NO");
    return 0;
}

}  // namespace
}  // namespace corvetta::testing

int main(int argc, char** argv) {
    return corvetta::testing::benchMain(argc, argv, "corvetta_x11_layout_bench", "RUNS", 100,
                                        corvetta::testing::run);
}
