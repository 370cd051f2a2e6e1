// corvetta-ctl: its command line in-process, and the built binary against a server.

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "automation/bundle_identifier.h"
#include "bridge_fixture.h"
#include "ctl/ctl_arguments.h"
#include "ctl/ctl_session.h"
#include "support/child_process.h"
#include "support/running_process.h"

namespace corvetta {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(CtlArguments, BuildOneRequestLine) {
    const struct {
        std::vector<std::string> arguments;
        std::string line;
    } cases[] = {
        {{"list_displays"}, R"({"id":"corvetta-ctl","method":"list_displays","params":{}})"},
        {{"get_logs", "limit=5", "level=warning", "search=\"42\"", "flag=true", "ids=[\"a\"]",
          "empty=", "eq=a=b"},
         R"({"id":"corvetta-ctl","method":"get_logs","params":{"limit":5,"level":"warning",)"
         R"("search":"42","flag":true,"ids":["a"],"empty":"","eq":"a=b"}})"},
        {{"--raw", "{\n  \"id\": \"r\",\n  \"method\": \"m\"\n}"}, R"({"id":"r","method":"m"})"},
        {{"--raw=not json"}, "not json"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const auto invocation = parseCtlArguments(c.arguments);
        ASSERT_TRUE(invocation) << invocation.error();
        EXPECT_EQ(invocation->requestLine, c.line);
    }
    const auto options =
        parseCtlArguments({"--socket", "/s.sock", "--timeout=2.5", "sync"}).value();
    EXPECT_EQ(options.socketPath, std::filesystem::path("/s.sock"));
    EXPECT_EQ(options.timeout, std::chrono::milliseconds(2500));
    EXPECT_TRUE(parseCtlArguments({"--socket", "/s", "--help", "--bogus"})->showHelp);
}

TEST(CtlArguments, SayWhatIsWrong) {
    const struct {
        std::vector<std::string> arguments;
        std::string error;
    } cases[] = {
        {{}, "no method given"},
        {{"--socket"}, "--socket needs a value"},
        {{"--bogus", "sync"}, "unknown option '--bogus'"},
        {{"--timeout", "soon", "sync"}, "--timeout takes a number of seconds, got 'soon'"},
        {{"--timeout", "-1", "sync"}, "--timeout takes a number of seconds, got '-1'"},
        {{"snap_window", "leftHalf"}, "expected key=value, got 'leftHalf'"},
        {{"snap_window", "=leftHalf"}, "expected key=value, got '=leftHalf'"},
        {{"m", "a=1", "a=2"}, "parameter 'a' is given twice"},
        {{"--raw", "{}", "sync"}, "--raw takes no method or parameters besides the request"},
        {{"--raw", "two\nlines"}, "a --raw request that is not JSON must be one line"},
    };
    for (const auto& c : cases) {
        const auto invocation = parseCtlArguments(c.arguments);
        ASSERT_FALSE(invocation) << c.error;
        EXPECT_EQ(invocation.error(), c.error);
    }
}

class CtlTest : public testing_support::BridgeTest {
protected:
    struct Run {
        int code = -1;
        std::string out, err;
    };

    // Runs the built binary with HOME and the XDG folders inside the test's folder.
    Run runCtl(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), CORVETTA_CTL_BINARY);
        testing::RunningProcess ctl(std::move(arguments),
                                    testing::isolatedEnvironment(root.path()));
        const int code = ctl.waitForExit().value_or(-1);
        return {code, ctl.output(), ctl.errors()};
    }
};

TEST_F(CtlTest, ExitCodesFollowTheAnswer) {
    // Where the program listens by default, given the same environment.
    socketPath = root / "data" / "Corvetta" / automationSocketFileName(bundleIdentifier());
    const auto server = startServer();
    const auto missing = (root / "nobody.sock").string();
    const struct {
        std::vector<std::string> arguments;
        int code;
        std::string out;
        ::testing::Matcher<const std::string&> err;
    } cases[] = {
        {{"echo", "name=Work", "count=5"}, 0, "{\"name\":\"Work\",\"count\":5}\n", IsEmpty()},
        {{"fail", "message=No frontmost window"}, 1, "", "corvetta-ctl: No frontmost window\n"},
        {{"--raw", R"({"id":"r","method":"echo","params":{"a":1}})"},
         0,
         "{\"id\":\"r\",\"result\":{\"a\":1}}\n",
         IsEmpty()},
        {{"--raw", "not json"},
         1,
         "{\"id\":\"unknown\",\"error\":{\"message\":\"Invalid JSON-RPC request\"}}\n",
         IsEmpty()},
        {{"--socket", missing, "list_displays"},
         2,
         "",
         AllOf(StartsWith("corvetta-ctl: no answer from " + missing + ": connect() failed: "))},
        {{"--timeout", "0.2", "hold"}, 2, "", HasSubstr(": timed out")},
        {{"echo", "oops"}, 64, "", AllOf(HasSubstr("expected key=value"), HasSubstr("--help"))},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.arguments));
        const auto run = runCtl(c.arguments);
        EXPECT_EQ(run.code, c.code);
        EXPECT_EQ(run.out, c.out);
        EXPECT_THAT(run.err, c.err);
    }
}

TEST_F(CtlTest, HelpListsTheMethodsAndTheDefaultSocket) {
    const auto run = runCtl({"--help"});
    EXPECT_EQ(run.code, 0);
    // The method list is the help text's own; one with parameters and one without show it.
    EXPECT_THAT(run.out, HasSubstr("snap_window position=NAME"));
    EXPECT_THAT(run.out, HasSubstr("list_windows"));
    EXPECT_THAT(
        run.out,
        HasSubstr(
            (root / "data" / "Corvetta" / automationSocketFileName(bundleIdentifier())).string()));
}

TEST_F(CtlTest, ATerminalGetsIndentedOutput) {
    const auto server = startServer();
    std::ostringstream out, err;
    const auto invocation = parseCtlArguments({"echo", "a=1"}).value();
    EXPECT_EQ(runCtlRequest(invocation, socketPath, true, out, err), kCtlResult);
    EXPECT_EQ(out.str(), "{\n  \"a\": 1\n}\n");
}

}  // namespace
}  // namespace corvetta
