#include "platform/x11/x11_screens.h"

#include <gtest/gtest.h>
#include <xcb/randr.h>

#include "support/sample_edid.h"
#include "x11_test_support.h"

namespace corvetta {
namespace {

using testing::X11Fixture;

testing::VirtualDisplayOptions twoMonitors() {
    testing::VirtualDisplayOptions options;
    options.monitors = {{0, 0, 1280, 800}, {1280, 0, 1024, 768}};
    return options;
}

class X11ScreensTest : public ::testing::Test {
protected:
    X11Fixture fixture{twoMonitors()};
    X11Screens screens{fixture.connection()};
};

TEST_F(X11ScreensTest, ListsMonitorsPrimaryFirstInScreenSpace) {
    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].frame, Rect(0, 0, 1280, 800));
    EXPECT_EQ(all[0].visibleFrame, all[0].frame);
    // Top-aligned with the primary but shorter: its bottom sits 32 points above the primary's.
    EXPECT_EQ(all[1].frame, Rect(1280, 32, 1024, 768));
    EXPECT_NE(all[0].number, all[1].number);
    EXPECT_FALSE(all[1].localizedName.empty());
    EXPECT_EQ(screens.coordinates().primary, (RootRect{0, 0, 1280, 800}));
}

TEST_F(X11ScreensTest, RandrPrimaryComesFirstAndAnnouncesTheChange) {
    int announcements = 0;
    auto registration = screens.observeScreenParameters([&] { ++announcements; });
    const auto before = screens.screens();
    const std::string second = fixture.connection().atomName(before[1].number);
    // A monitor cannot be redefined in place.
    ASSERT_TRUE(fixture.xrandr({"--delmonitor", second}));
    ASSERT_TRUE(fixture.xrandr({"--setmonitor", "*" + second, "1024/270x768/203+1280+0", "none"}));
    fixture.catchUp();
    EXPECT_EQ(announcements, 1) << "one announcement per burst of events";

    const auto after = screens.screens();
    ASSERT_EQ(after.size(), 2u);
    EXPECT_TRUE(after[0].isSameScreen(before[1]));
    EXPECT_EQ(after[0].frame, Rect(0, 0, 1024, 768));
    // Left of the new primary, reaching 32 points below its bottom.
    EXPECT_EQ(after[1].frame, Rect(-1280, -32, 1280, 800));

    registration.reset();
    ASSERT_TRUE(fixture.xrandr({"--delmonitor", second}));
    fixture.catchUp();
    fixture.queue().runUntilIdle();
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(screens.screens().size(), 1u);
}

TEST_F(X11ScreensTest, VisibleFramesLeaveOutStrutsOnTheMonitorTheyTouch) {
    auto& client = fixture.client();
    const auto bottomPanel = client.createWindow(0, 770, 1280, 30);
    const auto rightDock = client.createWindow(2254, 0, 50, 400);
    // Partial struts: bottom 30 across the primary only, right 50 for the second's top half.
    client.setCardinals(bottomPanel, "_NET_WM_STRUT_PARTIAL",
                        {0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 1279});
    client.setCardinals(rightDock, "_NET_WM_STRUT_PARTIAL",
                        {0, 50, 0, 0, 0, 0, 0, 399, 0, 0, 0, 0});
    int announcements = 0;
    auto registration = screens.observeScreenParameters([&] { ++announcements; });
    client.setCardinals(client.root(), "_NET_CLIENT_LIST", {bottomPanel, rightDock},
                        XCB_ATOM_WINDOW);
    fixture.catchUp();
    EXPECT_EQ(announcements, 1);

    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].visibleFrame, Rect(0, 30, 1280, 770));
    EXPECT_EQ(all[1].visibleFrame, Rect(1280, 32, 974, 768));

    // A window that reserves nothing comes and goes: no news.
    const auto plain = client.createWindow(100, 100, 200, 200);
    client.setCardinals(client.root(), "_NET_CLIENT_LIST", {bottomPanel, rightDock, plain},
                        XCB_ATOM_WINDOW);
    fixture.catchUp();
    EXPECT_EQ(announcements, 1);

    // The panel grows in place, as panels do when their settings change.
    client.setCardinals(bottomPanel, "_NET_WM_STRUT_PARTIAL",
                        {0, 0, 0, 48, 0, 0, 0, 0, 0, 0, 0, 1279});
    fixture.catchUp();
    EXPECT_EQ(announcements, 2);
    EXPECT_EQ(screens.screens()[0].visibleFrame, Rect(0, 48, 1280, 752));
}

TEST_F(X11ScreensTest, IdentityComesFromTheOutputsEdid) {
    const auto before = screens.screens();
    for (const auto& screen : before) {
        EXPECT_TRUE(screen.identity.edid.empty());
        EXPECT_FALSE(screen.identity.persistentUUID || screen.identity.serial);
        EXPECT_FALSE(screen.identity.colorSpace);
        EXPECT_FALSE(screen.isBuiltIn);
    }
    ASSERT_TRUE(before[1].identity.physicalSize);
    int announcements = 0;
    auto registration = screens.observeScreenParameters([&] { ++announcements; });

    // Xvfb lets a client give its one output ("screen", under the first monitor) an EDID, as a
    // driver does when a display is plugged in.
    auto& client = fixture.client();
    auto* resources = xcb_randr_get_screen_resources_reply(
        client.raw(), xcb_randr_get_screen_resources(client.raw(), client.root()), nullptr);
    ASSERT_TRUE(resources && resources->num_outputs > 0);
    const auto output = xcb_randr_get_screen_resources_outputs(resources)[0];
    std::free(resources);
    const auto edid = testing::sampleEdid();
    xcb_randr_change_output_property(client.raw(), output, client.atom("EDID"), XCB_ATOM_INTEGER, 8,
                                     XCB_PROP_MODE_REPLACE, static_cast<std::uint32_t>(edid.size()),
                                     edid.data());
    xcb_flush(client.raw());
    fixture.catchUp();
    EXPECT_EQ(announcements, 1);

    const auto after = screens.screens();
    EXPECT_EQ(after[0].localizedName, "DELL U2415");
    EXPECT_EQ(after[0].identity.edid, edid);
    EXPECT_EQ(after[0].identity.serial, "842550092");
    EXPECT_EQ(after[0].identity.persistentUUID, "3E032273-F3BF-5457-A5D3-2F2BED4A0A2E");
    EXPECT_TRUE(after[0].isSameScreen(before[0]));
    // The monitor on no output has no EDID and keeps the name it was given.
    EXPECT_EQ(after[1], before[1]);

    const xcb_atom_t panel = client.atom("Panel");
    xcb_randr_change_output_property(client.raw(), output, client.atom("ConnectorType"),
                                     XCB_ATOM_ATOM, 32, XCB_PROP_MODE_REPLACE, 1, &panel);
    xcb_flush(client.raw());
    fixture.catchUp();
    EXPECT_EQ(announcements, 2);
    EXPECT_TRUE(screens.screens()[0].isBuiltIn);
}

TEST(X11ScreensSingleMonitorTest, VisibleFrameFollowsTheWorkArea) {
    X11Fixture fixture;
    X11Screens screens(fixture.connection());
    auto& client = fixture.client();
    client.setCardinals(client.root(), "_NET_WORKAREA", {0, 0, 1280, 800, 0, 24, 1280, 776});
    client.setCardinals(client.root(), "_NET_CURRENT_DESKTOP", {1});
    fixture.catchUp();
    EXPECT_EQ(screens.screens().front().visibleFrame, Rect(0, 0, 1280, 776));
}

TEST_F(X11ScreensTest, MainScreenHoldsTheActiveWindow) {
    auto& client = fixture.client();
    const auto window = client.createWindow(1500, 100, 300, 200);
    client.setCardinals(client.root(), "_NET_ACTIVE_WINDOW", {window}, XCB_ATOM_WINDOW);
    fixture.catchUp();
    EXPECT_EQ(screens.mainScreen()->number, screens.screens()[1].number);

    client.destroy(window);
    fixture.catchUp();
    EXPECT_EQ(screens.mainScreen()->number, screens.screens()[0].number);
}

}  // namespace
}  // namespace corvetta
