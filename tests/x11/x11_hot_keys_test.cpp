#include "platform/x11/x11_hot_keys.h"

#include <vector>

#include <X11/keysym.h>

#include "platform/x11/x11_key_codes.h"
#include "x11_test_support.h"

namespace corvetta {
namespace {

constexpr std::uint32_t kLeftArrow = 123;
constexpr std::uint32_t kReturn = 36;
constexpr std::uint32_t kControlOption = CarbonModifier::kControl | CarbonModifier::kOption;

TEST(X11KeyCodes, MapsVirtualKeysAndModifiersOfTheUsLayout) {
    EXPECT_EQ(keySymbolForVirtualKeyCode(0), XK_a);
    EXPECT_EQ(keySymbolForVirtualKeyCode(29), XK_0);
    EXPECT_EQ(keySymbolForVirtualKeyCode(kLeftArrow), XK_Left);
    EXPECT_EQ(keySymbolForVirtualKeyCode(126), XK_Up);
    EXPECT_EQ(keySymbolForVirtualKeyCode(kReturn), XK_Return);
    EXPECT_EQ(keySymbolForVirtualKeyCode(49), XK_space);
    EXPECT_EQ(keySymbolForVirtualKeyCode(53), XK_Escape);
    EXPECT_EQ(keySymbolForVirtualKeyCode(122), XK_F1);
    EXPECT_EQ(keySymbolForVirtualKeyCode(42), XK_backslash);
    EXPECT_EQ(keySymbolForVirtualKeyCode(10), std::nullopt);
    EXPECT_EQ(keySymbolForVirtualKeyCode(200), std::nullopt);

    const auto all = CarbonModifier::kShift | kControlOption | CarbonModifier::kCommand;
    EXPECT_EQ(x11ModifiersFromCarbon(all), X11Modifier::kShift | X11Modifier::kControl |
                                               X11Modifier::kMod1 | X11Modifier::kMod4);
    EXPECT_EQ(x11ModifiersFromCarbon(CarbonModifier::kCommand), X11Modifier::kMod1);
    // Lock, Num Lock (Mod2) and button bits say nothing of the four modifiers.
    EXPECT_EQ(eventFlagsFromX11Modifiers(X11Modifier::kMod4 | X11Modifier::kLock | 0x10 | 0x100),
              ModifierFlag::kOption);
    EXPECT_EQ(eventFlagsFromX11Modifiers(x11ModifiersFromCarbon(all)),
              eventFlagsFromCarbonModifiers(all));
}

class X11HotKeysTest : public testing::X11InputTest {
protected:
    X11HotKeysTest() {
        handler_ = hotKeys_.installHotKeyHandler(
            [this](const HotKeyEvent& event) { events_.push_back(event); });
    }
    void deliver() {
        testing::X11InputTest::deliver(
            [this](const xcb_generic_event_t& event) { return hotKeys_.handleEvent(event); });
    }
    std::vector<HotKeyEvent> takeEvents() { return std::exchange(events_, {}); }

    X11HotKeys hotKeys_{observed_, root(), queue_};
    std::vector<HotKeyEvent> events_;
    Registration handler_;
};

const std::vector<HotKeyEvent> kPressedAndReleased7 = {{HotKeyEventKind::pressed, 7},
                                                       {HotKeyEventKind::released, 7}};

TEST_F(X11HotKeysTest, APressReachesTheHandlerWhateverLockIsLit) {
    ASSERT_TRUE(hotKeys_.registerHotKey(7, {kLeftArrow, kControlOption}).has_value());
    for (const xcb_keysym_t lock : {XK_VoidSymbol, XK_Caps_Lock, XK_Num_Lock}) {
        SCOPED_TRACE(lock);
        if (lock != XK_VoidSymbol) {
            driver_.type({lock});
        }
        driver_.type({XK_Control_L, XK_Super_L, XK_Left});
        deliver();
        EXPECT_EQ(takeEvents(), kPressedAndReleased7);
        if (lock != XK_VoidSymbol) {
            driver_.type({lock});
        }
    }
    // Other modifiers, or the key alone, are not the hot key.
    driver_.type({XK_Control_L, XK_Shift_L, XK_Super_L, XK_Left});
    driver_.type({XK_Left});
    deliver();
    EXPECT_TRUE(takeEvents().empty());
}

TEST_F(X11HotKeysTest, TheReleaseArrivesAfterTheModifiersWereLetGo) {
    ASSERT_TRUE(hotKeys_.registerHotKey(7, {kLeftArrow, kControlOption}).has_value());
    driver_.press(XK_Control_L);
    driver_.press(XK_Super_L);
    driver_.press(XK_Left);
    driver_.release(XK_Super_L);
    driver_.release(XK_Control_L);
    deliver();
    EXPECT_EQ(takeEvents(), std::vector<HotKeyEvent>({{HotKeyEventKind::pressed, 7}}));
    driver_.release(XK_Left);
    deliver();
    EXPECT_EQ(takeEvents(), std::vector<HotKeyEvent>({{HotKeyEventKind::released, 7}}));
}

TEST_F(X11HotKeysTest, ACombinationAnotherClientHoldsFailsAloneAndLeavesNoGrab) {
    // The other client holds the combination only with Caps Lock lit: one of the grabs fails.
    const auto left = driver_.keyCode(XK_Left);
    const std::uint16_t controlSuper = X11Modifier::kControl | X11Modifier::kMod4;
    auto driverGrabs = [&](std::uint16_t state) {
        return xcb_request_check(driver_.raw(),
                                 xcb_grab_key_checked(driver_.raw(), 0, driver_.root(), state, left,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)) ==
               nullptr;
    };
    ASSERT_TRUE(driverGrabs(controlSuper | X11Modifier::kLock));

    const auto taken = hotKeys_.registerHotKey(7, {kLeftArrow, kControlOption});
    ASSERT_FALSE(taken.has_value());
    EXPECT_EQ(taken.error(), HotKeyRegistrationError::combinationTaken);
    EXPECT_TRUE(hotKeys_.registerHotKey(8, {kReturn, kControlOption}).has_value());

    xcb_ungrab_key(driver_.raw(), left, driver_.root(), controlSuper | X11Modifier::kLock);
    driver_.type({XK_Control_L, XK_Super_L, XK_Left});
    driver_.type({XK_Control_L, XK_Super_L, XK_Return});
    deliver();
    EXPECT_EQ(takeEvents(), std::vector<HotKeyEvent>(
                                {{HotKeyEventKind::pressed, 8}, {HotKeyEventKind::released, 8}}));
    // Nothing of the failed registration is left: the other client can take every variant now.
    EXPECT_TRUE(driverGrabs(controlSuper));
}

TEST_F(X11HotKeysTest, IdsAndCombinationsAreNotSharedAndUnregisteringStopsDelivery) {
    ASSERT_TRUE(hotKeys_.registerHotKey(7, {kLeftArrow, kControlOption}).has_value());
    EXPECT_EQ(hotKeys_.registerHotKey(7, {kReturn, kControlOption}).error(),
              HotKeyRegistrationError::idInUse);
    EXPECT_EQ(hotKeys_.registerHotKey(9, {kLeftArrow, kControlOption}).error(),
              HotKeyRegistrationError::combinationTaken);

    hotKeys_.unregisterHotKey(7);
    hotKeys_.unregisterHotKey(42);
    driver_.type({XK_Control_L, XK_Super_L, XK_Left});
    deliver();
    EXPECT_TRUE(takeEvents().empty());
    // The combination is free again, for this client and others.
    EXPECT_TRUE(hotKeys_.registerHotKey(9, {kLeftArrow, kControlOption}).has_value());

    // A handler dropped before the press is delivered hears nothing of it.
    driver_.type({XK_Control_L, XK_Super_L, XK_Left});
    handler_.reset();
    deliver();
    EXPECT_TRUE(takeEvents().empty());
}

TEST_F(X11HotKeysTest, AKeyMappedLaterIsGrabbedWhenTheMappingChanges) {
    // F20 is on no key of the virtual keyboard: the registration waits for one.
    ASSERT_TRUE(hotKeys_.registerHotKey(7, {90, CarbonModifier::kControl}).has_value());

    const xcb_keysym_t symbols[] = {XK_F20, XK_F20};
    xcb_change_keyboard_mapping(driver_.raw(), 1, xcb_get_setup(driver_.raw())->max_keycode, 2,
                                symbols);
    deliver();
    driver_.forgetKeyCodes();

    driver_.type({XK_Control_L, XK_F20});
    deliver();
    EXPECT_EQ(takeEvents(), kPressedAndReleased7);
}

}  // namespace
}  // namespace corvetta
