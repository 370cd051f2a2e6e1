#include "shortcut_fixture.h"

namespace corvetta {
namespace {

using testing_support::kControlOption;

class BridgeTest : public testing_support::ShortcutTest {
protected:
    KeyboardShortcutsBridge& bridge() { return s().shortcutBridge; }
    std::vector<ObserverToken> tokens;
};

TEST_F(BridgeTest, LookupPrefersTheLiveStoreThenFallsBack) {
    const Shortcut custom{17, ModifierFlag::kCommand};
    struct Row {
        std::string name;
        std::function<void()> arrange;
        std::optional<Shortcut> expected;
        bool fallback;
    };
    const std::vector<Row> rows = {
        // A fresh installation answers the name's own default, Shift included.
        {"quitApp", [] {}, Shortcut{12, kControlOption | ModifierFlag::kShift}, false},
        {"topThird", [] {}, std::nullopt, false},
        {"leftHalf", [&] { bridge().setShortcut("leftHalf", custom); }, custom, false},
        // Cleared in the live store: only this table's default is left.
        {"rightHalf", [&] { bridge().setShortcut("rightHalf", std::nullopt); },
         Shortcut{124, kControlOption}, true},
        {"addSpace", [&] { bridge().setShortcut("addSpace", std::nullopt); }, std::nullopt, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        logbook.clear();
        row.arrange();
        EXPECT_EQ(bridge().shortcut(row.name), row.expected);
        EXPECT_EQ(wasLogged("Using fallback shortcut for " + row.name), row.fallback);
    }
}

TEST_F(BridgeTest, SetAndClearLogReadBackAndDoNotEcho) {
    const auto changed = record(HotKeyStore::kDidChangeNotification, tokens);
    EXPECT_TRUE(bridge().setShortcut("center", Shortcut{8, kControlOption | 0x800000}));
    // Only the four modifiers are kept.
    EXPECT_EQ(bridge().shortcut("center"), (Shortcut{8, kControlOption}));
    EXPECT_TRUE(bridge().setShortcut("center", std::nullopt));
    EXPECT_FALSE(bridge().setShortcut("center", Shortcut{-1, kControlOption}));
    EXPECT_EQ(*changed, (std::vector<std::string>{"center", "center"}));
    EXPECT_EQ(logged("KeyboardShortcutsBridge"),
              (std::vector<std::string>{
                  "Updated shortcut in KeyboardShortcuts library",
                  "Clearing shortcut in KeyboardShortcuts library",
                  "Set shortcut to nil in KeyboardShortcuts library",
                  "Verified shortcut was cleared in KeyboardShortcuts",
                  "Failed to set shortcut in KeyboardShortcuts",
              }));
    EXPECT_FALSE(bridge().isUpdatingShortcut());

    // A change made past the bridge is heard.
    s().keyboardShortcuts.setShortcut(libraryShortcutName("center"), HotKeyShortcut{8, 0x100});
    EXPECT_EQ(logged("KeyboardShortcutsBridge").back(),
              "Shortcut for 'center' changed outside the bridge");
}

TEST_F(BridgeTest, ClearThatDoesNotStickIsReported) {
    s().hotKeyStore.setShortcut(libraryShortcutName("center"), HotKeyShortcut{8, 0x100});
    // Something puts the combination straight back whenever it changes.
    tokens.push_back(notifications.addObserver(HotKeyStore::kDidChangeNotification, [&](auto&) {
        s().hotKeyStore.setShortcut(libraryShortcutName("center"), HotKeyShortcut{8, 0x100});
    }));
    EXPECT_FALSE(bridge().setShortcut("center", std::nullopt));
    EXPECT_TRUE(wasLogged("Failed to clear shortcut in KeyboardShortcuts"));
}

TEST_F(BridgeTest, ResetAllWritesTheBridgeTableAndLeavesOtherNamesAlone) {
    // On a fresh installation the names the bridge table lacks keep their own defaults.
    bridge().resetAllShortcuts();
    EXPECT_TRUE(wasLogged("Resetting all shortcuts to defaults"));
    for (const auto& [name, expected] :
         std::vector<std::pair<std::string, std::optional<Shortcut>>>{
             {"newLayout", Shortcut{37, kControlOption}},
             {"addSpace", Shortcut{45, kControlOption}},
             {"cycleWorkspaces", std::nullopt},
             {"cycleSpaces", std::nullopt},
             {"commandPalette", std::nullopt}}) {
        EXPECT_EQ(bridge().shortcut(name), expected) << name;
    }

    for (const auto& name : {"quitApp", "leftHalf", "topThird", "applyLayoutFull", "newLayout"}) {
        bridge().setShortcut(name, Shortcut{31, ModifierFlag::kCommand});
    }
    bridge().resetAllShortcuts();
    // Control+Option+Q after a reset, where a fresh installation answers the Shift variant.
    EXPECT_EQ(bridge().shortcut("quitApp"), (Shortcut{12, kControlOption}));
    EXPECT_EQ(bridge().shortcut("leftHalf"), (Shortcut{123, kControlOption}));
    EXPECT_FALSE(bridge().shortcut("topThird").has_value());
    EXPECT_FALSE(bridge().shortcut("applyLayoutFull").has_value());
    // Not the bridge's to reset: the user's own combination stays.
    EXPECT_EQ(bridge().shortcut("newLayout"), (Shortcut{31, ModifierFlag::kCommand}));
}

TEST_F(BridgeTest, LegacyChangesFlowIntoTheLiveStore) {
    s().shortcutManager.setShortcut("bottomThird", Shortcut{11, kControlOption});
    EXPECT_EQ(s().hotKeyStore.entry("bottomThird").shortcut,
              (HotKeyShortcut{11, CarbonModifier::kControl | CarbonModifier::kOption}));
    s().shortcutManager.setShortcut("bottomThird", std::nullopt);
    EXPECT_EQ(s().hotKeyStore.entry("bottomThird").kind, HotKeyStore::EntryKind::absent);
    // A refused legacy write is announced but leaves the live combination alone.
    bridge().setShortcut("center", Shortcut{8, kControlOption});
    s().shortcutManager.setShortcut("center", Shortcut{-3, 0});
    EXPECT_EQ(bridge().shortcut("center"), (Shortcut{8, kControlOption}));
    // The bridge's own writes are not mistaken for outside changes.
    for (const auto& message : logged("KeyboardShortcutsBridge")) {
        EXPECT_EQ(message.find("changed outside the bridge"), std::string::npos) << message;
    }
}

}  // namespace
}  // namespace corvetta
