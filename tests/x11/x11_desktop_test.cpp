#include "platform/x11/x11_desktop.h"

#include <vector>

#include <X11/keysym.h>
#include <gtest/gtest.h>

#include "platform/x11/x11_key_codes.h"
#include "x11_test_support.h"

namespace corvetta {
namespace {

TEST(X11DesktopTest, ComposesEveryPortOverOneDisplay) {
    testing::VirtualDisplay display({.monitors = {{0, 0, 1280, 800}, {1280, 0, 1024, 768}}});
    ManualClock clock;
    ManualQueue queue(clock);
    std::vector<std::string> reported;
    auto desktop = X11Desktop::open(
        display.displayName(), queue, [&](const std::string& line) { reported.push_back(line); },
        "com.corvetta.Corvetta.debug");
    ASSERT_TRUE(desktop) << desktop.error();
    auto& ports = **desktop;
    EXPECT_EQ(ports.kind(), "x11");
    EXPECT_EQ(ports.applicationsPort().currentApplication().bundleIdentifier,
              "com.corvetta.Corvetta.debug");
    EXPECT_EQ(ports.screenPort().screens().size(), 2u);
    EXPECT_TRUE(ports.accessibilityPort().isProcessTrusted());
    EXPECT_EQ(ports.applicationsPort().runningApplications().size(), 1u) << "only this program";

    bool synchronized = false;
    ports.synchronize([&] { synchronized = true; });
    EXPECT_FALSE(synchronized) << "never before the call returns";
    queue.runUntilIdle();
    EXPECT_TRUE(synchronized);

    // No dialogs: the text is reported and the alert is dismissed on the next turn.
    const auto reportedBefore = reported.size();
    std::optional<std::size_t> answer;
    ports.alertPort().showAlert(
        {"Permission", "Corvetta needs access.", {"Open", "Cancel", "Quit"}},
        [&](std::size_t index) { answer = index; });
    EXPECT_FALSE(answer);
    queue.runUntilIdle();
    EXPECT_EQ(answer, 1u);
    ASSERT_EQ(reported.size(), reportedBefore + 1);
    EXPECT_NE(reported.back().find("Corvetta needs access."), std::string::npos);
    EXPECT_FALSE(ports.alertPort().openAccessibilitySettings());
}

// The input ports share the program's connection: a reply one of them waits for brings along the
// events that came before it, and those must not wait for the socket's next word.
TEST(X11DesktopTest, EventsReadWhileAnInputPortWaitedAreStillHandedOut) {
    testing::VirtualDisplay display;
    ManualClock clock;
    ManualQueue queue(clock);
    auto desktop = X11Desktop::open(display.displayName(), queue, [](const std::string&) {});
    ASSERT_TRUE(desktop) << desktop.error();
    auto& ports = **desktop;
    constexpr std::uint32_t kLeftArrow = 123;
    ASSERT_TRUE(
        ports.hotKeyPort()
            .registerHotKey(1, {kLeftArrow, CarbonModifier::kControl | CarbonModifier::kOption})
            .has_value());
    std::vector<HotKeyEvent> events;
    auto handler = ports.hotKeyPort().installHotKeyHandler(
        [&](const HotKeyEvent& event) { events.push_back(event); });
    queue.runUntilIdle();

    testing::FakeClient driver(display.displayName());
    for (const xcb_keysym_t symbol : {XK_Control_L, XK_Super_L, XK_Left}) {
        driver.press(symbol);
    }
    // Once the driver hears back, the server has sent the press on to the program.
    driver.sync();

    (void)ports.pointerPort().mouseLocation();
    queue.runUntilIdle();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].kind, HotKeyEventKind::pressed);
}

TEST(X11DesktopTest, ADisplayThatCannotBeOpenedIsAnError) {
    ManualClock clock;
    ManualQueue queue(clock);
    auto desktop = X11Desktop::open(":4097", queue);
    ASSERT_FALSE(desktop);
    EXPECT_NE(desktop.error().find("cannot connect to the X display :4097"), std::string::npos);
}

}  // namespace
}  // namespace corvetta
