// How long a snap takes on a real X server, seen from outside: the left- or right-half shortcut is
// pressed through XTest and the clock stops once the X server has the window's outer frame where
// the action puts it. Next to it, in the same run, the floor: a bare client that sends the same
// _NET_MOVERESIZE_WINDOW request itself and waits for the same frame, which is what the window
// manager and the server cost without Corvetta; how long the shortcut itself takes to reach a
// client that grabbed it; and the same moves done the way a script would, by `xdotool key`
// followed by `wmctrl -e`, timed from starting the commands to the same frame.
//
//   corvetta_x11_bench [PRESSES]     (200 by default; each way, alternating left and right half)
//
// Everything runs on a private Xvfb with openbox (tests/support/virtual_display.h); the script
// phase comes first, while the program is not running, because its grab would take the shortcut.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <X11/keysym.h>
#include <poll.h>
#include <xcb/xcb.h>

#include "app/service_root.h"
#include "automation/socket_client.h"
#include "bench_main.h"
#include "platform/x11/x11_desktop.h"
#include "support/child_process.h"
#include "support/manual_plumbing.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"
#include "support/virtual_display.h"
#include "x11_frame_watch.h"
#include "x_probe.h"

namespace corvetta::testing {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// Only a hung program or window manager takes this long; a single miss ends the run.
constexpr std::chrono::seconds kPressDeadline{2};
// First moves pay for caches and lazily fetched mappings; they are not what a user repeats.
constexpr int kWarmUpPresses = 4;

constexpr int kScreenWidth = 1280, kScreenHeight = 800;

struct Half {
    const char* keyName;  // for xdotool
    uint32_t keysym;
    XFrame frame;
};
const Half kHalves[] = {
    {"Left", XK_Left, {0, 0, kScreenWidth / 2, kScreenHeight}},
    {"Right", XK_Right, {kScreenWidth / 2, 0, kScreenWidth / 2, kScreenHeight}},
};

struct Summary {
    double p50 = 0, p90 = 0, p99 = 0, mean = 0;
    std::size_t count = 0;
};

// Nearest rank: the smallest sample at or above the fraction of all samples.
Summary summarize(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    auto rank = [&](double fraction) {
        const auto index = static_cast<std::size_t>(
            std::max(0.0, fraction * static_cast<double>(samples.size()) - 1e-9));
        return samples[std::min(index, samples.size() - 1)];
    };
    return {
        rank(0.50), rank(0.90), rank(0.99),
        std::accumulate(samples.begin(), samples.end(), 0.0) / static_cast<double>(samples.size()),
        samples.size()};
}

class SnapBench {
public:
    explicit SnapBench(int presses) : presses_(presses) {
        window_ = startClient();
        probe_ = std::make_unique<XProbe>(display_.displayName());
        watch_ = std::make_unique<FrameWatch>(display_.displayName(), window_);
        if (!probe_->activate(window_)) {
            throw std::runtime_error("the test client could not be activated");
        }
        const auto frame = probe_->outerFrame(window_);
        if (!frame) {
            throw std::runtime_error("the test client's frame cannot be read");
        }
        // The client was created 400 x 300: the rest is openbox's frame, which wmctrl's size
        // (the client's) must leave out.
        frameWidth_ = frame->width - 400;
        frameHeight_ = frame->height - 300;
    }

    std::vector<double> measureScript() {
        return measure([&](const Half& half) {
            RunningProcess key(
                {"xdotool", "key", "--delay", "0", std::string("ctrl+super+") + half.keyName},
                environment());
            key.waitForExit();
            const std::string move = "0," + std::to_string(half.frame.x) + "," +
                                     std::to_string(half.frame.y) + "," +
                                     std::to_string(half.frame.width - frameWidth_) + "," +
                                     std::to_string(half.frame.height - frameHeight_);
            return std::make_unique<RunningProcess>(
                std::vector<std::string>{"wmctrl", "-i", "-r", std::to_string(window_), "-e", move},
                environment());
        });
    }

    std::vector<double> measureFloor() {
        return measure([&](const Half& half) {
            watch_->moveResize(window_, half.frame, frameWidth_, frameHeight_);
            return std::unique_ptr<RunningProcess>();
        });
    }

    std::vector<double> measureCorvetta() {
        startCorvetta();
        return measure([&](const Half& half) {
            // Control and Option: Control and Super on a PC keyboard.
            if (!probe_->pressKeys({XK_Control_L, XK_Super_L, half.keysym})) {
                throw std::runtime_error("no key for the shortcut");
            }
            return std::unique_ptr<RunningProcess>();
        });
    }

    // The same snaps done inside this process on the program's own services, counting how often
    // each waits for the X server (X11Desktop::roundTrips). `minimumLogLevel` 0 logs everything,
    // as the program does by default; 2 keeps warnings only.
    struct InProcess {
        std::vector<double> roundTrips;
        std::vector<double> milliseconds;
    };
    InProcess measureInProcess(int minimumLogLevel) {
        testing::ManualPlumbing plumbing(minimumLogLevel);
        auto& queue = plumbing.queue;
        auto desktop = X11Desktop::open(display_.displayName(), queue, [](const std::string&) {});
        if (!desktop) {
            throw std::runtime_error(desktop.error());
        }
        ServiceRoot services(plumbing.on(**desktop));
        InProcess result;
        for (int press = 0; press < kWarmUpPresses + presses_; ++press) {
            using enum WindowDirection::Case;
            const WindowDirection action = press % 2 == 0 ? leftHalf : rightHalf;
            queue.runUntilIdle();
            const auto before = (*desktop)->roundTrips();
            const auto began = Clock::now();
            bool succeeded = false;
            services.windowSnappingService.snapFrontmostWindow(
                action, [&](const SnapResult& snapped) { succeeded = snapped.has_value(); });
            queue.runUntilIdle();
            const auto ended = Clock::now();
            if (!succeeded) {
                throw std::runtime_error("in-process snap " + std::to_string(press) + " failed");
            }
            if (press >= kWarmUpPresses) {
                result.roundTrips.push_back(static_cast<double>((*desktop)->roundTrips() - before));
                result.milliseconds.push_back(Milliseconds(ended - began).count());
            }
        }
        return result;
    }

    // How long the shortcut, pressed the way the Corvetta phase presses it, takes to reach a
    // client that grabbed it: the part of Corvetta's time before the program can do anything.
    // Measured while the program is not running, on Up, which no phase moves the window with.
    std::vector<double> measureKeyDelivery() {
        FakeClient grabber(display_.displayName());
        const xcb_keycode_t up = grabber.keyCode(XK_Up);
        xcb_grab_key(grabber.raw(), 1, grabber.root(), XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4, up,
                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        grabber.sync();
        std::vector<double> samples;
        for (int press = 0; press < kWarmUpPresses + presses_; ++press) {
            const auto began = Clock::now();
            if (!probe_->pressKeys({XK_Control_L, XK_Super_L, XK_Up})) {
                throw std::runtime_error("no key for the shortcut");
            }
            for (;;) {
                const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
                    xcb_poll_for_event(grabber.raw()), &std::free);
                if (event && (event->response_type & 0x7f) == XCB_KEY_PRESS) {
                    break;
                }
                if (!event) {
                    pollfd polled = {xcb_get_file_descriptor(grabber.raw()), POLLIN, 0};
                    if (poll(&polled, 1, static_cast<int>(kPressDeadline.count() * 1000)) <= 0) {
                        throw std::runtime_error("the grabbed key press never arrived");
                    }
                }
            }
            if (press >= kWarmUpPresses) {
                samples.push_back(Milliseconds(Clock::now() - began).count());
            }
        }
        return samples;
    }

    // What the verification itself costs: one frame read-back, part of every sample above.
    std::vector<double> measureReadBack() {
        std::vector<double> samples;
        for (int read = 0; read < presses_; ++read) {
            const auto began = Clock::now();
            probe_->outerFrame(window_);
            samples.push_back(Milliseconds(Clock::now() - began).count());
        }
        return samples;
    }

private:
    uint32_t startClient() {
        std::vector<std::string> arguments = {CORVETTA_TEST_CLIENT_BINARY, "--geometry",
                                              "400x300+200+150"};
        client_ = std::make_unique<RunningProcess>(std::move(arguments), environment());
        const auto line = client_->waitForLine("mapped ");
        if (!line) {
            throw std::runtime_error("the test client did not map its window:\n" +
                                     client_->errors());
        }
        return static_cast<uint32_t>(std::stoul(line->substr(7)));
    }

    void startCorvetta() {
        writeTestFile(root_.path() / "config" / "corvetta" / "preferences.json", "{}");
        const auto socket = root_.path() / "corvetta.sock";
        corvetta_ = std::make_unique<RunningProcess>(
            std::vector<std::string>{CORVETTA_BINARY, "--desktop=x11",
                                     "--socket=" + socket.string()},
            environment());
        if (!corvetta_->waitForError(" ready (pid ")) {
            throw std::runtime_error("corvetta did not start:\n" + corvetta_->errors());
        }
        auto connected = SocketClient::connect(socket);
        if (!connected) {
            throw std::runtime_error("the automation socket does not answer");
        }
        socket_.emplace(std::move(*connected));
    }

    // Between presses, untimed: nothing of the last move is still under way, and the program's
    // report lines are read so a full pipe never stalls it.
    void settle() {
        if (!socket_) {
            return;
        }
        socket_->send(R"({"id":"settle","method":"sync"})"
                      "\n");
        if (!socket_->readLine(std::chrono::seconds(30))) {
            throw std::runtime_error("no answer to sync:\n" + corvetta_->errors());
        }
        corvetta_->waitForError("\n\x01", std::chrono::seconds(0));
    }

    // `start` begins one move and may hand back a process still running; the clock runs from
    // just before it until the frame is verified.
    std::vector<double> measure(
        const std::function<std::unique_ptr<RunningProcess>(const Half&)>& start) {
        std::vector<double> samples;
        for (int press = 0; press < kWarmUpPresses + presses_; ++press) {
            const Half& half = kHalves[press % 2];
            settle();
            const auto began = Clock::now();
            const auto helper = start(half);
            const bool reached = watch_->waitUntil(
                [&] { return probe_->outerFrame(window_) == half.frame; }, began + kPressDeadline);
            const auto ended = Clock::now();
            if (!reached) {
                const auto frame = probe_->outerFrame(window_).value_or(XFrame{});
                throw std::runtime_error("press " + std::to_string(press) + ": the frame stayed " +
                                         std::to_string(frame.x) + "," + std::to_string(frame.y) +
                                         " " + std::to_string(frame.width) + "x" +
                                         std::to_string(frame.height) + "\n" +
                                         (corvetta_ ? corvetta_->errors() : ""));
            }
            if (helper) {
                helper->waitForExit();
            }
            if (press >= kWarmUpPresses) {
                samples.push_back(Milliseconds(ended - began).count());
            }
        }
        return samples;
    }

    std::vector<std::string> environment() const {
        return display_.environment(isolatedEnvironment(root_.path()));
    }

    int presses_;
    TemporaryFolder root_;
    VirtualDisplay display_{{.monitors = {{0, 0, kScreenWidth, kScreenHeight}},
                             .windowManager = WindowManager::openboxForTests}};
    std::unique_ptr<RunningProcess> client_;
    uint32_t window_ = 0;
    std::unique_ptr<XProbe> probe_;
    std::unique_ptr<FrameWatch> watch_;
    int frameWidth_ = 0, frameHeight_ = 0;
    std::unique_ptr<RunningProcess> corvetta_;
    std::optional<SocketClient> socket_;
};

void printRow(const char* name, const Summary& summary) {
    std::printf("%-36s %8.3f %8.3f %8.3f %8.3f %6zu\n", name, summary.p50, summary.p90, summary.p99,
                summary.mean, summary.count);
}

int run(int presses) {
    SnapBench bench(presses);
    const Summary script = summarize(bench.measureScript());
    const Summary floor = summarize(bench.measureFloor());
    const Summary keyDelivery = summarize(bench.measureKeyDelivery());
    const auto inProcess = bench.measureInProcess(0);
    const auto inProcessQuiet = bench.measureInProcess(2);
    const Summary corvetta = summarize(bench.measureCorvetta());
    const Summary readBack = summarize(bench.measureReadBack());
    std::printf(
        "Half-screen snaps on Xvfb + openbox, 1280x800, until the frame is verified (ms)\n");
    std::printf("%-36s %8s %8s %8s %8s %6s\n", "", "p50", "p90", "p99", "mean", "n");
    printRow("corvetta, Ctrl+Super+arrow by XTest", corvetta);
    printRow("floor: _NET_MOVERESIZE_WINDOW alone", floor);
    printRow("xdotool key + wmctrl -e", script);
    printRow("(one frame read-back alone)", readBack);
    printRow("(the shortcut reaching a grab)", keyDelivery);
    printRow("in process, logging all", summarize(inProcess.milliseconds));
    printRow("in process, warnings only", summarize(inProcessQuiet.milliseconds));
    std::printf(
        "X round trips per snap in process (p50, max): logging all %.0f, %.0f; "
        "warnings only %.0f, %.0f\n",
        summarize(inProcess.roundTrips).p50,
        *std::max_element(inProcess.roundTrips.begin(), inProcess.roundTrips.end()),
        summarize(inProcessQuiet.roundTrips).p50,
        *std::max_element(inProcessQuiet.roundTrips.begin(), inProcessQuiet.roundTrips.end()));
    const double ratio = corvetta.p50 / floor.p50;
    std::printf("corvetta p50 / floor p50: %.2f (target at most 1.5: %s)\n", ratio,
                ratio <= 1.5 ? "met" : "MISSED");
    return 0;
}

}  // namespace
}  // namespace corvetta::testing

int main(int argc, char** argv) {
    return corvetta::testing::benchMain(argc, argv, "corvetta_x11_bench", "PRESSES", 200,
                                        corvetta::testing::run);
}
