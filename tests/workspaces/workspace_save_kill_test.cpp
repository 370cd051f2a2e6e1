// Saves killed at random moments, many times: what is stored is always a whole list.

#include <csignal>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

#include "foundation/json_file_preferences.h"
#include "workspace_store_fixture.h"

namespace corvetta::testing {
namespace {

std::vector<std::string> names(const std::string& text) {
    std::vector<std::string> result;
    const auto decoded = decodeLossyWorkspaces(text);
    EXPECT_TRUE(decoded) << decoded.error();
    if (decoded) {
        EXPECT_EQ(decoded->dropped, 0u);
        for (const auto& workspace : decoded->workspaces) {
            result.push_back(workspace.name);
        }
    }
    return result;
}

// "w0", "w1", ... in order: every list a save can leave.
bool isWholeList(const std::vector<std::string>& list) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i] != "w" + std::to_string(i)) {
            return false;
        }
    }
    return true;
}

// The child loads what the last run left and keeps adding one workspace per save, reporting each
// finished save on the pipe, until it is killed.
[[noreturn]] void saveUntilKilled(const std::filesystem::path& folder, int reportFd) {
    SystemClock clock;
    NotificationCenter notifications;
    TestLogging log(notifications, clock);
    JsonFilePreferences defaults(folder / "preferences.json", clock);
    WorkspaceService service(defaults, notifications, clock, log.logging, folder);
    for (std::size_t next = service.workspaces().size();; ++next) {
        service.add(Workspace{.id = Uuid::random(),
                              .name = "w" + std::to_string(next),
                              .windowInfos = std::vector<WindowInfo>(2)});
        const char done = 1;
        if (write(reportFd, &done, 1) != 1) {
            _exit(1);
        }
    }
}

TEST(WorkspaceSaveKill, AKillDuringASaveLeavesThePreviousOrTheNewList) {
    TemporaryFolder folder;
    std::mt19937 random(std::random_device{}());
    std::size_t lastCount = 0;
    for (int run = 0; run < 20; ++run) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(fds[0]);
            saveUntilKilled(folder.path(), fds[1]);
        }
        close(fds[1]);
        // Wait for a random number of finished saves, then kill wherever the next one is.
        const int saves = std::uniform_int_distribution<int>(1, 3)(random);
        char done = 0;
        for (int i = 0; i < saves; ++i) {
            ASSERT_EQ(read(fds[0], &done, 1), 1);
        }
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        close(fds[0]);
        ASSERT_TRUE(WIFSIGNALED(status));

        SystemClock clock;
        JsonFilePreferences defaults(folder / "preferences.json", clock);
        // A killed write may leave its temporary file (removed with a warning), never damage.
        for (const auto& warning : defaults.loadWarnings()) {
            EXPECT_EQ(warning.find("uarantine"), std::string::npos) << warning;
        }
        const auto stored = defaults.data(WorkspaceService::kUserDefaultsKey).value();
        const auto list = names(std::string(stored.begin(), stored.end()));
        const auto backup = names(readTestFile(folder / "workspaces-backup.json"));
        ASSERT_TRUE(isWholeList(list) && isWholeList(backup)) << "run " << run;
        EXPECT_GE(list.size(), lastCount + saves) << "run " << run;
        // The backup is written right after the list: at most one save behind.
        EXPECT_LE(list.size() - backup.size(), 1u) << "run " << run;
        lastCount = list.size();
    }
}

}  // namespace
}  // namespace corvetta::testing
