#include "shortcut_fixture.h"

namespace corvetta {
namespace {

using testing_support::kControlOption;

constexpr std::uint16_t kLeftArrow = 123;
constexpr std::uint16_t kRightArrow = 124;

class HotKeysTest : public testing_support::ShortcutTest {
protected:
    void registerCounting(const std::string& name) {
        s().shortcutBridge.registerShortcut(name, [this, name] { presses.push_back(name); });
    }

    std::vector<std::string> presses;
};

TEST_F(HotKeysTest, PressesReachTheNamesHandlerAndEachCombinationGetsTheNextId) {
    for (const auto& name : {"leftHalf", "rightHalf", "topThird"}) {
        registerCounting(name);
    }
    // topThird has no combination and is not registered, but keeps its handler for later.
    EXPECT_EQ(system().registeredHotKeys(),
              (std::map<HotKeyId, HotKeyCombination>{{1, {kLeftArrow, 0x1800}},
                                                     {2, {kRightArrow, 0x1800}}}));
    EXPECT_FALSE(s().shortcutBridge.isShortcutRegistered("topThird"));
    // The arrow keys carry the numeric-pad and function bits; hot keys ignore them.
    EXPECT_TRUE(system().pressHotKey(kLeftArrow, kControlOption | 0xA00000));
    EXPECT_TRUE(system().pressHotKey(kRightArrow, kControlOption));
    EXPECT_FALSE(system().pressHotKey(kRightArrow, ModifierFlag::kControl));

    s().shortcutBridge.setShortcut("topThird", Shortcut{17, kControlOption});
    s().shortcutBridge.setShortcut("leftHalf", Shortcut{0, ModifierFlag::kCommand});
    EXPECT_EQ(
        system().registeredHotKeys(),
        (std::map<HotKeyId, HotKeyCombination>{
            {2, {kRightArrow, 0x1800}}, {3, {17, 0x1800}}, {4, {0, CarbonModifier::kCommand}}}));
    EXPECT_TRUE(system().pressHotKey(17, kControlOption));
    EXPECT_FALSE(system().pressHotKey(kLeftArrow, kControlOption));
    EXPECT_TRUE(system().pressHotKey(0, ModifierFlag::kCommand));
    EXPECT_EQ(presses, (std::vector<std::string>{"leftHalf", "rightHalf", "topThird", "leftHalf"}));
    EXPECT_EQ(system().installedHandlerCount(), 1u);
}

TEST_F(HotKeysTest, TakenCombinationIsLoggedAndTheOthersStillWork) {
    system().reserveHotKey(kLeftArrow, CarbonModifier::kControl | CarbonModifier::kOption);
    for (const auto& name : {"leftHalf", "rightHalf"}) {
        registerCounting(name);
    }
    EXPECT_TRUE(wasLogged(
        "Failed to register hot key for 'leftHalf' (⌃⌥←): The key combination is already in use"));
    EXPECT_FALSE(s().shortcutBridge.isShortcutRegistered("leftHalf"));
    EXPECT_FALSE(system().pressHotKey(kLeftArrow, kControlOption));
    EXPECT_TRUE(system().pressHotKey(kRightArrow, kControlOption));
    EXPECT_EQ(presses, (std::vector<std::string>{"rightHalf"}));

    // Reported while it is wanted and enabled, for the status to show.
    using Refused = std::vector<std::pair<std::string, HotKeyShortcut>>;
    EXPECT_EQ(
        s().keyboardShortcuts.notRegistered(),
        (Refused{{"leftHalf", {kLeftArrow, CarbonModifier::kControl | CarbonModifier::kOption}}}));
    s().keyboardShortcuts.setEnabled(false);
    EXPECT_TRUE(s().keyboardShortcuts.notRegistered().empty());
    s().keyboardShortcuts.setEnabled(true);
    s().shortcutBridge.unregisterShortcut("leftHalf");
    EXPECT_TRUE(s().keyboardShortcuts.notRegistered().empty());
}

TEST_F(HotKeysTest, UnregisteringAndDisablingStopDispatch) {
    // A handler may unregister its own name while it runs.
    s().shortcutBridge.registerShortcut("leftHalf", [this] {
        presses.push_back("leftHalf");
        s().shortcutBridge.unregisterShortcut("leftHalf");
    });
    registerCounting("rightHalf");
    EXPECT_TRUE(system().pressHotKey(kLeftArrow, kControlOption));
    EXPECT_FALSE(system().pressHotKey(kLeftArrow, kControlOption));

    s().keyboardShortcuts.setEnabled(false);
    EXPECT_TRUE(system().registeredHotKeys().empty());
    s().keyboardShortcuts.setEnabled(true);
    EXPECT_TRUE(system().pressHotKey(kRightArrow, kControlOption));

    logbook.clear();
    s().shortcutBridge.unregisterAllShortcuts();
    EXPECT_TRUE(system().registeredHotKeys().empty());
    EXPECT_FALSE(system().pressHotKey(kRightArrow, kControlOption));
    EXPECT_EQ(presses, (std::vector<std::string>{"leftHalf", "rightHalf"}));
    EXPECT_EQ(
        logged("KeyboardShortcutsBridge"),
        (std::vector<std::string>{"Unregistering all shortcuts", "All shortcuts unregistered"}));
}

TEST_F(HotKeysTest, LegacyManagerRegistersThroughTheSameLayer) {
    auto& manager = s().shortcutManager;
    manager.registerShortcut("leftHalf", [this] { presses.push_back("legacy leftHalf"); });
    manager.registerShortcut("topThird", [] {});  // nothing stored, no default
    EXPECT_TRUE(system().pressHotKey(kLeftArrow, kControlOption));
    manager.unregisterAllShortcuts();
    EXPECT_FALSE(system().pressHotKey(kLeftArrow, kControlOption));
    EXPECT_EQ(presses, (std::vector<std::string>{"legacy leftHalf"}));
    EXPECT_EQ(logged("MASShortcutManager"),
              (std::vector<std::string>{
                  "Registering shortcut for 'leftHalf' - Key code: 123, Modifiers: 786432",
                  "No shortcut for 'topThird', not registering",
                  "Unregistering shortcut for 'leftHalf'",
              }));
}

}  // namespace
}  // namespace corvetta
