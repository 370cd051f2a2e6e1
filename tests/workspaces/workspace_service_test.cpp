#include "support/temporary_folder.h"
#include "workspace_store_fixture.h"

namespace corvetta::testing {
namespace {

using WorkspaceServiceTest = WorkspaceStoreTest;

const std::string kGood1 = R"({"name": "One", "windowInfos": []})";
const std::string kGood2 = R"({"name": "Two", "windowInfos": []})";
const std::string kBroken = R"({"name": "Broken", "windowInfos": [{"isFullscreen": true}]})";

// What a start finds where the list should be, what it then starts with, and that the next
// change saves exactly that plus the change.
TEST_F(WorkspaceServiceTest, LoadsWhatIsStoredSkippingDamageElseRecoversFromTheBackup) {
    struct Case {
        const char* what;
        std::optional<std::string> stored, backup;
        std::vector<std::string> lines, loaded;
        bool quarantines;
    };
    const auto backup = (folder / "workspaces-backup.json").string();
    // clang-format off
    const Case cases[] = {
        {"one malformed among three", "[" + kGood1 + "," + kBroken + "," + kGood2 + "]", {},
         {"Successfully decoded 2 workspaces.", "1 undecodable workspace entries skipped",
          "  Loaded workspace: Two"}, {"One", "Two"}, true},
        {"nothing stored, no backup", {}, {},
         {"No data found in UserDefaults for key 'savedWorkspaces'", "No backup file found at " + backup},
         {}, false},
        {"nothing stored, good backup", {}, "[" + kGood1 + "," + kGood2 + "]",
         {"Restored 2 workspaces from backup at " + backup}, {"One", "Two"}, false},
        {"not a list, backup with a damaged entry", R"({"oops": 1})", "[" + kGood1 + "," + kBroken + "]",
         {"Error decoding workspaces: expected an array of workspaces. Attempting backup recovery.",
          "Restored 1 workspaces from backup at " + backup,
          "Backup recovery skipped 1 undecodable entries (original backup file preserved on disk)"},
         {"One"}, true},
        {"not JSON, damaged backup", "garbage", "also garbage",
         {"Failed to decode workspace backup: " + decodeLossyWorkspaces("also garbage").error()},
         {}, true},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::filesystem::remove_all(folder.path());
        std::filesystem::create_directories(folder.path());
        defaults.remove(WorkspaceService::kUserDefaultsKey);
        if (c.stored) {
            storeRaw(*c.stored);
        }
        if (c.backup) {
            writeTestFile(backup, *c.backup);
        }
        auto& service = startWorkspaces();
        std::vector<std::string> loaded;
        for (const auto& workspace : service.workspaces()) {
            loaded.push_back(workspace.name);
        }
        EXPECT_EQ(loaded, c.loaded);
        for (const auto& line : c.lines) {
            EXPECT_TRUE(log.contains(line)) << line;
        }
        const auto kept = quarantined("workspaces");
        ASSERT_EQ(kept.size(), c.quarantines ? 1u : 0u);
        if (c.stored) {
            const auto size = std::to_string(c.stored->size());
            EXPECT_TRUE(log.contains("Successfully loaded data (" + size + " bytes)."));
            if (c.quarantines) {
                EXPECT_EQ(readTestFile(kept[0]), *c.stored);
                EXPECT_TRUE(log.contains("Quarantined undecodable workspaces data (" + size +
                                         " bytes) to " + kept[0].string()));
            }
            // Loading alone never rewrites what is stored, nor the backup.
            EXPECT_EQ(storedRaw(), *c.stored);
        }
        if (c.backup) {
            EXPECT_EQ(readTestFile(backup), *c.backup);
        }
        service.add(named("Three"));
        loaded.push_back("Three");
        EXPECT_EQ(storedNames(), loaded);
    }
}

TEST_F(WorkspaceServiceTest, SavesEveryChangeWithBackupAndNotificationAndRefusalsWriteNothing) {
    int posted = 0;
    const auto token = notifications.addObserver(WorkspaceService::kWorkspacesDidChange,
                                                 [&](const Notification&) { ++posted; });
    const auto backup = folder / "workspaces-backup.json";
    auto& service = startWorkspaces();
    const auto first = named("First");
    const auto second = named("Second");
    service.add(first);
    service.add(second);
    auto renamed = first;
    renamed.name = "Renamed";
    EXPECT_TRUE(service.update(renamed));
    EXPECT_EQ(posted, 3);
    EXPECT_EQ(storedNames(), (std::vector<std::string>{"Renamed", "Second"}));
    EXPECT_EQ(readTestFile(backup), storedRaw());
    for (const auto& line :
         std::vector<std::string>{"Added workspace: First", "Updated workspace: Renamed",
                                  "Attempting to save 2 workspaces", "  Saving workspace: Second",
                                  "Successfully encoded and saved workspaces to UserDefaults.",
                                  "Backup written to " + backup.string()}) {
        EXPECT_TRUE(log.contains(line)) << line;
    }

    // Emptying the list keeps the last good backup.
    EXPECT_TRUE(service.remove(first.id));
    const auto lastBackup = readTestFile(backup);
    EXPECT_TRUE(service.remove(second.id));
    EXPECT_EQ(storedRaw(), "[]");
    EXPECT_EQ(readTestFile(backup), lastBackup);
    EXPECT_TRUE(
        log.contains("Skipping backup write: workspaces empty, preserving existing backup."));
    EXPECT_TRUE(log.contains("Deleted workspace with ID: " + second.id->string()));

    EXPECT_FALSE(service.update(named("Stranger")));
    EXPECT_FALSE(service.remove(std::nullopt));
    EXPECT_FALSE(service.remove(Uuid::random()));
    EXPECT_TRUE(log.contains("Attempted to delete workspace with nil ID."));
    service.add(Workspace{.id = Uuid::random(), .name = "bad \xff"});
    EXPECT_EQ(storedRaw(), "[]");
    EXPECT_EQ(posted, 5);
    for (const auto* prefix : {"Failed to update workspace: ID", "Failed to delete workspace: ID",
                               "Error encoding workspaces: "}) {
        EXPECT_EQ(loggedStartingWith(prefix), 1) << prefix;
    }
}

TEST_F(WorkspaceServiceTest, NamesConflictOnlyWithinTheSameScope) {
    const auto work = Uuid::random();
    const auto home = Uuid::random();
    auto& service = startWorkspaces();
    const auto coding = named("Coding", work);
    service.add(coding);
    service.add(named("Mail"));
    struct Case {
        std::string name;
        std::optional<Uuid> space, editing;
        std::optional<std::string> error;
    };
    const std::string taken = WorkspaceService::kNameTaken;
    // clang-format off
    const Case cases[] = {
        {"Coding", home, {}, {}},         {"Coding", work, {}, taken},
        {"  cODING \n", work, {}, taken}, {"Coding", {}, {}, taken},
        {"mail", home, {}, taken},        {"Coding", work, coding.id, {}},
        {" \t\n", {}, {}, WorkspaceService::kNameRequired},
    };
    // clang-format on
    for (const auto& c : cases) {
        const auto result = service.validateName(c.name, c.editing, c.space);
        EXPECT_EQ(result ? std::nullopt : std::optional(result.error()), c.error) << c.name;
    }
    EXPECT_TRUE(log.contains("Workspace name 'cODING' conflicts with existing workspace 'Coding'"));
    EXPECT_EQ(service.rename(*coding.id, "  Mail ").error(), taken);
    EXPECT_EQ(service.rename(Uuid::random(), "Any").error(), "Not found");
    EXPECT_TRUE(service.rename(*coding.id, " Deep work "));
    EXPECT_EQ(service.workspace(*coding.id)->name, "Deep work");
}

TEST_F(WorkspaceServiceTest, ShortcutsAreSetClearedAndCommandDigitsWarned) {
    const std::string warning =
        "Saving workspace with potential system shortcut conflict (Cmd+Number)";
    auto& service = startWorkspaces();
    const auto workspace = named("Keys");
    service.add(workspace);
    EXPECT_TRUE(service.updateWorkspaceShortcut(*workspace.id, ShortcutCombo{18, 0x100000}));
    EXPECT_EQ(service.workspaces()[0].shortcutKeyCode, 18);
    EXPECT_TRUE(log.contains(warning));
    EXPECT_TRUE(log.contains("Found workspace at index 0"));
    EXPECT_TRUE(service.updateWorkspaceShortcut(*workspace.id, std::nullopt));
    EXPECT_EQ(service.workspaces()[0].shortcutModifiers, std::nullopt);
    EXPECT_TRUE(log.contains("Clearing shortcut for workspace 'Keys'"));
    EXPECT_FALSE(service.updateWorkspaceShortcut(Uuid::random(), std::nullopt));
    EXPECT_EQ(loggedStartingWith("Failed to update workspace shortcut: ID"), 1);
    // Command with Shift is not the system's digit shortcut.
    service.updateWorkspaceShortcut(*workspace.id, ShortcutCombo{18, 0x120000});
    EXPECT_EQ(loggedStartingWith("Updating shortcut from keyCode="), 2);
    EXPECT_EQ(loggedStartingWith(warning), 1);
}

TEST_F(WorkspaceServiceTest, MigrationsRunOnceAndTheActiveSpacePersists) {
    startWorkspaces().setActiveSpaceId(Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
    EXPECT_EQ(defaults.boolValue(WorkspaceService::kSpaceV2MigrationKey), true);
    EXPECT_EQ(defaults.boolValue(WorkspaceService::kWorkspaceContextMigrationKey), true);
    auto& again = startWorkspaces();
    EXPECT_EQ(again.activeSpaceId(), Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
    EXPECT_EQ(loggedStartingWith("V2 migration skipped: spaces are managed in spaces.json"), 1);
    again.setActiveSpaceId(std::nullopt);
    EXPECT_FALSE(defaults.object(WorkspaceService::kActiveSpaceIdKeyV2));
    defaults.set(WorkspaceService::kActiveSpaceIdKeyV2, "not a uuid");
    EXPECT_EQ(startWorkspaces().activeSpaceId(), std::nullopt);
}

TEST(RestoreGate, LetsOneRestorationRunAndOutlivesAStaleOne) {
    using namespace std::chrono_literals;
    using Entry = RestoreGate::Entry;
    ManualClock clock;
    RestoreGate gate(clock);
    struct Step {
        std::chrono::seconds advance;
        std::optional<Entry> attempt;  // none: end the running restoration
        bool heldAfter;
    };
    // clang-format off
    const Step steps[] = {
        {0s, Entry::begun, true},  {120s, Entry::busy, true},          {1s, {}, false},
        {0s, Entry::begun, true},  {121s, Entry::tookOverStale, true}, {0s, Entry::busy, true},
    };
    // clang-format on
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        clock.advance(steps[i].advance);
        if (steps[i].attempt) {
            EXPECT_EQ(gate.tryBegin(), *steps[i].attempt) << "step " << i;
        } else {
            gate.end();
        }
        EXPECT_EQ(gate.isHeld(), steps[i].heldAfter) << "step " << i;
        EXPECT_FALSE(gate.isStale()) << "step " << i;
    }
    clock.advance(121s);
    EXPECT_TRUE(gate.isStale());
    EXPECT_EQ(gate.startedAt().value() + 121s, clock.monotonicNow());
}

}  // namespace
}  // namespace corvetta::testing
