#include "e2e_desktop.h"

#include <csignal>

#include "support/child_process.h"

namespace corvetta::testing {

void E2eDesktop::startDesktop(std::vector<VirtualMonitor> monitors, WindowManager windowManager) {
    // A test may build several desktops in turn; the old one goes down in order.
    socket_.reset();
    corvetta_.reset();
    clients_.clear();
    probe_.reset();
    display_.reset();
    display_ = std::make_unique<VirtualDisplay>(
        VirtualDisplayOptions{.monitors = std::move(monitors), .windowManager = windowManager});
    probe_ = std::make_unique<XProbe>(display_->displayName());
}

std::vector<std::string> E2eDesktop::environment() const {
    return display_->environment(isolatedEnvironment(root_.path()));
}

uint32_t E2eDesktop::startClient(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), CORVETTA_TEST_CLIENT_BINARY);
    auto client = std::make_unique<RunningProcess>(std::move(arguments), environment());
    const auto line = client->waitForLine("mapped ");
    if (!line) {
        ADD_FAILURE() << "the test client did not map its window:\n"
                      << client->output() << client->errors() << "\nthe servers said:\n"
                      << display_->serverOutput();
        return 0;
    }
    const auto window = static_cast<uint32_t>(std::stoul(line->substr(7)));
    clients_[window] = std::move(client);
    return window;
}

uint32_t E2eDesktop::startXterm(const std::string& title) {
    auto client = std::make_unique<RunningProcess>(
        std::vector<std::string>{"xterm", "-geometry", "80x24+200+150", "-T", title},
        environment());
    const auto window = probe_->waitForWindowTitled(title);
    if (!window) {
        ADD_FAILURE() << "xterm did not map its window:\n"
                      << client->errors() << "\nthe servers said:\n"
                      << display_->serverOutput();
        return 0;
    }
    clients_[*window] = std::move(client);
    return *window;
}

void E2eDesktop::killClient(uint32_t window) {
    const auto client = clients_.find(window);
    ASSERT_NE(client, clients_.end()) << "no client owns window " << window;
    client->second->signal(SIGKILL);
    client->second->waitForExit();
    clients_.erase(client);
    EXPECT_TRUE(probe_->waitUntilUnmanaged(window));
}

void E2eDesktop::startCorvetta(const std::string& preferences) {
    writeTestFile(root_ / "config" / "corvetta" / "preferences.json", preferences);
    const auto socket = root_ / "corvetta.sock";
    corvetta_ = std::make_unique<RunningProcess>(
        std::vector<std::string>{CORVETTA_BINARY, "--desktop=x11", "--socket=" + socket.string()},
        environment());
    ASSERT_TRUE(corvetta_->waitForError(" ready (pid ")) << corvetta_->errors();
    auto connected = SocketClient::connect(socket);
    ASSERT_TRUE(connected) << "the automation socket does not answer:\n" << corvetta_->errors();
    socket_.emplace(std::move(*connected));
}

std::string E2eDesktop::request(const std::string& method, const std::string& params) {
    if (!socket_) {
        ADD_FAILURE() << "corvetta is not running";
        return "";
    }
    const std::string id = std::to_string(++requests_);
    socket_->send(R"({"id":")" + id + R"(","method":")" + method + '"' +
                  (params.empty() ? "" : R"(,"params":)" + params) + "}\n");
    auto answer = socket_->readLine(std::chrono::seconds(30));
    if (!answer) {
        ADD_FAILURE() << "no answer to " << method << "; corvetta said:\n" << corvetta_->errors();
        return "";
    }
    return *answer;
}

void E2eDesktop::sync() {
    const std::string answer = request("sync");
    EXPECT_EQ(answer, R"({"id":")" + std::to_string(requests_) + R"(","result":{}})");
}

bool E2eDesktop::corvettaSaid(const std::string& text, std::chrono::seconds limit) {
    return corvetta_ && corvetta_->waitForError(text, limit);
}

std::size_t E2eDesktop::corvettaOutputMark() {
    if (!corvetta_) {
        return 0;
    }
    corvetta_->waitForError("\n\x01", std::chrono::seconds(0));
    return corvetta_->errors().size();
}

std::optional<std::size_t> E2eDesktop::waitForCorvettaToSay(std::size_t mark,
                                                            const std::vector<std::string>& texts) {
    if (!corvetta_) {
        return std::nullopt;
    }
    return corvetta_->waitForErrorAfter(mark, texts, std::chrono::seconds(10));
}

bool E2eDesktop::xrandr(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "xrandr");
    return RunningProcess(std::move(arguments), environment()).waitForExit() == 0;
}

XFrame E2eDesktop::frameOf(uint32_t window) {
    const auto frame = probe_->outerFrame(window);
    if (!frame) {
        ADD_FAILURE() << "window " << window << " is gone";
        return {};
    }
    return *frame;
}

}  // namespace corvetta::testing
