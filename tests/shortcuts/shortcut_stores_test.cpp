#include "shortcut_fixture.h"
#include "shortcuts/shortcut_json.h"

namespace corvetta {
namespace {

using testing_support::kControlOption;

constexpr std::uint32_t kCarbonControlOption = CarbonModifier::kControl | CarbonModifier::kOption;

class ShortcutStoresTest : public testing_support::ShortcutTest {
protected:
    HotKeyStore& store() { return s().hotKeyStore; }
    ShortcutManager& legacy() { return s().shortcutManager; }
    std::vector<ObserverToken> tokens;
};

TEST_F(ShortcutStoresTest, HotKeyStoreKeepsTheLibraryFormAndAnnouncesChanges) {
    const auto changed = record(HotKeyStore::kDidChangeNotification, tokens);
    const auto leftHalf = libraryShortcutName("leftHalf");
    const auto topThird = libraryShortcutName("topThird");

    // Nothing stored: the name's own default answers, or nothing.
    EXPECT_EQ(store().shortcut(leftHalf), (HotKeyShortcut{123, kCarbonControlOption}));
    EXPECT_FALSE(store().shortcut(topThird).has_value());

    store().setShortcut(topThird, HotKeyShortcut{17, CarbonModifier::kCommand});
    store().setShortcut(topThird, HotKeyShortcut{17, CarbonModifier::kCommand});
    EXPECT_EQ(defaults.object("KeyboardShortcuts_topThird"),
              PropertyValue(
                  PropertyValue::Dictionary{{"carbonKeyCode", 17}, {"carbonModifiers", 0x100}}));
    EXPECT_EQ(store().shortcut(topThird), (HotKeyShortcut{17, CarbonModifier::kCommand}));

    // Clearing keeps a name's own default from coming back; other names just lose their entry.
    store().setShortcut(leftHalf, std::nullopt);
    EXPECT_EQ(defaults.object("KeyboardShortcuts_leftHalf"), PropertyValue(false));
    EXPECT_FALSE(store().shortcut(leftHalf).has_value());
    store().setShortcut(topThird, std::nullopt);
    EXPECT_FALSE(defaults.object("KeyboardShortcuts_topThird").has_value());

    // One announcement per actual change.
    EXPECT_EQ(*changed, (std::vector<std::string>{"topThird", "leftHalf", "topThird"}));
}

TEST_F(ShortcutStoresTest, UnreadableHotKeyEntriesAreIgnoredAndReported) {
    const std::vector<PropertyValue> damaged = {
        PropertyValue("⌃⌥←"),
        PropertyValue(true),
        PropertyValue(PropertyValue::Dictionary{{"carbonKeyCode", "x"}, {"carbonModifiers", 0}}),
        PropertyValue(PropertyValue::Dictionary{{"carbonKeyCode", -1}, {"carbonModifiers", 0}}),
        PropertyValue(PropertyValue::Dictionary{{"carbonKeyCode", 123}}),
    };
    for (const auto& value : damaged) {
        defaults.set("KeyboardShortcuts_leftHalf", value);
        EXPECT_EQ(store().entry("leftHalf").kind, HotKeyStore::EntryKind::unreadable);
        EXPECT_FALSE(store().shortcut(libraryShortcutName("leftHalf")).has_value());
    }
    EXPECT_TRUE(
        wasLogged("Ignoring unreadable shortcut stored under 'KeyboardShortcuts_leftHalf'"));
}

TEST_F(ShortcutStoresTest, LegacyStoreArchivesAnnouncesAndLogsEachOperation) {
    const auto changed = record(MASShortcutManager::kChangedNotification, tokens);
    legacy().setShortcut("topThird", Shortcut{17, kControlOption});
    ASSERT_TRUE(defaults.data("Corvetta.Shortcuts.topThird").has_value());
    EXPECT_EQ(unarchiveShortcut(*defaults.data("Corvetta.Shortcuts.topThird")),
              (Shortcut{17, kControlOption}));
    EXPECT_EQ(legacy().shortcut("topThird"), (Shortcut{17, kControlOption}));

    legacy().setShortcut("center", Shortcut{-3, 0});  // no key: refused, yet announced
    legacy().setShortcut("topThird", std::nullopt);
    legacy().resetShortcutToDefault("leftHalf");
    legacy().resetShortcutToDefault("topHalf");

    EXPECT_FALSE(defaults.object("Corvetta.Shortcuts.topThird").has_value());
    EXPECT_FALSE(defaults.object("Corvetta.Shortcuts.center").has_value());
    EXPECT_EQ(legacy().shortcut("leftHalf"), (Shortcut{123, kControlOption}));
    EXPECT_EQ(*changed,
              (std::vector<std::string>{"topThird", "center", "topThird", "leftHalf", "topHalf"}));
    EXPECT_EQ(logged("MASShortcutManager"),
              (std::vector<std::string>{
                  "Setting shortcut for 'topThird' - Key code: 17, Modifiers: 786432",
                  "Setting shortcut for 'center' - Key code: -3, Modifiers: 0",
                  "Failed to archive shortcut data for 'center'",
                  "Removing shortcut for 'topThird'",
                  "Resetting shortcut for 'leftHalf' to default - Key code: 123, Modifiers: 786432",
                  "No default shortcut for 'topHalf', removing shortcut",
              }));
}

TEST_F(ShortcutStoresTest, LegacyDefaultsExistOnlyForTheTwoHalves) {
    EXPECT_EQ(s().masShortcutManager.defaultShortcuts(),
              (std::map<std::string, Shortcut>{{"leftHalf", {123, kControlOption}},
                                               {"rightHalf", {124, kControlOption}}}));
    legacy().setShortcut("saveWorkspace", Shortcut{1, ModifierFlag::kCommand});
    legacy().resetAllShortcutsToDefaults();
    for (const auto& row : shortcutNameTable()) {
        const std::string name(row.name);
        EXPECT_EQ(defaults.object("Corvetta.Shortcuts." + name).has_value(),
                  name == "leftHalf" || name == "rightHalf")
            << name;
    }
}

TEST_F(ShortcutStoresTest, DamagedLegacyDataReadsAsNoneAndIsReported) {
    const std::string garbage = "\x04\x0bstreamtyped";
    defaults.set("Corvetta.Shortcuts.leftHalf", Bytes(garbage.begin(), garbage.end()));
    defaults.set("Corvetta.Shortcuts.rightHalf", "not data");
    EXPECT_FALSE(legacy().shortcut("leftHalf").has_value());
    EXPECT_FALSE(legacy().shortcut("rightHalf").has_value());
    EXPECT_EQ(logged("MASShortcutManager"),
              (std::vector<std::string>{"Failed to unarchive shortcut data for 'leftHalf'",
                                        "Failed to unarchive shortcut data for 'rightHalf'"}));
}

}  // namespace
}  // namespace corvetta
