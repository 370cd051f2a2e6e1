#include <algorithm>

#include "support/temporary_folder.h"
#include "workspace_store_fixture.h"

namespace corvetta::testing {
namespace {

using WorkspaceServiceTest = WorkspaceStoreTest;

const std::string kGood1 = R"({"name": "One", "windowInfos": []})";
const std::string kGood2 = R"({"name": "Two", "windowInfos": []})";
const std::string kBroken = R"({"name": "Broken", "windowInfos": [{"isFullscreen": true}]})";

TEST_F(WorkspaceServiceTest, OneMalformedWorkspaceAmongThreeIsSkippedAndQuarantined) {
    const auto raw = "[" + kGood1 + "," + kBroken + "," + kGood2 + "]";
    storeRaw(raw);
    auto& service = startWorkspaces();

    ASSERT_EQ(service.workspaces().size(), 2u);
    EXPECT_EQ(service.workspaces()[1].name, "Two");
    EXPECT_TRUE(
        log.contains("Successfully loaded data (" + std::to_string(raw.size()) + " bytes)."));
    EXPECT_TRUE(log.contains("Successfully decoded 2 workspaces."));
    EXPECT_TRUE(log.contains("1 undecodable workspace entries skipped"));
    const auto files = quarantined("workspaces");
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(readTestFile(files[0]), raw);
    EXPECT_TRUE(log.contains("Quarantined undecodable workspaces data (" +
                             std::to_string(raw.size()) + " bytes) to " + files[0].string()));
    // Loading alone never rewrites what is stored.
    EXPECT_EQ(storedRaw(), raw);
    service.add(named("Three"));
    EXPECT_EQ(storedNames(), (std::vector<std::string>{"One", "Two", "Three"}));
}

// What a start finds where the list should be, and what it then starts with.
TEST_F(WorkspaceServiceTest, RecoversFromTheBackupWhenTheStoredValueIsUnusable) {
    struct Case {
        const char* what;
        std::optional<std::string> stored;
        std::optional<std::string> backup;
        std::vector<std::string> expectedLines;
        std::size_t loaded;
        bool quarantines;
    };
    const auto backup = [&] { return (folder / "workspaces-backup.json").string(); };
    const Case cases[] = {
        {"nothing stored, no backup",
         std::nullopt,
         std::nullopt,
         {"No data found in UserDefaults for key 'savedWorkspaces'",
          "No backup file found at " + backup()},
         0,
         false},
        {"nothing stored, good backup",
         std::nullopt,
         "[" + kGood1 + "," + kGood2 + "]",
         {"Restored 2 workspaces from backup at " + backup()},
         2,
         false},
        {"not a list, backup with a damaged entry",
         R"({"oops": 1})",
         "[" + kGood1 + "," + kBroken + "]",
         {"Restored 1 workspaces from backup at " + backup(),
          "Backup recovery skipped 1 undecodable entries (original backup file preserved on disk)"},
         1,
         true},
        {"not JSON, damaged backup", "garbage", "also garbage", {}, 0, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::filesystem::remove_all(folder.path());
        std::filesystem::create_directories(folder.path());
        defaults.remove(WorkspaceService::kUserDefaultsKey);
        if (c.stored) {
            storeRaw(*c.stored);
        }
        if (c.backup) {
            writeTestFile(folder / "workspaces-backup.json", *c.backup);
        }
        auto& service = startWorkspaces();
        EXPECT_EQ(service.workspaces().size(), c.loaded);
        for (const auto& line : c.expectedLines) {
            EXPECT_TRUE(log.contains(line)) << line;
        }
        EXPECT_EQ(quarantined("workspaces").size(), c.quarantines ? 1u : 0u);
        if (c.backup) {
            // Recovery reads the backup; it never rewrites it.
            EXPECT_EQ(readTestFile(folder / "workspaces-backup.json"), *c.backup);
        }
    }
    EXPECT_TRUE(log.contains("Failed to decode workspace backup: " +
                             decodeLossyWorkspaces("also garbage").error()));
}

TEST_F(WorkspaceServiceTest, SavesEveryChangeWithBackupAndNotification) {
    int posted = 0;
    const auto token = notifications.addObserver(WorkspaceService::kWorkspacesDidChange,
                                                 [&](const Notification&) { ++posted; });
    auto& service = startWorkspaces();
    const auto first = named("First");
    service.add(first);
    service.add(named("Second"));
    auto renamed = first;
    renamed.name = "Renamed";
    EXPECT_TRUE(service.update(renamed));
    EXPECT_EQ(posted, 3);
    EXPECT_EQ(storedNames(), (std::vector<std::string>{"Renamed", "Second"}));
    EXPECT_EQ(readTestFile(folder / "workspaces-backup.json"), storedRaw());
    for (const auto* line :
         {"Added workspace: First", "Updated workspace: Renamed", "Attempting to save 2 workspaces",
          "Successfully encoded and saved workspaces to UserDefaults."}) {
        EXPECT_TRUE(log.contains(line)) << line;
    }
    EXPECT_TRUE(log.contains("Backup written to " + (folder / "workspaces-backup.json").string()));

    // Failures change nothing and write nothing.
    const auto before = storedRaw();
    EXPECT_FALSE(service.update(named("Stranger")));
    EXPECT_FALSE(service.remove(std::nullopt));
    EXPECT_TRUE(log.contains("Attempted to delete workspace with nil ID."));
    service.add(Workspace{.id = Uuid::random(), .name = "bad \xff"});
    EXPECT_EQ(storedRaw(), before);
    EXPECT_EQ(service.workspaces().size(), 3u);
    EXPECT_EQ(posted, 3);
    const auto messages = log.messages();
    EXPECT_EQ(std::count_if(messages.begin(), messages.end(),
                            [](const std::string& m) {
                                return m.starts_with("Failed to update workspace: ID") ||
                                       m.starts_with("Error encoding workspaces: ");
                            }),
              2);
}

TEST_F(WorkspaceServiceTest, DeletingTheLastWorkspaceKeepsTheBackup) {
    auto& service = startWorkspaces();
    const auto only = named("Only");
    service.add(only);
    const auto backup = readTestFile(folder / "workspaces-backup.json");
    EXPECT_TRUE(service.remove(only.id));
    EXPECT_EQ(storedRaw(), "[]");
    EXPECT_EQ(readTestFile(folder / "workspaces-backup.json"), backup);
    EXPECT_TRUE(
        log.contains("Skipping backup write: workspaces empty, preserving existing backup."));
    EXPECT_TRUE(log.contains("Deleted workspace with ID: " + only.id->string()));
}

TEST_F(WorkspaceServiceTest, NamesConflictOnlyWithinTheSameScope) {
    const auto work = Uuid::random();
    const auto home = Uuid::random();
    auto& service = startWorkspaces();
    const auto existingInWork = named("Coding", work);
    service.add(existingInWork);
    service.add(named("Mail"));
    struct Case {
        std::string name;
        std::optional<Uuid> space;
        std::optional<Uuid> editing;
        std::optional<std::string> error;
    };
    const Case cases[] = {
        {"Coding", home, std::nullopt, std::nullopt},
        {"Coding", work, std::nullopt, WorkspaceService::kNameTaken},
        {"  cODING \n", work, std::nullopt, WorkspaceService::kNameTaken},
        {"Coding", std::nullopt, std::nullopt, WorkspaceService::kNameTaken},
        {"mail", home, std::nullopt, WorkspaceService::kNameTaken},
        {"Coding", work, existingInWork.id, std::nullopt},
        {" \t\n", std::nullopt, std::nullopt, WorkspaceService::kNameRequired},
    };
    for (const auto& c : cases) {
        const auto result = service.validateName(c.name, c.editing, c.space);
        EXPECT_EQ(result ? std::nullopt : std::optional(result.error()), c.error) << c.name;
    }
    EXPECT_TRUE(log.contains("Workspace name 'cODING' conflicts with existing workspace 'Coding'"));
    EXPECT_EQ(service.rename(*existingInWork.id, "  Mail ").error(), WorkspaceService::kNameTaken);
    EXPECT_TRUE(service.rename(*existingInWork.id, " Deep work "));
    EXPECT_EQ(service.workspace(*existingInWork.id)->name, "Deep work");
}

TEST_F(WorkspaceServiceTest, ShortcutsAreSetClearedAndCommandDigitsWarned) {
    auto& service = startWorkspaces();
    const auto workspace = named("Keys");
    service.add(workspace);
    EXPECT_TRUE(service.updateWorkspaceShortcut(*workspace.id, ShortcutCombo{18, 0x100000}));
    EXPECT_EQ(service.workspaces()[0].shortcutKeyCode, 18);
    EXPECT_TRUE(
        log.contains("Saving workspace with potential system shortcut conflict (Cmd+Number)"));
    EXPECT_TRUE(log.contains("Found workspace at index 0"));
    EXPECT_TRUE(service.updateWorkspaceShortcut(*workspace.id, std::nullopt));
    EXPECT_EQ(service.workspaces()[0].shortcutModifiers, std::nullopt);
    EXPECT_TRUE(log.contains("Clearing shortcut for workspace 'Keys'"));
    EXPECT_FALSE(service.updateWorkspaceShortcut(Uuid::random(), std::nullopt));
    const auto messages = log.messages();
    EXPECT_EQ(std::count_if(messages.begin(), messages.end(),
                            [](const std::string& m) {
                                return m.starts_with("Updating shortcut from keyCode=") ||
                                       m.starts_with("Failed to update workspace shortcut: ID");
                            }),
              2);
    // Command with Shift is not the system's digit shortcut.
    service.updateWorkspaceShortcut(*workspace.id, ShortcutCombo{18, 0x120000});
    const auto after = log.messages();
    EXPECT_EQ(std::count(after.begin(), after.end(),
                         "Saving workspace with potential system shortcut conflict (Cmd+Number)"),
              1);
}

TEST_F(WorkspaceServiceTest, MigrationsRunOnceAndTheActiveSpacePersists) {
    startWorkspaces().setActiveSpaceId(Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
    EXPECT_EQ(defaults.boolValue(WorkspaceService::kSpaceV2MigrationKey), true);
    EXPECT_EQ(defaults.boolValue(WorkspaceService::kWorkspaceContextMigrationKey), true);
    auto& again = startWorkspaces();
    EXPECT_EQ(again.activeSpaceId(), Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
    const auto messages = log.messages();
    EXPECT_EQ(std::count(messages.begin(), messages.end(),
                         "V2 migration skipped: spaces are managed in spaces.json by SpaceManager"),
              1);
    again.setActiveSpaceId(std::nullopt);
    EXPECT_FALSE(defaults.object(WorkspaceService::kActiveSpaceIdKeyV2));
    defaults.set(WorkspaceService::kActiveSpaceIdKeyV2, "not a uuid");
    EXPECT_EQ(startWorkspaces().activeSpaceId(), std::nullopt);
}

TEST(RestoreGate, LetsOneRestorationRunAndOutlivesAStaleOne) {
    ManualClock clock;
    RestoreGate gate(clock);
    using Entry = RestoreGate::Entry;
    struct Step {
        std::chrono::seconds advance;
        std::optional<Entry> attempt;  // none: end the running restoration
        bool heldAfter;
        bool staleAfter;
    };
    const Step steps[] = {
        {std::chrono::seconds(0), Entry::begun, true, false},
        {std::chrono::seconds(120), Entry::busy, true, false},
        {std::chrono::seconds(1), std::nullopt, false, false},
        {std::chrono::seconds(0), Entry::begun, true, false},
        {std::chrono::seconds(121), Entry::tookOverStale, true, false},
        {std::chrono::seconds(0), Entry::busy, true, false},
    };
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        const auto& step = steps[i];
        clock.advance(step.advance);
        if (step.attempt) {
            EXPECT_EQ(gate.tryBegin(), *step.attempt) << "step " << i;
        } else {
            gate.end();
        }
        EXPECT_EQ(gate.isHeld(), step.heldAfter) << "step " << i;
        EXPECT_EQ(gate.isStale(), step.staleAfter) << "step " << i;
    }
    clock.advance(std::chrono::seconds(121));
    EXPECT_TRUE(gate.isStale());
    EXPECT_EQ(gate.startedAt().value() + std::chrono::seconds(121), clock.monotonicNow());
}

}  // namespace
}  // namespace corvetta::testing
