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
#include "support/log_messages.h"

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
        LogFilter filter;
        filter.service = service;
        return testing::loggedMessages(logbook, filter);
    }

    InMemoryPreferences preferences;
    InMemoryPreferences loggingPreferences;
    NotificationCenter notifications;
    ManualClock clock;
    Logbook logbook{loggingPreferences, notifications, clock, nullptr};
    LoggingService logging{loggingPreferences, logbook};
    InMemoryScreens screens;
};

}  // namespace corvetta::testing_support
