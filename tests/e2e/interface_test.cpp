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

}  // namespace
}  // namespace corvetta::testing
