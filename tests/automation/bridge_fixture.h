// bridge_fixture.h: A socket server on a live loop with scripted methods, for its tests.
#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "automation/mcp_bridge_service.h"
#include "automation/mcp_error.h"
#include "automation/method_dispatcher.h"
#include "automation/socket_client.h"
#include "foundation/event_loop.h"
#include "support/temporary_folder.h"
#include "support/test_logging.h"

namespace corvetta::testing_support {

// Methods for exercising the server: "echo" answers its params, "fail" answers the error
// params.message, "throw" throws it, "drop" lets its reply go unanswered, "hold" keeps its reply
// until the test releases it; any other name is unknown.
class TestDispatcher final : public MethodDispatcher {
public:
    void dispatch(const std::string& method, const Json& params, MethodReply reply) override {
        const auto message = params.value("message", std::string("failed"));
        if (method == "echo") {
            reply(params);
        } else if (method == "fail") {
            reply(unexpected(message));
        } else if (method == "throw") {
            throw std::runtime_error(message);
        } else if (method == "hold") {
            std::lock_guard lock(mutex_);
            held_.push_back(std::move(reply));
            heldChanged_.notify_all();
        } else if (method != "drop") {
            reply(unexpected(MCPError::unknownMethod(method).description()));
        }
    }

    // Blocks until this many requests are held (or a generous safety timeout passes).
    bool waitUntilHeld(std::size_t count) {
        std::unique_lock lock(mutex_);
        return heldChanged_.wait_for(lock, std::chrono::seconds(30),
                                     [&] { return held_.size() >= count; });
    }
    // Answers the held requests with {"released": true}; call on the main thread.
    void releaseHeld() {
        std::vector<MethodReply> replies;
        {
            std::lock_guard lock(mutex_);
            replies.swap(held_);
        }
        for (const auto& reply : replies) {
            reply(Json{{"released", true}});
        }
    }

private:
    std::mutex mutex_;
    std::condition_variable heldChanged_;
    std::vector<MethodReply> held_;
};

// A server's surroundings: the program's event loop running on its own thread as the main
// thread, a log book, a temporary application-support folder and the test methods.
class BridgeTest : public ::testing::Test {
protected:
    static constexpr std::chrono::seconds kAnswerTimeout{20};

    BridgeTest() {
        std::promise<void> running;
        loop.post([&] { running.set_value(); });
        loopThread = std::thread([this] { loop.run(); });
        running.get_future().wait();
    }
    ~BridgeTest() override {
        loop.stop();
        loopThread.join();
    }

    std::unique_ptr<MCPBridgeService> makeServer(MCPBridgeOptions options = {}) {
        return std::make_unique<MCPBridgeService>(socketPath, dispatcher, loop, testLogging.logging,
                                                  options);
    }
    std::unique_ptr<MCPBridgeService> startServer(MCPBridgeOptions options = {}) {
        auto server = makeServer(options);
        EXPECT_EQ(server->start(), MCPBridgeService::StartResult::listening)
            << ::testing::PrintToString(testLogging.messages());
        return server;
    }
    SocketClient connect() {
        auto client = SocketClient::connect(socketPath);
        if (!client) {
            throw std::runtime_error(client.error().description());
        }
        return std::move(*client);
    }
    // The next answer, or why none came.
    static std::string nextAnswer(SocketClient& client) {
        auto line = client.readLine(kAnswerTimeout);
        if (!line) {
            return line.error() == SocketClient::ReadFailure::closed ? "<closed>" : "<no answer>";
        }
        return *line;
    }
    static std::string roundTrip(SocketClient& client, const std::string& request) {
        client.send(request + "\n");
        return nextAnswer(client);
    }
    static std::string request(const std::string& id, const std::string& method,
                               const std::string& params = "") {
        return R"({"id":")" + id + R"(","method":")" + method + '"' +
               (params.empty() ? "" : R"(,"params":)" + params) + "}";
    }
    bool logged(const std::string& message) const { return testLogging.contains(message); }

    testing::TemporaryFolder root;
    std::filesystem::path socketPath = root / "data" / "Corvetta" / "mcp-dev.sock";
    NotificationCenter notifications;
    SystemClock clock;
    testing::TestLogging testLogging{notifications, clock};
    TestDispatcher dispatcher;
    EventLoop loop{clock};
    std::thread loopThread;
};

}  // namespace corvetta::testing_support
