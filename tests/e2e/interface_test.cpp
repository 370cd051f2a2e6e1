// The interface on a real X server with a real tray host and a compositor: the palette opened by
// its shortcut, a toast after a restore, and the layout lock's pill after a tiled window drifted.

#include <memory>
#include <string>

#include <X11/keysym.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "e2e_desktop.h"
#include "support/running_process.h"

namespace corvetta::testing {
namespace {

using ::testing::HasSubstr;

class InterfaceOnX11 : public E2eDesktop {
protected:
    // A tray host and a compositor, as a user's panel and desktop provide them.
    void startPanel() {
        tray_ = std::make_unique<RunningProcess>(
            std::vector<std::string>{"trayer", "--edge", "top", "--align", "right", "--widthtype",
                                     "request", "--height", "24"},
            environment());
        compositor_ =
            std::make_unique<RunningProcess>(std::vector<std::string>{"xcompmgr"}, environment());
    }

    // Types the letters one key press each, as a user would.
    void type(const std::string& text) {
        for (const char c : text) {
            ASSERT_TRUE(x().pressKeys({static_cast<uint32_t>(c)}));
        }
    }

private:
    std::unique_ptr<RunningProcess> tray_;
    std::unique_ptr<RunningProcess> compositor_;
};

TEST_F(InterfaceOnX11, ThePaletteOpensFromItsShortcutFiltersAndAppliesALayout) {
    startDesktop();
    startPanel();
    startCorvetta();
    ASSERT_TRUE(corvettaSaid("Status item shown", std::chrono::seconds(10)));
    const uint32_t first = startClient({"--title", "first", "--geometry", "400x300+100+100"});
    const uint32_t second = startClient({"--title", "second", "--geometry", "400x300+300+200"});
    ASSERT_TRUE(x().activate(second));
    // ⌃⌥P: Option is Super on X11.
    ASSERT_THAT(
        request("set_shortcut", R"({"name":"commandPalette","keyCode":35,"modifiers":786432})"),
        HasSubstr(R"("registered":true)"));
    sync();

    ASSERT_TRUE(x().pressKeys({XK_Control_L, XK_Super_L, XK_p}));
    const auto palette = x().waitForWindowTitled("Command Palette");
    ASSERT_TRUE(palette) << "the palette did not open";
    ASSERT_TRUE(corvettaSaid("Command palette: show requested"));
    type("halv");
    ASSERT_TRUE(x().pressKeys({XK_Return}));
    ASSERT_TRUE(corvettaSaid("Layout Lock active: 2 tiled windows", std::chrono::seconds(10)));
    sync();
    // The window in front before the palette opened takes the first pane.
    EXPECT_EQ(frameOf(second), (XFrame{0, 0, 640, 800}));
    EXPECT_EQ(frameOf(first), (XFrame{640, 0, 640, 800}));

    // The shortcut again opens the same window, kept from the first time.
    ASSERT_TRUE(x().pressKeys({XK_Control_L, XK_Super_L, XK_p}));
    ASSERT_TRUE(x().waitForWindowTitled("Command Palette"));
    ASSERT_TRUE(
        corvettaSaid("Command palette: re-showing preserved window", std::chrono::seconds(5)));
    ASSERT_TRUE(x().pressKeys({XK_Escape}));
}

TEST_F(InterfaceOnX11, ThePillAppearsOnceTiledWindowsDriftAndResetPutsThemBack) {
    startDesktop();
    startPanel();
    startCorvetta();
    const uint32_t first = startClient({"--title", "first", "--geometry", "400x300+100+100"});
    const uint32_t second = startClient({"--title", "second", "--geometry", "400x300+300+200"});
    ASSERT_TRUE(x().activate(second));
    sync();
    ASSERT_THAT(request("apply_workspace_layout", R"({"name":"Halves"})"),
                HasSubstr(R"("windowsVerified":2)"));
    ASSERT_TRUE(corvettaSaid("Layout Lock active: 2 tiled windows", std::chrono::seconds(10)));
    sync();
    const XFrame left = frameOf(second), right = frameOf(first);

    // The user widens the left window by its right edge; the neighbour follows, and both now
    // stand away from where the layout put them.
    const auto mark = corvettaOutputMark();
    x().drag(left.x + left.width - 1, 400, left.x + left.width + 79, 400, second);
    ASSERT_TRUE(waitForCorvettaToSay(mark, {"Layout Lock followed a resize"}));
    const auto pill = x().waitForOverlayTitled("Layout Lock");
    ASSERT_TRUE(pill) << "the pill did not appear";
    sync();
    EXPECT_NE(frameOf(second), left);

    // Reset is the pill's first button, on its left half.
    const XFrame at = frameOf(*pill);
    x().drag(at.x + at.width / 4, at.y + at.height / 2, at.x + at.width / 4, at.y + at.height / 2);
    ASSERT_TRUE(corvettaSaid("Layout Lock reset to original frames", std::chrono::seconds(10)));
    sync();
    EXPECT_EQ(frameOf(second), left);
    EXPECT_EQ(frameOf(first), right);
    EXPECT_TRUE(x().waitUntilUnmapped(*pill)) << "the pill stayed after the windows came back";
}

TEST_F(InterfaceOnX11, ARestoreIsAnnouncedWithAToastThatGoesAwayByItself) {
    startDesktop();
    startPanel();
    startCorvetta();
    const uint32_t window = startClient({"--title", "notes", "--geometry", "400x300+100+100"});
    ASSERT_THAT(request("capture_workspace", R"({"name":"Work"})"), HasSubstr("Work"));
    const XFrame saved = frameOf(window);
    ASSERT_TRUE(x().activate(window));
    request("perform_action", R"({"action":"rightHalf"})");
    sync();
    ASSERT_NE(frameOf(window), saved);

    ASSERT_THAT(request("restore_workspace", R"({"name":"Work"})"), HasSubstr("Work"));
    ASSERT_TRUE(corvettaSaid("Toast shown: Restored 'Work'", std::chrono::seconds(10)));
    const auto toast = x().waitForOverlayTitled("Corvetta notice");
    ASSERT_TRUE(toast) << "the toast was not drawn";
    sync();
    EXPECT_EQ(frameOf(window), saved);
    // Near the top of the display, centred over it.
    const XFrame at = frameOf(*toast);
    EXPECT_LT(at.y, 100);
    EXPECT_NEAR(at.x + at.width / 2, 640, 2);
    EXPECT_TRUE(x().waitUntilUnmapped(*toast)) << "the toast stayed";
}

}  // namespace
}  // namespace corvetta::testing
