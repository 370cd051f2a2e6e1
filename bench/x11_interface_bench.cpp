// What the interface costs, seen from outside, on a private Xvfb with openbox and a tray host:
// - from the palette's shortcut (a real key press through XTest) to the palette's window mapped
//   and managed, the first time after start and each time again (the window is kept built);
// - resident memory once started and settled, with the interface and with --no-ui;
// - processor time while idle over a stretch of seconds, both ways.
//
//   corvetta_x11_interface_bench [RUNS] [IDLE_SECONDS]     (50 re-shows and 60 s by default)
//
// Measure a release build (docs/x11-desktop.md, "Benchmarks").

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <X11/keysym.h>
#include <unistd.h>

#include "bench_main.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"
#include "support/virtual_display.h"
#include "x11_bench_support.h"
#include "x_probe.h"

namespace corvetta::testing {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr const char* kPaletteTitle = "Command Palette";
// ⌃⌥P; Option is Super on X11.
constexpr const char* kPaletteShortcut =
    R"("set_shortcut","params":{"name":"commandPalette","keyCode":35,"modifiers":786432})";

// The resident set in kilobytes, from /proc.
long residentKilobytes(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    throw std::runtime_error("no VmRSS for " + std::to_string(pid));
}

// User and system time used so far, in seconds.
double processorSeconds(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    // The command name may hold spaces; the fields after it are counted from its closing bracket.
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long user = 0, system = 0;
    for (int index = 3; fields >> field; ++index) {
        if (index == 14) {
            user = std::stoul(field);
        } else if (index == 15) {
            system = std::stoul(field);
            break;
        }
    }
    return static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

struct Footprint {
    long residentKilobytes = 0;
    double idleProcessorPercent = 0;
};

class InterfaceBench {
public:
    InterfaceBench()
        : display_(VirtualDisplayOptions{.windowManager = WindowManager::openboxForTests}),
          tray_({"trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                 "--height", "24"},
                environment()) {
        probe_ = std::make_unique<XProbe>(display_.displayName());
    }

    Footprint footprint(const std::vector<std::string>& arguments, int idleSeconds) {
        TemporaryFolder root;
        ProgramUnderTest corvetta(root.path(), environment(), arguments);
        corvetta.ask(R"("get_status")");
        // Start-up work (the first permission checks, the first window list) settles first.
        std::this_thread::sleep_for(std::chrono::seconds(3));
        Footprint result{.residentKilobytes = residentKilobytes(corvetta.pid())};
        const double before = processorSeconds(corvetta.pid());
        std::this_thread::sleep_for(std::chrono::seconds(idleSeconds));
        result.idleProcessorPercent =
            (processorSeconds(corvetta.pid()) - before) * 100.0 / idleSeconds;
        corvetta.drainErrors();
        return result;
    }

    // The first show, then `runs` re-shows, each from the key press to the window managed.
    std::vector<double> paletteShows(int runs) {
        TemporaryFolder root;
        ProgramUnderTest corvetta(root.path(), environment());
        if (corvetta.ask(kPaletteShortcut).find(R"("registered":true)") == std::string::npos) {
            throw std::runtime_error("the palette's shortcut could not be registered");
        }
        std::vector<double> samples;
        for (int run = 0; run <= runs; ++run) {
            const auto start = Clock::now();
            if (!probe_->pressKeys({XK_Control_L, XK_Super_L, XK_p})) {
                throw std::runtime_error("the key press could not be sent");
            }
            const auto window = probe_->waitForWindowTitled(kPaletteTitle);
            if (!window) {
                throw std::runtime_error("the palette did not open:\n" + corvetta.errors());
            }
            samples.push_back(Milliseconds(Clock::now() - start).count());
            probe_->pressKeys({XK_Escape});
            if (!probe_->waitUntilUnmanaged(*window)) {
                throw std::runtime_error("the palette did not close");
            }
            corvetta.drainErrors();
        }
        return samples;
    }

private:
    std::vector<std::string> environment() const { return display_.environment(); }

    VirtualDisplay display_;
    RunningProcess tray_;
    std::unique_ptr<XProbe> probe_;
};

int run(int runs, int idleSeconds) {
    InterfaceBench bench;
    auto shows = bench.paletteShows(runs);
    const double first = shows.front();
    shows.erase(shows.begin());
    std::printf(
        "palette, shortcut to window managed: first show %.1f ms; re-show p50 %.1f ms, "
        "p90 %.1f ms, max %.1f ms (%d runs)\n",
        first, rank(shows, 0.5), rank(shows, 0.9), rank(shows, 1.0), runs);
    for (const auto& [name, arguments] :
         std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"without the interface (--no-ui)", {"--no-ui"}}, {"with the interface", {}}}) {
        const auto footprint = bench.footprint(arguments, idleSeconds);
        std::printf("%s: resident %.1f MB, idle processor %.2f%% over %d s\n", name.c_str(),
                    static_cast<double>(footprint.residentKilobytes) / 1024.0,
                    footprint.idleProcessorPercent, idleSeconds);
    }
    return 0;
}

}  // namespace
}  // namespace corvetta::testing

int main(int argc, char** argv) {
    const int idleSeconds = argc > 2 ? std::atoi(argv[2]) : 60;
    if (idleSeconds < 1) {
        std::fprintf(stderr, "usage: corvetta_x11_interface_bench [RUNS] [IDLE_SECONDS]\n");
        return 2;
    }
    return corvetta::testing::benchMain(
        argc, argv, "corvetta_x11_interface_bench", "RUNS", 50,
        [idleSeconds](int runs) { return corvetta::testing::run(runs, idleSeconds); });
}
