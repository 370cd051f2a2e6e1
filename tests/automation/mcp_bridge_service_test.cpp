// The socket server over real sockets, with the test methods of bridge_fixture.h.

#include <cerrno>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "automation/unix_socket.h"
#include "bridge_fixture.h"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using testing_support::BridgeTest;
using Start = MCPBridgeService::StartResult;

// The permission bits of a file.
mode_t modeOf(const std::filesystem::path& path) {
    struct stat info {};
    EXPECT_EQ(::lstat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

TEST_F(BridgeTest, AnswersEveryLineInOrderInEachForm) {
    const auto server = startServer();
    const std::string invalid =
        R"({"id":"unknown","error":{"message":"Invalid JSON-RPC request"}})";
    const std::string split = request("s", "echo", R"({"n":1})") + "\n";
    const struct {
        const char* name;
        std::vector<std::string> writes;
        std::vector<std::string> answers;
    } cases[] = {
        {"a request split across writes, one byte each",
         [&] {
             std::vector<std::string> bytes;
             for (char c : split) {
                 bytes.emplace_back(1, c);
             }
             return bytes;
         }(),
         {R"({"id":"s","result":{"n":1}})"}},
        {"absent and null params are an empty object",
         {request("p", "echo") + "\n", request("q", "echo", "null") + "\n"},
         {R"({"id":"p","result":{}})", R"({"id":"q","result":{}})"}},
        // Which lines are malformed is the request parser's; here, that each is answered, under
        // the request's own id where it has one.
        {"malformed lines",
         {"not json\n", request("c", "echo", "[]") + "\n"},
         {invalid, R"({"id":"c","error":{"message":"Invalid param params: expected an object"}})"}},
        {"a method's error, an exception's text, an unknown method, a dropped reply",
         {request("f", "fail", R"({"message":"Missing required param: name"})") + "\n" +
          request("t", "throw", R"({"message":"disk on fire"})") + "\n" + request("u", "nope") +
          "\n" + request("d", "drop") + "\n"},
         {R"({"id":"f","error":{"message":"Missing required param: name"}})",
          R"({"id":"t","error":{"message":"disk on fire"}})",
          R"({"id":"u","error":{"message":"Unknown method: nope"}})",
          R"({"id":"d","error":{"message":"The method ended without an answer"}})"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto client = connect();
        for (const auto& bytes : c.writes) {
            ASSERT_TRUE(client.send(bytes));
        }
        std::vector<std::string> answers;
        for (std::size_t i = 0; i < c.answers.size(); ++i) {
            answers.push_back(nextAnswer(client));
        }
        EXPECT_THAT(answers, ElementsAreArray(c.answers));
    }
}

TEST_F(BridgeTest, PipelinedRequestsWaitForTheOneBefore) {
    const auto server = startServer();
    auto client = connect();
    client.send(request("1", "hold") + "\n" + request("2", "echo", R"({"n":2})") + "\n" +
                request("3", "echo") + "\n");
    ASSERT_TRUE(dispatcher.waitUntilHeld(1));
    loop.runAndWait([&] { dispatcher.releaseHeld(); });
    EXPECT_EQ(nextAnswer(client), R"({"id":"1","result":{"released":true}})");
    EXPECT_EQ(nextAnswer(client), R"({"id":"2","result":{"n":2}})");
    EXPECT_EQ(nextAnswer(client), R"({"id":"3","result":{}})");
}

TEST_F(BridgeTest, ConcurrentClientsEachGetTheirOwnAnswers) {
    const auto server = startServer();
    std::vector<std::thread> clients;
    for (int c = 0; c < 8; ++c) {
        clients.emplace_back([&, c] {
            auto client = connect();
            for (int i = 0; i < 50; ++i) {
                const auto id = std::to_string(c) + "-" + std::to_string(i);
                ASSERT_EQ(
                    roundTrip(client, request(id, "echo", R"({"c":)" + std::to_string(c) + "}")),
                    R"({"id":")" + id + R"(","result":{"c":)" + std::to_string(c) + "}}");
            }
        });
    }
    for (auto& client : clients) {
        client.join();
    }
}

TEST_F(BridgeTest, ALineOverOneMebibyteIsRefusedAndItsConnectionClosed) {
    const auto server = startServer();
    const std::size_t limit = std::size_t{1} << 20;
    auto atLimit = connect();
    const std::string head = R"({"id":"big","method":"echo","params":{"pad":")";
    const std::string tail = R"("}})";
    const std::string pad(limit - head.size() - tail.size(), 'x');
    EXPECT_EQ(roundTrip(atLimit, head + pad + tail),
              R"({"id":"big","result":{"pad":")" + pad + R"("}})");

    auto overLimit = connect();
    ASSERT_TRUE(overLimit.send(std::string(limit + 1, ' ')));
    EXPECT_EQ(nextAnswer(overLimit),
              R"({"id":"unknown","error":{"message":"Request line longer than 1048576 bytes"}})");
    EXPECT_EQ(nextAnswer(overLimit), "<closed>");
    EXPECT_EQ(roundTrip(atLimit, request("after", "echo")), R"({"id":"after","result":{}})");
}

// Clients that send nothing must not lock others out: with the table full, a new client takes the
// place of the one idle the longest. Only clients in the middle of a request keep theirs.
TEST_F(BridgeTest, ANewClientTakesThePlaceOfTheLongestIdleOne) {
    const auto server = startServer({.maxConnections = 3});
    std::vector<SocketClient> open;
    for (int i = 0; i < 3; ++i) {
        open.push_back(connect());
        ASSERT_EQ(roundTrip(open.back(), request("n", "echo")), R"({"id":"n","result":{}})") << i;
    }
    // The first becomes the most recently active; the second is now idle the longest.
    ASSERT_EQ(roundTrip(open[0], request("again", "echo")), R"({"id":"again","result":{}})");
    auto newcomer = connect();
    EXPECT_EQ(roundTrip(newcomer, request("new", "echo")), R"({"id":"new","result":{}})");
    EXPECT_EQ(nextAnswer(open[1]),
              R"({"id":"unknown","error":{"message":"Connection closed: it was the longest idle )"
              R"(when another client needed room"}})");
    EXPECT_EQ(nextAnswer(open[1]), "<closed>");
    for (const std::size_t kept : {0, 2}) {
        EXPECT_EQ(roundTrip(open[kept], request("k", "echo")), R"({"id":"k","result":{}})");
    }

    // Every place busy with a request: the one beyond is told and closed.
    for (auto* busy : {&open[0], &open[2], &newcomer}) {
        busy->send(request("h", "hold") + "\n");
    }
    ASSERT_TRUE(dispatcher.waitUntilHeld(3));
    auto refused = connect();
    EXPECT_EQ(nextAnswer(refused),
              R"j({"id":"unknown","error":{"message":"Too many connections (at most 3)"}})j");
    EXPECT_EQ(nextAnswer(refused), "<closed>");
    loop.runAndWait([&] { dispatcher.releaseHeld(); });
    EXPECT_EQ(nextAnswer(newcomer), R"({"id":"h","result":{"released":true}})");
}

// A client chooses its ids and method names, up to the line limit; the log book keeps hundreds of
// entries and hands them out through "get_logs".
TEST_F(BridgeTest, WhatAClientSendsIsLoggedOnlyAsAShortEscapedExcerpt) {
    const auto server = startServer();
    auto client = connect();
    const std::string longId(200'000, 'i');
    const std::string method = "evil\\u001b[31m\\n" + std::string(200'000, 'm');
    EXPECT_EQ(roundTrip(client, request(longId, method)).substr(0, 7), R"({"id":")");
    EXPECT_EQ(roundTrip(client, request(longId, "echo", "[]")).substr(0, 7), R"({"id":")");
    std::size_t longest = 0;
    bool escaped = false;
    for (const auto& message : testLogging.messages(MCPBridgeService::kServiceName)) {
        longest = std::max(longest, message.size());
        escaped = escaped || message.starts_with("MCPBridgeService: evil\\x1b[31m\\n");
    }
    EXPECT_LT(longest, 400u);
    EXPECT_TRUE(escaped) << ::testing::PrintToString(testLogging.messages());
}

TEST_F(BridgeTest, AClientThatNeverReadsHoldsUpNobodyElse) {
    const auto server = startServer();
    auto stalled = connect();
    ASSERT_EQ(::fcntl(stalled.fd(), F_SETFL, O_NONBLOCK), 0);
    // Requests go in until the server stops taking them: its thread for this client is stuck
    // writing answers nobody reads.
    const std::string line =
        request("big", "echo", R"({"pad":")" + std::string(65536, 'x') + R"("})") + "\n";
    bool serverStoppedReading = false;
    for (int i = 0; i < 10'000 && !serverStoppedReading; ++i) {
        std::string_view rest = line;
        while (!rest.empty()) {
            const auto written = ::send(stalled.fd(), rest.data(), rest.size(), MSG_NOSIGNAL);
            if (written < 0) {
                ASSERT_TRUE(errno == EAGAIN || errno == EWOULDBLOCK) << errno;
                serverStoppedReading = true;
                break;
            }
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    ASSERT_TRUE(serverStoppedReading);

    auto other = connect();
    EXPECT_EQ(roundTrip(other, request("free", "echo")), R"({"id":"free","result":{}})");
    // Stopping must not wait for the stalled client either.
    server->stop();
    EXPECT_FALSE(std::filesystem::exists(socketPath));
}

TEST_F(BridgeTest, FolderAndSocketAreForTheOwnerOnly) {
    for (const bool folderExisted : {false, true}) {
        SCOPED_TRACE(folderExisted ? "folder existed, open to all" : "new folder");
        if (folderExisted) {
            std::filesystem::create_directories(socketPath.parent_path());
            ::chmod(socketPath.parent_path().c_str(), 0755);
        }
        const auto server = startServer();
        EXPECT_EQ(modeOf(socketPath.parent_path()), 0700u);
        EXPECT_EQ(modeOf(socketPath), 0600u);
        server->stop();
        std::filesystem::remove_all(socketPath.parent_path());
    }
}

TEST_F(BridgeTest, ConnectionsFromAnotherUserAreRefused) {
    const auto server = startServer({.ownerUid = ::getuid() + 1});
    auto client = connect();
    client.send(request("x", "echo") + "\n");
    EXPECT_EQ(nextAnswer(client), "<closed>");
    EXPECT_TRUE(
        logged("MCPBridgeService: refused a connection from uid " + std::to_string(::getuid())));
}

TEST_F(BridgeTest, ASecondInstanceLeavesALiveSocketAloneButReplacesAStaleOne) {
    auto first = startServer();
    {
        const auto second = makeServer();
        EXPECT_EQ(second->start(), Start::alreadyRunning);
        EXPECT_EQ(second->serverFD(), -1);
    }
    EXPECT_TRUE(logged("MCPBridgeService: another instance is already listening on " +
                       socketPath.string()));
    auto client = connect();
    EXPECT_EQ(roundTrip(client, request("1", "echo")), R"({"id":"1","result":{}})");
    // A copy starting at the very moment the first has not bound its socket yet still sees it
    // by the lock beside the socket file.
    std::filesystem::rename(socketPath, socketPath.string() + ".aside");
    EXPECT_EQ(makeServer()->start(), Start::alreadyRunning);
    std::filesystem::rename(socketPath.string() + ".aside", socketPath);
    first.reset();

    // What a crashed server leaves: the socket file with nobody listening.
    {
        const UniqueFd orphan(::socket(AF_UNIX, SOCK_STREAM, 0));
        const auto address = unixSocketAddress(socketPath);
        ASSERT_EQ(
            ::bind(orphan.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address), 0);
    }
    const auto replacement = startServer();
    EXPECT_TRUE(logged("MCPBridgeService: removed a stale socket file"));
    auto again = connect();
    EXPECT_EQ(roundTrip(again, request("2", "echo")), R"({"id":"2","result":{}})");
}

TEST_F(BridgeTest, StartLogsItsStepsAndFailsCleanly) {
    {
        const auto server = startServer();
        EXPECT_NE(server->serverFD(), -1);
    }
    EXPECT_THAT(testLogging.messages(MCPBridgeService::kServiceName),
                ElementsAre("MCPBridgeService starting on " + socketPath.string(),
                            "MCPBridgeService listening", "MCPBridgeService stopped"));

    const struct {
        const char* name;
        std::filesystem::path path;
        std::function<void()> prepare;
        std::string message;
    } failures[] = {
        {"a file that is not a socket stays where it is", socketPath,
         [&] { testing::writeTestFile(socketPath, "mine"); },
         "MCPBridgeService: bind() failed: " + std::to_string(EADDRINUSE)},
        {"a path too long for a socket address", root / std::string(120, 'p') / "mcp.sock", [] {},
         "MCPBridgeService: socket path is longer than 107 bytes: " +
             (root / std::string(120, 'p') / "mcp.sock").string()},
        {"a folder that cannot be made", root / "file" / "mcp.sock",
         [&] { testing::writeTestFile(root / "file", ""); },
         "MCPBridgeService: could not create " + (root / "file").string() + ": Not a directory"},
    };
    for (const auto& f : failures) {
        SCOPED_TRACE(f.name);
        f.prepare();
        MCPBridgeService server(f.path, dispatcher, loop, testLogging.logging);
        EXPECT_EQ(server.start(), Start::failed);
        EXPECT_EQ(server.serverFD(), -1);
        EXPECT_THAT(testLogging.messages(), Contains(f.message));
    }
    EXPECT_EQ(testing::readTestFile(socketPath), "mine");
}

TEST_F(BridgeTest, StopReleasesAWaitingClientRemovesTheSocketAndMayBeRepeated) {
    const auto server = startServer();
    auto client = connect();
    client.send(request("h", "hold") + "\n");
    ASSERT_TRUE(dispatcher.waitUntilHeld(1));
    server->stop();
    EXPECT_EQ(server->serverFD(), -1);
    EXPECT_FALSE(std::filesystem::exists(socketPath));
    EXPECT_EQ(nextAnswer(client), "<closed>");
    // The method answering after the server stopped is harmless.
    loop.runAndWait([&] { dispatcher.releaseHeld(); });
    server->stop();

    EXPECT_EQ(server->start(), Start::listening);
    auto later = connect();
    EXPECT_EQ(roundTrip(later, request("r", "echo")), R"({"id":"r","result":{}})");
}

}  // namespace
}  // namespace corvetta
