// Runs the real program with every file it may touch inside a temporary folder.

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/command_line.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace std::chrono;

// Standard error comes through a pipe, watched while the program runs; standard output goes to a
// file, read once it ends. The deadline only bounds a hung child (sanitizer builds start slowly).
class ChildProcess {
public:
    ChildProcess(std::vector<std::string> argv, const testing::TemporaryFolder& root)
        : ChildProcess(CORVETTA_BINARY, std::move(argv), root) {}
    ChildProcess(const std::string& program, std::vector<std::string> argv,
                 const testing::TemporaryFolder& root)
        : outPath_(root / ("stdout-" + std::to_string(++spawned_))) {
        auto environment = testing::isolatedEnvironment(root.path());
        argv.insert(argv.begin(), program);
        int err[2];
        EXPECT_EQ(pipe2(err, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, outPath_.c_str(), O_WRONLY | O_CREAT, 0600);
        posix_spawn_file_actions_adddup2(&actions, err[1], 2);
        EXPECT_EQ(posix_spawn(&pid_, argv[0].c_str(), &actions, nullptr,
                              testing::nullTerminated(argv).data(),
                              testing::nullTerminated(environment).data()),
                  0);
        posix_spawn_file_actions_destroy(&actions);
        close(err[1]);
        errFd_ = err[0];
    }
    ~ChildProcess() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(errFd_);
    }

    // False if standard error ended or time ran out before it held `text`.
    bool waitForStderr(const std::string& text) {
        while (err_.find(text) == std::string::npos && pump()) {
        }
        return err_.find(text) != std::string::npos;
    }

    void signal(int number) const { kill(pid_, number); }

    // The exit code, or 128 + the signal that killed it.
    int finish() {
        while (pump()) {
        }
        if (errFd_ >= 0) {
            ADD_FAILURE() << "the program did not end in time; stderr so far:\n" << err_;
            return -1;
        }
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        out_ = testing::readTestFile(outPath_);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    const std::string& out() const { return out_; }
    const std::string& err() const { return err_; }

    struct Finished {
        int code;
        std::string out, err;
    };
    // Runs a program to its end.
    static Finished run(const std::string& program, std::vector<std::string> argv,
                        const testing::TemporaryFolder& root) {
        ChildProcess child(program, std::move(argv), root);
        const int code = child.finish();
        return {code, child.out(), child.err()};
    }

private:
    // False once standard error ended or time is up.
    bool pump() {
        pollfd polled = {errFd_, POLLIN, 0};
        const auto left = duration_cast<milliseconds>(deadline_ - steady_clock::now()).count();
        if (errFd_ < 0 || left <= 0 || poll(&polled, 1, static_cast<int>(left)) <= 0) {
            return false;
        }
        char buffer[4096];
        const ssize_t n = read(errFd_, buffer, sizeof buffer);
        if (n <= 0) {
            close(errFd_);
            errFd_ = -1;
            return false;
        }
        err_.append(buffer, static_cast<std::size_t>(n));
        return true;
    }

    const steady_clock::time_point deadline_ = steady_clock::now() + seconds(60);
    std::filesystem::path outPath_;
    // Names each child's output file apart from its siblings'.
    static inline int spawned_ = 0;
    pid_t pid_ = -1;
    int errFd_ = -1;
    std::string out_, err_;
};

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
        ChildProcess child({c.option}, root);
        EXPECT_EQ(child.finish(), c.code);
        EXPECT_EQ(child.out(), c.out);
        EXPECT_THAT(child.err(), c.err);
    }
}

TEST(Process, StopsCleanlyOnTerminationSignals) {
    for (const auto& [number, name] :
         {std::pair{SIGTERM, "SIGTERM"}, std::pair{SIGINT, "SIGINT"}}) {
        SCOPED_TRACE(name);
        testing::TemporaryFolder root;
        ChildProcess child({}, root);
        ASSERT_TRUE(child.waitForStderr(versionText() + " ready")) << child.err();
        child.signal(number);
        EXPECT_EQ(child.finish(), 0) << child.err();
        EXPECT_THAT(child.err(), HasSubstr(std::string("Received ") + name));
        EXPECT_THAT(child.err(), HasSubstr("Stopped cleanly"));
    }
}

TEST(Process, DamagedPreferencesAreQuarantinedAndTheProgramStillStarts) {
    testing::TemporaryFolder root;
    const auto folder = root / "config" / "corvetta";
    testing::writeTestFile(folder / "preferences.json", "{not json");
    ChildProcess child({}, root);
    ASSERT_TRUE(child.waitForStderr(versionText() + " ready")) << child.err();

    std::vector<std::filesystem::path> quarantined;
    for (const auto& item : std::filesystem::directory_iterator(folder)) {
        if (item.path().filename().string().starts_with("preferences-quarantine-") &&
            item.path().extension() == ".json") {
            quarantined.push_back(item.path());
        }
    }
    ASSERT_EQ(quarantined.size(), 1u);
    EXPECT_EQ(testing::readTestFile(quarantined[0]), "{not json");
    // The launch writes its defaults into a fresh document, never over the damaged text.
    EXPECT_NE(testing::readTestFile(folder / "preferences.json"), "{not json");
    // The warning is how anyone learns where the damaged file went.
    const std::string& err = child.err();
    const auto at = err.find(quarantined[0].string());
    ASSERT_NE(at, std::string::npos) << err;
    const auto lineStart = err.rfind('\n', at) + 1;  // npos + 1 is 0: the first line
    EXPECT_THAT(err.substr(lineStart, at - lineStart), HasSubstr(" warning ")) << err;

    child.signal(SIGTERM);
    EXPECT_EQ(child.finish(), 0) << child.err();
}

TEST(Process, RunsOnASimulatedDesktopAndRefusesABadDesktopFile) {
    testing::TemporaryFolder root;
    testing::writeTestFile(root / "desk.json",
                           R"({"displays": [{"id": 1, "frame": [0, 0, 1440, 900]}],
        "applications": [{"pid": 101, "name": "Editor", "windows": [{"number": 11,
                          "frame": [100, 100, 800, 600]}]}], "frontmost": 101})");
    {
        ChildProcess child({"--desktop=sim:" + (root / "desk.json").string()}, root);
        ASSERT_TRUE(child.waitForStderr(versionText() + " ready")) << child.err();
        // Corvetta itself counts among the running applications, as the workspace lists it.
        EXPECT_THAT(child.err(), HasSubstr("1 display, 2 running applications"));
        child.signal(SIGTERM);
        EXPECT_EQ(child.finish(), 0) << child.err();
    }

    testing::writeTestFile(root / "bad.json", R"({"displays": [{"id": 1, "frame": [0, 0]}]})");
    const std::pair<std::string, std::string> refused[] = {
        {"bad.json", "bad.json: displays[0].frame: "},
        {"missing.json", "missing.json: cannot read "},
    };
    for (const auto& [file, message] : refused) {
        ChildProcess child({"--desktop=sim:" + (root / file).string()}, root);
        EXPECT_EQ(child.finish(), 2);
        EXPECT_THAT(child.err(), HasSubstr(message));
        EXPECT_THAT(child.err(), ::testing::Not(HasSubstr(" ready")));
    }
}

TEST(Process, AnswersAutomationRequestsAndLeavesALiveSocketToItsOwner) {
    testing::TemporaryFolder root;
    testing::writeTestFile(root / "desk.json",
                           R"({"displays": [{"id": 1, "frame": [0, 0, 1440, 900],
        "visibleFrame": [0, 0, 1440, 875]}], "applications": [{"pid": 101, "name": "Editor",
        "bundleIdentifier": "com.example.editor", "windows": [{"number": 11, "title": "Notes",
        "frame": [100, 100, 800, 600]}]}], "frontmost": 101})");
    const auto socket = (root / "corvetta.sock").string();
    ChildProcess server({"--desktop=sim:" + (root / "desk.json").string(), "--socket", socket},
                        root);
    ASSERT_TRUE(server.waitForStderr(versionText() + " ready")) << server.err();
    EXPECT_THAT(server.err(), HasSubstr("MCPBridgeService listening"));

    const auto ctl = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--socket", socket});
        return ChildProcess::run(CORVETTA_CTL_BINARY, std::move(arguments), root);
    };
    const auto moved = ctl({"perform_action", "action=leftHalf"});
    EXPECT_EQ(moved.code, 0) << moved.err;
    EXPECT_EQ(moved.out, "{\"action\":\"leftHalf\"}\n");
    const auto listed = ctl({"list_windows"});
    ASSERT_EQ(listed.code, 0) << listed.err;
    EXPECT_THAT(listed.out,
                HasSubstr(R"("frame":{"x":0.0,"y":25.0,"width":720.0,"height":875.0})"));

    // A second copy must neither take the socket over nor touch the first one's keys.
    const auto second = ChildProcess::run(
        CORVETTA_BINARY, {"--desktop=sim:" + (root / "desk.json").string(), "--socket", socket},
        root);
    EXPECT_EQ(second.code, 1);
    EXPECT_THAT(second.err, HasSubstr("corvetta: Corvetta is already running"));
    EXPECT_EQ(ctl({"get_status"}).code, 0);

    server.signal(SIGTERM);
    EXPECT_EQ(server.finish(), 0) << server.err();
    EXPECT_FALSE(std::filesystem::exists(socket));
    EXPECT_EQ(ctl({"get_status"}).code, 2);
}

}  // namespace
}  // namespace corvetta
