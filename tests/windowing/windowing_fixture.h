// windowing_fixture.h: The settings, logging, clock and displays windowing tests share.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "platform/in_memory_screens.h"
#include "support/test_logging.h"

namespace corvetta::testing_support {

// The visible frame is the frame less a 25-point menu bar at the top, unless given.
inline Screen makeScreen(ScreenNumber number, Rect frame, std::optional<Rect> visible = {}) {
    const Rect menuBarLess(frame.minX(), frame.minY(), frame.width(), frame.height() - 25);
    return Screen{number, frame, visible.value_or(menuBarLess), 2.0,
                  "Display " + std::to_string(number)};
}

class WindowingTest : public ::testing::Test {
protected:
    std::vector<std::string> loggedMessages(const std::string& service) const {
        return testLogging.messages(service);
    }

    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    testing::TestLogging testLogging{notifications, clock};
    InMemoryPreferences& loggingPreferences = testLogging.preferences;
    Logbook& logbook = testLogging.logbook;
    LoggingService& logging = testLogging.logging;
    InMemoryScreens screens;
};

}  // namespace corvetta::testing_support
