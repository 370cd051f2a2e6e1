#include "foundation/files.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using testing::readTestFile;
using testing::TemporaryFolder;
using testing::writeTestFile;

std::size_t entriesIn(const std::filesystem::path& folder) {
    using Entries = std::filesystem::directory_iterator;
    return static_cast<std::size_t>(std::distance(Entries(folder), Entries()));
}

TEST(AtomicWrite, CreatesFoldersReplacesContentsKeepsTheModeAndLeavesNoTemporaryFiles) {
    TemporaryFolder folder;
    const auto file = folder / "a/b/c/workspaces-backup.json";
    ASSERT_TRUE(writeFileAtomically(file, "first, longer"));
    const auto ownerOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    std::filesystem::permissions(file, ownerOnly);
    ASSERT_TRUE(writeFileAtomically(file, "2"));
    EXPECT_EQ(readTestFile(file), "2");
    EXPECT_EQ(std::filesystem::status(file).permissions() & std::filesystem::perms::all, ownerOnly);
    EXPECT_EQ(entriesIn(file.parent_path()), 1u);

    // A file where a folder should be: the error names the path, the file stays.
    const auto blocker = folder / "blocker";
    writeTestFile(blocker, "mine");
    const auto result = writeFileAtomically(blocker / "settings.json", "x");
    ASSERT_FALSE(result);
    EXPECT_NE(result.error().description().find("blocker"), std::string::npos);
    EXPECT_EQ(readTestFile(blocker), "mine");
}

// A disk that fills up half-way: the write fails, the old contents stay whole and the partial
// temporary file is cleaned up. Run in a child process because the size limit is process-wide.
TEST(AtomicWrite, AWriteCutShortLeavesTheOldFileWhole) {
    TemporaryFolder folder;
    const auto file = folder / "spaces.json";
    const std::string original(1000, 'o');
    writeTestFile(file, original);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto result = writeFileAtomically(file, std::string(100'000, 'n'));
        _exit(result ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the cut-short write reported success";
    EXPECT_EQ(readTestFile(file), original);
    EXPECT_EQ(entriesIn(folder.path()), 1u);
}

// A writer killed at an arbitrary moment leaves one complete version or the other, never a mix.
TEST(AtomicWrite, AKilledWriterNeverLeavesAMixedFile) {
    TemporaryFolder folder;
    const auto file = folder / "workspaces-backup.json";
    const std::string a(200'000, 'a');
    const std::string b(300'000, 'b');
    ASSERT_TRUE(writeFileAtomically(file, a));
    int progress[2];
    ASSERT_EQ(pipe(progress), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        close(progress[0]);
        for (int i = 0;; ++i) {
            if (!writeFileAtomically(file, i % 2 ? a : b))
                _exit(1);
            const char tick = 't';
            if (write(progress[1], &tick, 1) != 1)
                _exit(1);
        }
    }
    close(progress[1]);
    // Let it finish a few writes, so the kill lands in the middle of a later one.
    char ticks[5];
    std::size_t seen = 0;
    while (seen < sizeof ticks) {
        const auto n = read(progress[0], ticks, sizeof ticks - seen);
        ASSERT_GT(n, 0);
        seen += static_cast<std::size_t>(n);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(progress[0]);
    const std::string contents = readTestFile(file);
    EXPECT_TRUE(contents == a || contents == b) << "mixed file of " << contents.size() << " bytes";

    // The next start removes what the killed write may have left, and only that.
    writeTestFile(folder / ".workspaces-backup.json.Ab12Z9", "left by a killed write");
    const std::vector<std::string> strangers = {".workspaces-backup.json.notours",
                                                ".spaces.json.Ab12Z9", "workspaces-backup.json.x"};
    for (const auto& name : strangers) {
        writeTestFile(folder / name, "not ours");
    }
    std::filesystem::create_directory(folder / ".workspaces-backup.json.Dir123");
    const auto removed = removeAbandonedTemporaryFiles(file);
    EXPECT_FALSE(removed.empty());
    EXPECT_EQ(entriesIn(folder.path()), 1 + strangers.size() + 1);
    EXPECT_EQ(readTestFile(file), contents);
}

TEST(ReadFile, ReadsBytesAsTheyAreAndRefusesWhatItCannotOrShouldNotRead) {
    TemporaryFolder folder;
    writeTestFile(folder / "x.json", std::string("a\0b", 3));
    EXPECT_EQ(readFile(folder / "x.json").value(), std::string("a\0b", 3));
    EXPECT_EQ(readFile(folder / "x.json", 3).value(), std::string("a\0b", 3));
    std::filesystem::create_symlink("/dev/zero", folder / "zero.json");

    const struct {
        const char* name;
        std::filesystem::path path;
        std::size_t limit;
        bool missing;
        const char* reason;
    } refused[] = {
        {"missing", folder / "missing.json", kMaxReadFileBytes, true, "Could not open"},
        {"a folder", folder.path(), kMaxReadFileBytes, false, "Could not read"},
        {"one byte over the limit", folder / "x.json", 2, false,
         "Refused to read a file larger than 2 bytes"},
        {"endless", folder / "zero.json", kMaxReadFileBytes, false,
         "Refused to read a file larger than 16 MiB"},
    };
    for (const auto& r : refused) {
        SCOPED_TRACE(r.name);
        const auto read = readFile(r.path, r.limit);
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error().isMissing(), r.missing);
        EXPECT_EQ(read.error().description().rfind(r.reason, 0), 0u) << read.error().description();
    }
}

TEST(Quarantine, KeepsDataOrMovesAFileAsideUnderADatedNameThatNeverOverwrites) {
    TemporaryFolder folder;
    const Date when = *parseIso8601("2026-11-21T10:15:30Z");
    const auto first = quarantineData(folder / "nested", "spaces", "raw\xff bytes", when);
    ASSERT_TRUE(first);
    EXPECT_EQ(*first, folder / "nested/spaces-quarantine-2026-11-21T10-15-30Z.json");
    EXPECT_EQ(readTestFile(*first), "raw\xff bytes");

    writeTestFile(folder / "nested/spaces.json", "{broken");
    const auto moved = quarantineFile(folder / "nested/spaces.json", "spaces", when);
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->filename(), "spaces-quarantine-2026-11-21T10-15-30Z-2.json");
    EXPECT_EQ(readTestFile(*moved), "{broken");
    EXPECT_EQ(readTestFile(*first), "raw\xff bytes");
    EXPECT_FALSE(std::filesystem::exists(folder / "nested/spaces.json"));
    EXPECT_FALSE(quarantineFile(folder / "nested/spaces.json", "spaces", when));
}

}  // namespace
}  // namespace corvetta
