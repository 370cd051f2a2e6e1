#include "windowing/event_monitor.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop_fixture.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;

class EventMonitorTest : public testing_support::DesktopTest {};

TEST_F(EventMonitorTest, HandsOnEventsForEveryApplicationUntilStopped) {
    startDesktop(std::vector<SimulatedWindow>{});
    std::vector<InputEvent> seen;
    const InputEvent elsewhere{EventType::leftMouseUp, {10, 20}};
    const InputEvent here{EventType::leftMouseUp, {30, 40}};
    {
        EventMonitor monitor(
            desktop->eventMonitorPort(), eventMask(EventType::leftMouseUp),
            [&](const InputEvent& event) { seen.push_back(event); }, logging);
        desktop->postEvent(elsewhere);
        monitor.start();
        monitor.start();
        desktop->postEvent(elsewhere);
        desktop->postEvent(here, true);
        desktop->postEvent({EventType::keyDown, {0, 0}});
        EXPECT_THAT(seen, ElementsAre(elsewhere, here));
        monitor.stop();
        desktop->postEvent(elsewhere);
        EXPECT_EQ(seen.size(), 2u);
        monitor.start();
    }
    // Gone with the monitor.
    desktop->postEvent(here, true);
    EXPECT_EQ(seen.size(), 2u);
    EXPECT_THAT(loggedMessages("EventMonitor"),
                ElementsAre("Started monitoring events with mask: 4", "Stopped monitoring events",
                            "Started monitoring events with mask: 4", "Stopped monitoring events"));
}

}  // namespace
}  // namespace corvetta
