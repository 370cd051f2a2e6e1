// Runs the real program with every file it may touch inside a temporary folder.

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/command_line.h"
#include "automation/socket_client.h"
#include "foundation/json.h"
#include "support/child_process.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::RunningProcess;

// Starts the program (or another of the project's binaries) with HOME and the XDG folders inside
// `root`.
RunningProcess start(const testing::TemporaryFolder& root, std::vector<std::string> arguments,
                     const std::string& program = CORVETTA_BINARY) {
    arguments.insert(arguments.begin(), program);
    return RunningProcess(std::move(arguments), testing::isolatedEnvironment(root.path()));
}

struct Finished {
    std::optional<int> code;
    std::string out, err;
};

Finished run(const testing::TemporaryFolder& root, std::vector<std::string> arguments,
             const std::string& program = CORVETTA_BINARY) {
    RunningProcess child = start(root, std::move(arguments), program);
    const auto code = child.waitForExit();
    return {code, child.output(), child.errors()};
}

TEST(Process, OptionsPrintTheirTextAndExit) {
    const struct {
        const char* option;
        int code;
        std::string out;
        ::testing::Matcher<const std::string&> err;
    } cases[] = {
        {"--help", 0, helpText(), IsEmpty()},
        {"--version", 0, versionText() + "\n", IsEmpty()},
        {"--bogus", 2, "", AllOf(HasSubstr("unrecognized option '--bogus'"), HasSubstr("--help"))},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.option);
        testing::TemporaryFolder root;
        const auto finished = run(root, {c.option});
        EXPECT_EQ(finished.code, c.code);
        EXPECT_EQ(finished.out, c.out);
        EXPECT_THAT(finished.err, c.err);
    }
}

// Sends requests that each leave a log line, far more than a pipe of standard error holds.
void makeTheProgramLog(const std::filesystem::path& socket) {
    auto client = SocketClient::connect(socket);
    ASSERT_TRUE(client);
    for (int i = 0; i < 200; ++i) {
        client->send(R"({"id":"x","method":"get_status"})"
                     "\n");
        ASSERT_TRUE(client->readLine(RunningProcess::kDeadline)) << i;
    }
}

// However standard error fares (read, never read again, closed), every way of asking the program
// to end ends it cleanly, its socket removed; a closed standard error alone does not end it.
TEST(Process, StopsCleanlyOnEverySignalToEndWhateverStandardErrorDoes) {
    enum class Errors { read, blocked, closed };
    const std::pair<int, const char*> signals[] = {
        {SIGTERM, "SIGTERM"}, {SIGINT, "SIGINT"}, {SIGHUP, "SIGHUP"}};
    for (const auto errors : {Errors::read, Errors::blocked, Errors::closed}) {
        for (const auto& [number, name] : signals) {
            if (errors == Errors::closed && number != SIGTERM) {
                continue;
            }
            SCOPED_TRACE(name + std::string(errors == Errors::read      ? ", errors read"
                                            : errors == Errors::blocked ? ", errors blocked"
                                                                        : ", errors closed"));
            testing::TemporaryFolder root;
            const auto socket = root / "corvetta.sock";
            RunningProcess child = start(root, {"--socket", socket.string()});
            ASSERT_TRUE(child.waitForError(versionText() + " ready")) << child.errors();
            if (errors != Errors::read) {
                child.stopReadingErrors(errors == Errors::closed);
                makeTheProgramLog(socket);
            }
            child.signal(number);
            EXPECT_EQ(child.waitForExit(), 0) << child.errors();
            EXPECT_FALSE(std::filesystem::exists(socket));
            if (errors == Errors::read) {
                EXPECT_THAT(child.errors(), HasSubstr(std::string("Received ") + name));
                EXPECT_THAT(child.errors(), HasSubstr("Stopped cleanly"));
            }
        }
    }
}

TEST(Process, DamagedPreferencesAreQuarantinedAndTheProgramStillStarts) {
    testing::TemporaryFolder root;
    const auto folder = root / "config" / "corvetta";
    testing::writeTestFile(folder / "preferences.json", "{not json");
    RunningProcess child = start(root, {});
    ASSERT_TRUE(child.waitForError(versionText() + " ready")) << child.errors();

    // Where the damaged file goes is the preferences' own test; the warning naming it is how
    // anyone learns of it, so it must reach standard error.
    const std::string& err = child.errors();
    const auto at = err.find((folder / "preferences-quarantine-").string());
    ASSERT_NE(at, std::string::npos) << err;
    const auto lineStart = err.rfind('\n', at) + 1;  // npos + 1 is 0: the first line
    EXPECT_THAT(err.substr(lineStart, at - lineStart), HasSubstr(" warning ")) << err;
    EXPECT_NE(testing::readTestFile(folder / "preferences.json"), "{not json");

    child.signal(SIGTERM);
    EXPECT_EQ(child.waitForExit(), 0) << child.errors();
}

TEST(Process, RunsOnASimulatedDesktopAndRefusesABadDesktopFile) {
    testing::TemporaryFolder root;
    testing::writeTestFile(root / "desk.json",
                           R"({"displays": [{"id": 1, "frame": [0, 0, 1440, 900]}],
        "applications": [{"pid": 101, "name": "Editor", "windows": [{"number": 11,
                          "frame": [100, 100, 800, 600]}]}], "frontmost": 101})");
    {
        RunningProcess child = start(root, {"--desktop=sim:" + (root / "desk.json").string()});
        ASSERT_TRUE(child.waitForError(versionText() + " ready")) << child.errors();
        // Corvetta itself counts among the running applications, as the workspace lists it.
        EXPECT_THAT(child.errors(), HasSubstr("1 display, 2 running applications"));
        child.signal(SIGTERM);
        EXPECT_EQ(child.waitForExit(), 0) << child.errors();
    }

    // Which files are refused, and why, is the desktop file's test; here, that a refusal stops
    // the start.
    testing::writeTestFile(root / "bad.json", R"({"displays": [{"id": 1, "frame": [0, 0]}]})");
    const auto refusal = run(root, {"--desktop=sim:" + (root / "bad.json").string()});
    EXPECT_EQ(refusal.code, 2);
    EXPECT_THAT(refusal.err, HasSubstr("bad.json: displays[0].frame: "));
    EXPECT_THAT(refusal.err, ::testing::Not(HasSubstr(" ready")));
}

TEST(Process, AnswersAutomationRequestsAndLeavesALiveSocketToItsOwner) {
    testing::TemporaryFolder root;
    testing::writeTestFile(root / "desk.json",
                           R"({"displays": [{"id": 1, "frame": [0, 0, 1440, 900],
        "visibleFrame": [0, 0, 1440, 875]}], "applications": [{"pid": 101, "name": "Editor",
        "bundleIdentifier": "com.example.editor", "windows": [{"number": 11, "title": "Notes",
        "frame": [100, 100, 800, 600]}]}], "frontmost": 101})");
    const auto socket = (root / "corvetta.sock").string();
    const std::vector<std::string> serve = {"--desktop=sim:" + (root / "desk.json").string(),
                                            "--socket", socket};
    RunningProcess server = start(root, serve);
    ASSERT_TRUE(server.waitForError(versionText() + " ready")) << server.errors();
    EXPECT_THAT(server.errors(), HasSubstr("MCPBridgeService listening"));

    const auto ctl = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--socket", socket});
        return run(root, std::move(arguments), CORVETTA_CTL_BINARY);
    };
    const auto moved = ctl({"perform_action", "action=leftHalf"});
    EXPECT_EQ(moved.code, 0) << moved.err;
    EXPECT_EQ(moved.out, "{\"action\":\"leftHalf\"}\n");
    const auto listed = ctl({"list_windows"});
    ASSERT_EQ(listed.code, 0) << listed.err;
    EXPECT_THAT(listed.out,
                HasSubstr(R"("frame":{"x":0.0,"y":25.0,"width":720.0,"height":875.0})"));

    // A second copy must neither take the socket over nor touch the first one's keys.
    const auto second = run(root, serve);
    EXPECT_EQ(second.code, 1);
    EXPECT_THAT(second.err, HasSubstr("corvetta: Corvetta is already running"));
    EXPECT_EQ(ctl({"get_status"}).code, 0);

    server.signal(SIGTERM);
    EXPECT_EQ(server.waitForExit(), 0) << server.errors();
    EXPECT_FALSE(std::filesystem::exists(socket));
    EXPECT_EQ(ctl({"get_status"}).code, 2);
}

// Black-box: the whole program on a simulated desktop, changed from outside while it runs, sees
// each change as it would see the system's.
TEST(Process, SimulateChangesTheDesktopTheRunningProgramSees) {
    testing::TemporaryFolder root;
    testing::writeTestFile(root / "desk.json",
                           R"({"displays": [{"id": 1, "frame": [0, 0, 1440, 900]}],
        "applications": [{"pid": 101, "name": "Editor", "bundleIdentifier": "com.example.editor",
                          "windows": [{"number": 11, "frame": [100, 100, 800, 600]}]}],
        "installed": [{"pid": 201, "name": "Browser", "bundleIdentifier": "com.example.browser",
                       "windows": [{"number": 21, "frame": [0, 0, 300, 300]}]}],
        "frontmost": 101})");
    const auto socket = (root / "corvetta.sock").string();
    RunningProcess server =
        start(root, {"--desktop=sim:" + (root / "desk.json").string(), "--socket", socket});
    ASSERT_TRUE(server.waitForError(versionText() + " ready")) << server.errors();
    const auto ctl = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--socket", socket});
        const auto finished = run(root, std::move(arguments), CORVETTA_CTL_BINARY);
        EXPECT_EQ(finished.code, 0) << finished.err;
        return finished.out;
    };

    EXPECT_EQ(ctl({"simulate", R"(displays=[{"id": 2, "frame": [0, 0, 1000, 800]}])", "sleep=true",
                   R"(userFrame={"window": 11, "frame": [10, 20, 300, 200]})",
                   "launch=com.example.browser"}),
              "{}\n");
    EXPECT_THAT(ctl({"list_windows"}),
                HasSubstr(R"("frame":{"x":10.0,"y":20.0,"width":300.0,"height":200.0})"));
    // The launched browser came to the front, so a snap now moves its window, on the new display.
    EXPECT_EQ(ctl({"perform_action", "action=leftHalf"}), "{\"action\":\"leftHalf\"}\n");
    EXPECT_THAT(ctl({"get_frontmost_window"}),
                HasSubstr(R"("frame":{"x":0.0,"y":0.0,"width":500.0,"height":800.0})"));

    server.signal(SIGTERM);
    EXPECT_EQ(server.waitForExit(), 0) << server.errors();
}

// Black-box: what the user keeps outlives the program, and a set-up exported in one home imports
// into another with its identifiers.
TEST(Process, WhatTheUserKeepsSurvivesARestartAndMovesToAnotherHome) {
    testing::TemporaryFolder first;
    testing::TemporaryFolder second;
    const auto serve = [](const testing::TemporaryFolder& root) {
        testing::writeTestFile(root / "desk.json",
                               R"({"displays": [{"id": 1, "frame": [0, 0, 1440, 900]}]})");
        return start(root, {"--desktop=sim:" + (root / "desk.json").string(), "--socket",
                            (root / "corvetta.sock").string()});
    };
    const auto ready = [](RunningProcess& server) {
        ASSERT_TRUE(server.waitForError(versionText() + " ready")) << server.errors();
    };
    const auto ctl = [](const testing::TemporaryFolder& root, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--socket", (root / "corvetta.sock").string()});
        const auto finished = run(root, std::move(arguments), CORVETTA_CTL_BINARY);
        EXPECT_EQ(finished.code, 0) << finished.err;
        return Json::parse(finished.out.empty() ? "null" : finished.out);
    };
    const auto stop = [](RunningProcess& server) {
        server.signal(SIGTERM);
        EXPECT_EQ(server.waitForExit(), 0) << server.errors();
    };

    {
        RunningProcess server = serve(first);
        ready(server);
        ctl(first, {"create_space", "name=Work"});
        ctl(first, {"save_layout", "name=Tall", "panes=[[0, 0, 0.5, 1]]", "space=Work"});
        stop(server);
    }
    RunningProcess again = serve(first);
    ready(again);
    const auto spaces = ctl(first, {"list_spaces"})["spaces"];
    ASSERT_EQ(spaces.size(), 2U);
    EXPECT_EQ(spaces[1]["name"], "Work");
    EXPECT_EQ(ctl(first, {"list_layouts"})["layouts"].back()["name"], "Tall");
    const auto exported =
        ctl(first, {"export_setup", "path=" + first.path().string()})["path"].get<std::string>();
    stop(again);

    RunningProcess other = serve(second);
    ready(other);
    const auto imported = ctl(second, {"import_setup", "path=" + exported});
    EXPECT_EQ(imported["newSpaces"], 1);
    const auto otherSpaces = ctl(second, {"list_spaces"})["spaces"];
    ASSERT_EQ(otherSpaces.size(), 2U);
    EXPECT_EQ(otherSpaces[1]["id"], spaces[1]["id"]);
    const auto tall = ctl(second, {"list_layouts"})["layouts"].back();
    EXPECT_EQ(tall["name"], "Tall");
    EXPECT_EQ(tall["spaceId"], spaces[1]["id"]);
    stop(other);
}

}  // namespace
}  // namespace corvetta
