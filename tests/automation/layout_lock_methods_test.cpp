#include <gtest/gtest.h>

#include "automation_methods_fixture.h"

namespace corvetta::testing_support {
namespace {

using namespace std::chrono_literals;

class LayoutLockMethodsTest : public AutomationMethodsTest {};

// Driven as a client would: the user's resize and mouse-up through "simulate".
TEST_F(LayoutLockMethodsTest, ReportsFollowsResetsAndUntilesTheGroup) {
    EXPECT_EQ(result("layout_lock")["active"], false);
    EXPECT_EQ(error("layout_lock_reset"), "Not found: active layout lock");

    result("simulate", {{"userFrame", {{"window", kMain}, {"frame", {0, 25, 715, 875}}}}});
    result("simulate", {{"userFrame", {{"window", 21}, {"frame", {725, 25, 715, 875}}}}});
    rig->services.layoutLock.lock(
        {{*rig->sim.windowElement(kMain)}, {*rig->sim.windowElement(21)}});
    queue.advance(1s);
    auto group = result("layout_lock");
    EXPECT_EQ(group["windows"][0]["neighbors"]["right"], Json::array({21}));
    EXPECT_EQ(group["windows"][1]["neighbors"]["left"], Json::array({kMain}));

    result("simulate", {{"userFrame", {{"window", kMain}, {"frame", {0, 25, 765, 875}}}},
                        {"mouse", {{"event", "up"}, {"location", {700, 400}}}}});
    queue.advance(1s);
    group = result("layout_lock");
    EXPECT_EQ(group["windows"][1]["frame"], Json::array({775, 25, 665, 875}));
    EXPECT_EQ(group["windows"][1]["originalFrame"], Json::array({725, 25, 715, 875}));
    EXPECT_EQ(group["windows"][1]["drifted"], true);
    EXPECT_EQ(group["pillVisible"], true);

    group = result("layout_lock_reset");
    EXPECT_EQ(group["windows"][0]["frame"], Json::array({0, 25, 715, 875}));
    EXPECT_EQ(result("layout_lock_untile"), Json({{"untiled", true}}));
    EXPECT_EQ(result("layout_lock")["active"], false);
    EXPECT_EQ(error("layout_lock_untile"), "Not found: active layout lock");
}

}  // namespace
}  // namespace corvetta::testing_support
