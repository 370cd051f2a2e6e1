#include <vector>

#include <X11/keysym.h>

#include "platform/x11/x11_event_monitor.h"
#include "platform/x11/x11_pointer.h"
#include "x11_test_support.h"

namespace corvetta {
namespace {

constexpr Rect kPrimary{0, 0, 1280, 800};

TEST(X11Coordinates, RootPointsMeasureFromThePrimaryMonitorsBottomLeft) {
    EXPECT_EQ(screenPointFromRoot({100, 200}, kPrimary), (Point{100, 600}));
    EXPECT_EQ(screenPointFromRoot({100, 200}, Rect(1280, 100, 1920, 1080)), (Point{-1180, 980}));
}

class X11InputEventsTest : public testing::X11InputTest {
protected:
    void deliver() {
        testing::X11InputTest::deliver(
            [this](const xcb_generic_event_t& event) { return monitor_.handleEvent(event); });
    }
    Registration record(EventTypeMask mask, std::vector<InputEvent>& into) {
        return monitor_.addGlobalMonitor(
            mask, [&into](const InputEvent& event) { into.push_back(event); });
    }

    Rect primary_ = kPrimary;
    X11EventMonitor monitor_{observed_, root(), queue_, [this] { return primary_; }};
    X11Pointer pointer_{observed_, root(), [this] { return primary_; }};
};

TEST_F(X11InputEventsTest, ThePointerIsInScreenSpaceOfThePrimaryMonitor) {
    driver_.moveTo(300, 100);
    deliver();
    EXPECT_EQ(pointer_.mouseLocation(), (Point{300, 700}));
    primary_ = Rect(100, 50, 640, 480);
    EXPECT_EQ(pointer_.mouseLocation(), (Point{200, 430}));
}

TEST_F(X11InputEventsTest, MouseButtonsReachTheMonitorsThatAskForThem) {
    ASSERT_TRUE(monitor_.isAvailable());
    std::vector<InputEvent> ups, downs, local;
    auto upMonitor = record(eventMask(EventType::leftMouseUp), ups);
    auto downMonitor =
        record(eventMask(EventType::leftMouseDown) | eventMask(EventType::rightMouseDown), downs);
    auto localMonitor =
        monitor_.addLocalMonitor(eventMask(EventType::leftMouseUp),
                                 [&](const InputEvent& event) { local.push_back(event); });

    driver_.moveTo(100, 200);
    driver_.click(1);
    driver_.click(3);
    // Wheel steps are no clicks.
    driver_.click(4);
    deliver();
    EXPECT_EQ(ups, std::vector<InputEvent>({{EventType::leftMouseUp, {100, 600}, 0, 0}}));
    EXPECT_EQ(downs, std::vector<InputEvent>({{EventType::leftMouseDown, {100, 600}, 0, 0},
                                              {EventType::rightMouseDown, {100, 600}, 0, 0}}));
    EXPECT_TRUE(local.empty());

    upMonitor.reset();
    driver_.click(1);
    deliver();
    EXPECT_EQ(ups.size(), 1u);
}

TEST_F(X11InputEventsTest, ModifierChangesBecomeFlagsChangedWithTheFlagsNow) {
    std::vector<InputEvent> events;
    auto flagsMonitor = record(eventMask(EventType::flagsChanged), events);
    driver_.moveTo(10, 20);
    driver_.press(XK_Shift_L);
    driver_.press(XK_Control_L);
    // Keys that change no modifier are not flag changes.
    driver_.type({XK_a});
    driver_.release(XK_Shift_L);
    driver_.release(XK_Control_L);
    deliver();

    std::vector<std::uint64_t> flags;
    for (const auto& event : events) {
        EXPECT_EQ(event.type, EventType::flagsChanged);
        EXPECT_EQ(event.location, (Point{10, 780}));
        flags.push_back(event.modifierFlags);
    }
    EXPECT_EQ(flags, std::vector<std::uint64_t>({ModifierFlag::kShift,
                                                 ModifierFlag::kShift | ModifierFlag::kControl,
                                                 ModifierFlag::kControl, 0}));

    // A monitor installed by work queued while the keys were read (a cycle that a hot key in the
    // same batch starts) hears the changes read after that work was queued.
    flagsMonitor.reset();
    events.clear();
    driver_.press(XK_Control_L);
    deliver();
    queue_.post([&] { flagsMonitor = record(eventMask(EventType::flagsChanged), events); });
    driver_.release(XK_Control_L);
    deliver();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events.front().modifierFlags, 0u);
}

}  // namespace
}  // namespace corvetta
