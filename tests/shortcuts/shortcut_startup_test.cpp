#include "shortcut_fixture.h"
#include "shortcuts/shortcut_json.h"

namespace corvetta {
namespace {

using testing_support::kControlOption;

constexpr std::uint32_t kCarbonControlOption = CarbonModifier::kControl | CarbonModifier::kOption;

class ShortcutStartupTest : public testing_support::ShortcutTest {
protected:
    void storeLegacy(const std::string& name, Shortcut shortcut) {
        defaults.set("Corvetta.Shortcuts." + name, *archiveShortcut(shortcut));
    }
    std::optional<HotKeyShortcut> live(const std::string& name) {
        return s().hotKeyStore.entry(name).shortcut;
    }
    std::vector<std::string> startupLog() { return logged("ShortcutStartup"); }
};

TEST_F(ShortcutStartupTest, FreshInstallationSetsItsFlagsAndTheSaveWorkspaceShortcut) {
    s().keyboardShortcuts.setEnabled(false);
    s().shortcutStartup.run();
    EXPECT_TRUE(s().keyboardShortcuts.isEnabled());
    EXPECT_EQ(startupLog(),
              (std::vector<std::string>{
                  "Set default allowAnyShortcut to true for new user",
                  "KeyboardShortcuts.isEnabled set to true",
                  "First-time migration needed",
                  "Migrating existing shortcuts...",
                  "Migration marked as completed",
                  "Migrated existing shortcuts to KeyboardShortcuts format",
                  "Migration complete.",
                  "Applying one-time Save Workspace shortcut fix",
                  "Save Workspace shortcut fix applied - reset to Control + Option + S",
              }));
    auto stored = defaults.snapshot();
    // The workspace store marks its own migrations when the services are built.
    stored.erase("workspaceSpaceMigrationCompleted_v1.0");
    stored.erase("workspaceSpaceV2MigrationCompleted");
    EXPECT_EQ(stored, (PropertyValue::Dictionary{
                          {"allowAnyShortcut", true},
                          {"shortcutMigrationCompleted", true},
                          {"SaveWorkspaceShortcutFixApplied", true},
                          {"KeyboardShortcuts_saveWorkspace",
                           PropertyValue::Dictionary{{"carbonKeyCode", 1},
                                                     {"carbonModifiers", kCarbonControlOption}}},
                      }));
}

TEST_F(ShortcutStartupTest, LegacyShortcutsAreCopiedOnceExistingOnesKept) {
    storeLegacy("topThird", {17, ModifierFlag::kCommand | ModifierFlag::kShift});
    storeLegacy("leftHalf", {0, kControlOption});
    storeLegacy("quitApp", {12, ModifierFlag::kCommand});
    const std::string garbage = "bplist00";
    defaults.set("Corvetta.Shortcuts.center", Bytes(garbage.begin(), garbage.end()));
    // The older dictionary fills in names without an entry of their own.
    const std::string dictionary =
        R"({"bottomThird": {"keyCode": 11, "modifiers": 262144},
            "topThird": {"keyCode": 1, "modifiers": 0}, "fullscreen": {"keyCode": "x"}})";
    defaults.set(ShortcutDefaults::shortcutsKey, Bytes(dictionary.begin(), dictionary.end()));
    // The user already recorded these in the live store.
    s().hotKeyStore.setShortcut(libraryShortcutName("quitApp"), HotKeyShortcut{12, 0x100});
    s().hotKeyStore.setShortcut(libraryShortcutName("leftHalf"), std::nullopt);
    // Already done once before: the fix stays out of this test.
    defaults.set("SaveWorkspaceShortcutFixApplied", true);

    s().shortcutStartup.run();
    EXPECT_EQ(live("topThird"),
              (HotKeyShortcut{17, CarbonModifier::kCommand | CarbonModifier::kShift}));
    EXPECT_EQ(live("bottomThird"), (HotKeyShortcut{11, CarbonModifier::kControl}));
    EXPECT_EQ(live("quitApp"), (HotKeyShortcut{12, CarbonModifier::kCommand}));
    EXPECT_EQ(s().hotKeyStore.entry("leftHalf").kind, HotKeyStore::EntryKind::cleared);
    EXPECT_EQ(s().hotKeyStore.entry("center").kind, HotKeyStore::EntryKind::absent);
    const auto messages = startupLog();
    EXPECT_EQ(std::count(messages.begin(), messages.end(),
                         "Using existing shortcut from KeyboardShortcuts"),
              2);
    EXPECT_TRUE(wasLogged("Failed to unarchive shortcut data for 'center'"));
    EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [](const std::string& m) {
        return m.rfind(
                   "Ignoring unreadable legacy shortcut for 'fullscreen': Malformed value for "
                   "key \"keyCode\"",
                   0) == 0;
    }));

    // A second start reads the flags and writes nothing.
    const auto before = defaults.snapshot();
    logbook.clear();
    restart();
    s().shortcutStartup.run();
    EXPECT_EQ(defaults.snapshot(), before);
    EXPECT_EQ(startupLog(), (std::vector<std::string>{
                                "KeyboardShortcuts.isEnabled set to true",
                                "Migration already completed, using existing values",
                                "Save Workspace shortcut fix already applied",
                            }));
}

TEST_F(ShortcutStartupTest, SaveWorkspaceFixOverridesOnceThenRespectsTheUser) {
    defaults.set("shortcutMigrationCompleted", true);
    defaults.set("allowAnyShortcut", false);
    s().shortcutBridge.setShortcut("saveWorkspace", Shortcut{1, ModifierFlag::kCommand});
    s().shortcutStartup.run();
    EXPECT_EQ(s().shortcutBridge.shortcut("saveWorkspace"), (Shortcut{1, kControlOption}));
    EXPECT_EQ(defaults.boolValue("allowAnyShortcut"), false);

    s().shortcutBridge.setShortcut("saveWorkspace", Shortcut{1, ModifierFlag::kCommand});
    restart();
    s().shortcutStartup.run();
    EXPECT_EQ(s().shortcutBridge.shortcut("saveWorkspace"), (Shortcut{1, ModifierFlag::kCommand}));
}

}  // namespace
}  // namespace corvetta
