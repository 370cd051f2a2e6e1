// Layouts on a real X server: a template applied by its own shortcut, and the layout lock keeping
// the tiled windows together when the user resizes one of them with the mouse.

#include <string>

#include <X11/keysym.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "e2e_desktop.h"
#include "foundation/json.h"

namespace corvetta::testing {
namespace {

using ::testing::HasSubstr;

class LayoutOnX11 : public E2eDesktop {};

TEST_F(LayoutOnX11, AShortcutTilesTheWindowsAndANeighbourFollowsAResizeByTheMouse) {
    startDesktop();
    startCorvetta();
    const uint32_t first = startClient({"--title", "first", "--geometry", "400x300+100+100"});
    const uint32_t second = startClient({"--title", "second", "--geometry", "400x300+300+200"});
    ASSERT_TRUE(x().activate(second));
    sync();

    const auto saved =
        parseJson(request("save_layout", R"({"name":"Pair","panes":[[0,0,0.5,1],[0.5,0,0.5,1]]})"));
    ASSERT_TRUE(saved && (*saved)["result"].contains("id"));
    const std::string name = "layout_" + (*saved)["result"]["id"].get<std::string>();
    // ⌃⌥1: Option is Super on X11.
    ASSERT_THAT(
        request("set_shortcut", R"({"name":")" + name + R"(","keyCode":18,"modifiers":786432})"),
        HasSubstr(R"("registered":true)"));

    ASSERT_TRUE(x().pressKeys({XK_Control_L, XK_Super_L, XK_1}));
    ASSERT_TRUE(corvettaSaid("Layout Lock active: 2 tiled windows", std::chrono::seconds(10)));
    sync();
    // The front window takes the first pane.
    const XFrame left = frameOf(second), right = frameOf(first);
    EXPECT_EQ(left, (XFrame{0, 0, 640, 800}));
    EXPECT_EQ(right, (XFrame{640, 0, 640, 800}));

    // The user widens the left window by 50 by its right edge: the press starts the window
    // manager's resize as an application with its own decorations asks for it, the pointer moves
    // and lets go through XTest, and the lock hears the real mouse-up through XInput 2.
    const auto mark = corvettaOutputMark();
    x().drag(left.x + left.width - 1, 400, left.x + left.width + 49, 400, second);
    ASSERT_TRUE(waitForCorvettaToSay(mark, {"Layout Lock followed a resize"}))
        << "the lock did not react to the mouse-up";
    sync();
    const XFrame widened = frameOf(second);
    EXPECT_EQ(widened.x, 0);
    EXPECT_EQ(widened.width, 690);
    // The neighbour's left edge moved with the shared edge, its right edge stayed.
    EXPECT_EQ(frameOf(first), (XFrame{690, 0, 590, 800}));
}

}  // namespace
}  // namespace corvetta::testing
