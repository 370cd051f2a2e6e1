// The end-to-end fixture on its own, without the program: the desktop it builds must be the one the
// tests believe they run on.

#include <algorithm>
#include <stdexcept>

#include <X11/keysym.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "e2e_desktop.h"

namespace corvetta::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

TEST_F(E2eDesktop, TheWindowManagerFramesAClientWhereItAsked) {
    startDesktop({{0, 0, 1280, 800}, {1280, 0, 1280, 800}});
    const uint32_t first = startClient({"--title", "First", "--geometry", "400x300+200+150"});
    const uint32_t second = startClient({"--title", "Second", "--geometry", "500x200+1400+100"});
    EXPECT_THAT(x().managedWindows(), Contains(first));
    // Openbox's frame: 1 pixel on the sides, a 20 pixel title bar, a 5 pixel handle.
    EXPECT_EQ(frameOf(first), (XFrame{200, 150, 402, 325}));
    EXPECT_EQ(frameOf(second), (XFrame{1400, 100, 502, 225}));

    // The fixture's activation and key presses reach the server.
    ASSERT_TRUE(x().activate(first));
    EXPECT_TRUE(x().pressKeys({XK_Control_L, XK_Alt_L, XK_Super_L, XK_Shift_L, XK_Left, XK_a}));
    EXPECT_FALSE(x().pressKeys({0x00fffffe}));  // a symbol no key carries

    killClient(first);
    EXPECT_THAT(x().managedWindows(), Not(Contains(first)));
    EXPECT_FALSE(x().outerFrame(first));
}

TEST(VirtualDisplay, RefusesNoMonitorsAndStopsItsServerWhenDestroyed) {
    EXPECT_THROW(VirtualDisplay({.monitors = {}}), std::invalid_argument);
    std::string name;
    {
        VirtualDisplay display;
        name = display.displayName();
        EXPECT_NO_THROW(XProbe{name});
    }
    EXPECT_THROW(XProbe{name}, std::runtime_error);
}

}  // namespace
}  // namespace corvetta::testing
