// x11_bench_support.h: What the X11 benchmarks of the real program share: it, and frame checks.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "automation/socket_client.h"
#include "bench_ranks.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"
#include "x_probe.h"

namespace corvetta::testing {

// Whether every window's outer frame is the one at the same place in `frames`.
inline bool framesAre(XProbe& probe, const std::vector<uint32_t>& windows,
                      const std::vector<XFrame>& frames) {
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (probe.outerFrame(windows[i]) != frames[i]) {
            return false;
        }
    }
    return true;
}

// What a user's script does to move a window: one `wmctrl -e` process, waited for. The size wmctrl
// takes is the client's, so the window manager's frame (`extraWidth`, `extraHeight`) comes off.
inline void moveWithWmctrl(uint32_t window, const XFrame& to, int extraWidth, int extraHeight,
                           const std::vector<std::string>& environment) {
    RunningProcess wmctrl(
        {"wmctrl", "-i", "-r", std::to_string(window), "-e",
         "0," + std::to_string(to.x) + "," + std::to_string(to.y) + "," +
             std::to_string(to.width - extraWidth) + "," + std::to_string(to.height - extraHeight)},
        environment);
    wmctrl.waitForExit();
}

// The real program on the benchmark's display, with empty preferences in `root`, answering on
// its socket; `extraArguments` follow the program's own ("--no-ui").
class ProgramUnderTest {
public:
    ProgramUnderTest(const std::filesystem::path& root, std::vector<std::string> environment,
                     const std::vector<std::string>& extraArguments = {}) {
        writeTestFile(root / "config" / "corvetta" / "preferences.json", "{}");
        const auto socket = root / "corvetta.sock";
        std::vector<std::string> argv{CORVETTA_BINARY, "--desktop=x11",
                                      "--socket=" + socket.string()};
        argv.insert(argv.end(), extraArguments.begin(), extraArguments.end());
        process_ = std::make_unique<RunningProcess>(std::move(argv), std::move(environment));
        if (!process_->waitForError(" ready (pid ")) {
            throw std::runtime_error("corvetta did not start:\n" + process_->errors());
        }
        auto connected = SocketClient::connect(socket);
        if (!connected) {
            throw std::runtime_error("the automation socket does not answer");
        }
        socket_.emplace(std::move(*connected));
    }

    // `call` is the request after its id: `"method","params":{...}`.
    std::string ask(const std::string& call) {
        socket_->send(R"({"id":"b","method":)" + call + "}\n");
        const auto line = socket_->readLine(std::chrono::seconds(30));
        if (!line) {
            throw std::runtime_error("no answer to " + call + ":\n" + process_->errors());
        }
        return *line;
    }

    // Reads what the program logged, untimed, so a full pipe never stalls it.
    void drainErrors() { process_->waitForError("\n\x01", std::chrono::seconds(0)); }
    const std::string& errors() const { return process_->errors(); }
    pid_t pid() const { return process_->pid(); }

private:
    std::unique_ptr<RunningProcess> process_;
    std::optional<SocketClient> socket_;
};

}  // namespace corvetta::testing
