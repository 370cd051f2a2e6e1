// The pieces of the socket server that need no socket: line framing, request validation, the
// response forms and the socket's name. How answers reach their threads is tested over sockets.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "automation/bundle_identifier.h"
#include "automation/line_reader.h"
#include "automation/socket_request.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using Kind = LineReader::Next::Kind;

// Every line that comes out after feeding the chunks, and what the reader said last.
std::pair<std::vector<std::string>, Kind> feed(LineReader& reader,
                                               const std::vector<std::string>& chunks) {
    std::vector<std::string> lines;
    Kind last = Kind::needMoreBytes;
    for (const auto& chunk : chunks) {
        reader.append(chunk);
        for (auto next = reader.next();; next = reader.next()) {
            last = next.kind;
            if (next.kind != Kind::line) {
                break;
            }
            lines.push_back(next.text);
        }
    }
    return {lines, last};
}

TEST(LineReader, CutsChunksIntoLinesInOrder) {
    const struct {
        const char* name;
        std::vector<std::string> chunks;
        std::vector<std::string> lines;
    } cases[] = {
        {"two lines in one chunk", {"a\nb\n"}, {"a", "b"}},
        {"a line split across chunks", {"ab", "c", "d\ne"}, {"abcd"}},
        {"a partial line waits", {"abc"}, {}},
        {"empty lines are lines", {"\n\n"}, {"", ""}},
        {"carriage returns are kept", {"a\r\n"}, {"a\r"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LineReader reader(1024);
        EXPECT_EQ(feed(reader, c.chunks).first, c.lines);
    }
}

TEST(LineReader, ALineAtTheLimitPassesAndOneByteMoreIsRefusedForGood) {
    LineReader atLimit(8);
    EXPECT_THAT(feed(atLimit, {"1234", "5678\n"}).first, ElementsAre("12345678"));

    // Complete or not, a longer line is refused, and nothing after it comes out.
    for (const std::vector<std::string>& chunks :
         {std::vector<std::string>{"ok\n123456789\nnext\n"}, {"ok\n1234", "56789"}}) {
        LineReader reader(8);
        const auto [lines, last] = feed(reader, chunks);
        EXPECT_THAT(lines, ElementsAre("ok"));
        EXPECT_EQ(last, Kind::lineTooLong);
        reader.append("more\n");
        EXPECT_EQ(reader.next().kind, Kind::lineTooLong);
        EXPECT_EQ(reader.bufferedBytes(), 0u);
    }
}

TEST(LineReader, MemoryStaysNearOneLineOverALongStream) {
    LineReader reader(64);
    for (int i = 0; i < 10'000; ++i) {
        reader.append("{\"id\":\"" + std::to_string(i) + "\"}\n{\"id\"");
        ASSERT_EQ(reader.next().kind, Kind::line);
        ASSERT_EQ(reader.next().kind, Kind::needMoreBytes);
        reader.append(":0}\n");
        ASSERT_EQ(reader.next().text, "{\"id\":0}");
    }
    EXPECT_EQ(reader.bufferedBytes(), 0u);
}

TEST(SocketRequest, MalformedLinesAreRefusedUnderTheIdTheyCarry) {
    const std::string notAnObject = "Invalid param params: expected an object";
    const std::pair<std::string, SocketRequestRefusal> cases[] = {
        {"", {}},
        {"not json", {}},
        {"[1]", {}},
        {"\"text\"", {}},
        {R"({"id":"1"})", {}},
        {R"({"method":"m"})", {}},
        {R"({"id":1,"method":"m"})", {}},
        {R"({"id":"1","method":null})", {}},
        {"{\"id\":\"1\",\"method\":\"m\"}x", {}},
        {std::string("{\"id\":\"1\",\"method\":\"m\"}\0x", 25), {}},
        {R"({"id":"1","method":"m","params":[]})", {"1", notAnObject}},
        {R"({"id":"2","method":"m","params":"p"})", {"2", notAnObject}},
    };
    for (const auto& [line, refusal] : cases) {
        const auto request = parseSocketRequest(line);
        ASSERT_FALSE(request) << line;
        EXPECT_EQ(request.error().id, refusal.id) << line;
        EXPECT_EQ(request.error().message, refusal.message) << line;
    }
}

TEST(SocketRequest, ResponsesAreOneCompactLineEach) {
    EXPECT_EQ(resultResponseLine("7", Json{{"b", 1}, {"a", 2}}),
              "{\"id\":\"7\",\"result\":{\"b\":1,\"a\":2}}\n");
    EXPECT_EQ(errorResponseLine("7", "No frontmost window"),
              "{\"id\":\"7\",\"error\":{\"message\":\"No frontmost window\"}}\n");
    EXPECT_EQ(refusalResponseLine({}),
              "{\"id\":\"unknown\",\"error\":{\"message\":\"Invalid JSON-RPC request\"}}\n");
    EXPECT_EQ(outcomeResponseLine("7", unexpected(std::string("x\ny"))),
              "{\"id\":\"7\",\"error\":{\"message\":\"x\\ny\"}}\n");
    // A window title with broken UTF-8 must not cost the whole answer.
    EXPECT_EQ(resultResponseLine("7", Json{{"title", std::string("a\xff")}}),
              "{\"id\":\"7\",\"result\":{\"title\":\"a\xEF\xBF\xBD\"}}\n");
}

TEST(BundleIdentifier, ADebugBuildListensBesideARelease) {
    EXPECT_EQ(automationSocketFileName("com.corvetta.Corvetta"), "mcp.sock");
    EXPECT_EQ(automationSocketFileName("com.corvetta.Corvetta.debug"), "mcp-dev.sock");
    EXPECT_EQ(automationSocketFileName("com.corvetta.debugger"), "mcp.sock");
#if defined(NDEBUG)
    EXPECT_EQ(bundleIdentifier(), "com.corvetta.Corvetta");
#else
    EXPECT_EQ(bundleIdentifier(), "com.corvetta.Corvetta.debug");
#endif
    Paths paths;
    paths.applicationSupportFolder = "/data/Corvetta";
    EXPECT_EQ(defaultAutomationSocketPath(paths), std::filesystem::path("/data/Corvetta") /
                                                      automationSocketFileName(bundleIdentifier()));
}

}  // namespace
}  // namespace corvetta
