// Runs the real program in its own process, with every file it may touch inside a temporary
// folder, and watches what it prints and how it exits.

#include <csignal>
#include <filesystem>
#include <sstream>
#include <stdexcept>
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
#include "support/temporary_folder.h"

extern char** environ;

namespace corvetta {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace std::chrono;

// Sanitizer builds start slowly; this only bounds a hung child, a passing run never waits it out.
constexpr auto kTimeout = seconds(60);

class ChildProcess {
public:
    ChildProcess(const std::vector<std::string>& arguments, const testing::TemporaryFolder& root) {
        std::vector<std::string> environment = {
            "HOME=" + (root / "home").string(),
            "XDG_CONFIG_HOME=" + (root / "config").string(),
            "XDG_DATA_HOME=" + (root / "data").string(),
        };
        // Keep the rest (sanitizer options, locale), but never the real home.
        for (char** variable = environ; *variable; ++variable) {
            const std::string text = *variable;
            if (text.rfind("HOME=", 0) != 0 && text.rfind("XDG_", 0) != 0) {
                environment.push_back(text);
            }
        }
        std::vector<std::string> argv = {CORVETTA_BINARY};
        argv.insert(argv.end(), arguments.begin(), arguments.end());

        int out[2], err[2];
        if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe2 failed");
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        posix_spawn_file_actions_adddup2(&actions, err[1], 2);
        const int failed = posix_spawn(&pid_, argv[0].c_str(), &actions, nullptr,
                                       pointers(argv).data(), pointers(environment).data());
        posix_spawn_file_actions_destroy(&actions);
        close(out[1]);
        close(err[1]);
        fds_[0] = out[0];
        fds_[1] = err[0];
        if (failed != 0) {
            pid_ = -1;
            throw std::runtime_error("could not start " + argv[0]);
        }
    }

    ~ChildProcess() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        for (int fd : fds_) {
            if (fd >= 0) {
                close(fd);
            }
        }
    }

    // Reads output until standard error holds `text`; false if the child ended or time ran out.
    bool waitForStderr(const std::string& text) {
        const auto deadline = steady_clock::now() + kTimeout;
        while (err().find(text) == std::string::npos) {
            if (!pump(deadline)) {
                return false;
            }
        }
        return true;
    }

    void signal(int number) const { kill(pid_, number); }

    // Reads both streams to their end and returns the exit code (128 + signal if killed).
    int finish() {
        const auto deadline = steady_clock::now() + kTimeout;
        while (pump(deadline)) {
        }
        if (fds_[0] >= 0 || fds_[1] >= 0) {
            ADD_FAILURE() << "the program did not end in time; stderr so far:\n" << err();
            return -1;
        }
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    const std::string& out() const { return output_[0]; }
    const std::string& err() const { return output_[1]; }

private:
    static std::vector<char*> pointers(std::vector<std::string>& texts) {
        std::vector<char*> result;
        for (auto& text : texts) {
            result.push_back(text.data());
        }
        result.push_back(nullptr);
        return result;
    }

    // One round of reading whatever is ready; false once both streams ended or time is up.
    bool pump(steady_clock::time_point deadline) {
        pollfd polled[2] = {{fds_[0], POLLIN, 0}, {fds_[1], POLLIN, 0}};  // poll skips fd -1
        const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
        if ((fds_[0] < 0 && fds_[1] < 0) || left <= 0 ||
            poll(polled, 2, static_cast<int>(left)) <= 0) {
            return false;
        }
        for (std::size_t i = 0; i < 2; ++i) {
            char buffer[4096];
            const ssize_t n = polled[i].revents ? read(fds_[i], buffer, sizeof buffer) : -1;
            if (n > 0) {
                output_[i].append(buffer, static_cast<std::size_t>(n));
            } else if (polled[i].revents) {
                close(fds_[i]);
                fds_[i] = -1;
            }
        }
        return true;
    }

    pid_t pid_ = -1;
    int fds_[2] = {-1, -1};  // the child's standard output and error
    std::string output_[2];
};

class ProcessTest : public ::testing::Test {
protected:
    std::filesystem::path configFolder() const { return root / "config" / "corvetta"; }

    testing::TemporaryFolder root;
};

TEST_F(ProcessTest, HelpPrintsUsageAndExitsZero) {
    ChildProcess child({"--help"}, root);
    EXPECT_EQ(child.finish(), 0);
    EXPECT_EQ(child.out(), helpText());
    EXPECT_THAT(child.err(), IsEmpty());
}

TEST_F(ProcessTest, VersionPrintsNameAndNumber) {
    ChildProcess child({"--version"}, root);
    EXPECT_EQ(child.finish(), 0);
    EXPECT_EQ(child.out(), versionText() + "\n");
}

TEST_F(ProcessTest, UnknownOptionExitsTwoWithAHint) {
    ChildProcess child({"--bogus"}, root);
    EXPECT_EQ(child.finish(), 2);
    EXPECT_THAT(child.err(), HasSubstr("unrecognized option '--bogus'"));
    EXPECT_THAT(child.err(), HasSubstr("--help"));
    EXPECT_THAT(child.out(), IsEmpty());
}

class ProcessSignalTest : public ProcessTest, public ::testing::WithParamInterface<int> {};

TEST_P(ProcessSignalTest, StopsCleanlyOnTerminationSignal) {
    ChildProcess child({}, root);
    ASSERT_TRUE(child.waitForStderr(versionText() + " ready")) << child.err();
    child.signal(GetParam());
    EXPECT_EQ(child.finish(), 0) << child.err();
    EXPECT_THAT(child.err(),
                HasSubstr(GetParam() == SIGINT ? "Received SIGINT" : "Received SIGTERM"));
    EXPECT_THAT(child.err(), HasSubstr("Stopped cleanly"));
}

std::string signalName(const ::testing::TestParamInfo<int>& run) {
    return run.param == SIGINT ? "SIGINT" : "SIGTERM";
}

INSTANTIATE_TEST_SUITE_P(Signals, ProcessSignalTest, ::testing::Values(SIGTERM, SIGINT),
                         signalName);

TEST_F(ProcessTest, DamagedPreferencesAreQuarantinedAndTheProgramStillStarts) {
    const std::string damaged = "{not json";
    testing::writeTestFile(configFolder() / "preferences.json", damaged);

    ChildProcess child({}, root);
    ASSERT_TRUE(child.waitForStderr(versionText() + " ready")) << child.err();

    std::vector<std::filesystem::path> quarantined;
    for (const auto& item : std::filesystem::directory_iterator(configFolder())) {
        const std::string name = item.path().filename().string();
        if (name.rfind("preferences-quarantine-", 0) == 0 && item.path().extension() == ".json") {
            quarantined.push_back(item.path());
        }
    }
    ASSERT_EQ(quarantined.size(), 1u);
    EXPECT_EQ(testing::readTestFile(quarantined[0]), damaged);
    EXPECT_FALSE(std::filesystem::exists(configFolder() / "preferences.json"));

    std::string warning;
    std::istringstream lines(child.err());
    for (std::string line; warning.empty() && std::getline(lines, line);) {
        if (line.find(quarantined[0].string()) != std::string::npos) {
            warning = line;
        }
    }
    EXPECT_THAT(warning, HasSubstr(" warning ")) << child.err();

    child.signal(SIGTERM);
    EXPECT_EQ(child.finish(), 0) << child.err();
}

}  // namespace
}  // namespace corvetta
