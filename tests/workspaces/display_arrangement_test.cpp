#include <gtest/gtest.h>

#include "foundation/notification_center.h"
#include "platform/in_memory_screens.h"
#include "support/sample_edid.h"
#include "support/test_logging.h"
#include "workspaces/display_arrangement_capture.h"
#include "workspaces/display_change_monitor_service.h"
#include "workspaces/display_key.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

// A desk: an external monitor with an EDID as the primary, the laptop's panel to its right and
// 200 points higher, reporting nothing about itself.
std::vector<Screen> desk() {
    Screen monitor{7, {0, 0, 1920, 1200}, {0, 0, 1920, 1175}, 1, "DELL U2415"};
    monitor.identity = {"3E032273-F3BF-5457-A5D3-2F2BED4A0A2E", "842550092", testing::sampleEdid(),
                        Size{518, 324}, "sRGB"};
    const Screen panel{9, {1920, 200, 1512, 982}, {1920, 200, 1512, 950}, 2, "Built-in", true};
    return {monitor, panel};
}

TEST(DisplayArrangementCapture, DescribesEachDisplayRelativeToThePrimary) {
    const Date now = ManualClock().now();
    const auto arrangement = captureDisplayArrangement(desk(), now);
    EXPECT_EQ(arrangement.createdAt, now);
    // clang-format off
    const DisplayFingerprint monitor{{1920, 1200}, Size{518, 324}, 1, "sRGB", false, {0, 0},
        "DELL U2415", "3E032273-F3BF-5457-A5D3-2F2BED4A0A2E", "842550092", "2394d1fb"};
    // Centres (960, 600) and (2676, 691); the panel reports nothing about itself.
    const DisplayFingerprint panel{{1512, 982}, {}, 2, {}, true, {1716, 91}, "Built-in", {}, {}, {}};
    // clang-format on
    EXPECT_EQ(arrangement.displayFingerprints, (std::vector{monitor, panel}));
    EXPECT_EQ(arrangement.mainDisplayFingerprint, monitor);
    // Keyed by UUID where the display has one, else by its display key.
    const std::map<std::string, double> heights{
        {"3E032273-F3BF-5457-A5D3-2F2BED4A0A2E", 1200},
        {"1512x982_2.0_builtin_built-in_smart_1512x982_1716_91", 982}};
    EXPECT_EQ(arrangement.monitorDisplayHeights, heights);
    EXPECT_EQ(arrangement.arrangementFingerprint,
              "2:1920x1200_1.0_external_dellu2415_uuid_3E032273:"
              "1512x982_2.0_builtin_built-in_smart_1512x982_1716_91|"
              "1920x1200_1.0_external_dellu2415_uuid_3E032273");

    const auto none = captureDisplayArrangement({}, now);
    EXPECT_TRUE(none.displayFingerprints.empty());
    EXPECT_FALSE(none.mainDisplayFingerprint);
    EXPECT_EQ(none.arrangementFingerprint, "0:none:");
}

TEST(DisplayChangeMonitorService, RebuildsTheArrangementOnEachReconfiguration) {
    ManualClock clock;
    NotificationCenter notifications;
    testing::TestLogging logs{notifications, clock};
    InMemoryScreens screens({desk().front()});
    int posted = 0;
    auto observer = notifications.addObserver(kDisplayArrangementDidChangeNotification,
                                              [&](const Notification&) { ++posted; });
    DisplayChangeMonitorService service(screens, notifications, clock, logs.logging);
    ASSERT_TRUE(service.currentArrangement());
    EXPECT_EQ(service.currentArrangement()->displayFingerprints.size(), 1u);
    EXPECT_EQ(posted, 0);

    clock.advance(5s);
    screens.setScreens(desk());
    EXPECT_EQ(posted, 1);
    EXPECT_EQ(service.currentArrangement(), captureDisplayArrangement(desk(), clock.now()));
    EXPECT_EQ(service.lastUpdateTime(), clock.now());
    EXPECT_EQ(logs.messages(service.serviceName()),
              (std::vector<std::string>{"DisplayChangeMonitorService initialized",
                                        "System display configuration changed"}));
}

}  // namespace
}  // namespace corvetta
