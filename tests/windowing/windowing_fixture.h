#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "platform/in_memory_screens.h"

namespace corvetta::testing_support {

inline Screen makeScreen(ScreenNumber number, Rect frame, Rect visibleFrame) {
    return Screen{number, frame, visibleFrame, 2.0, "Display " + std::to_string(number)};
}

// A screen whose visible frame is its frame less a 25-point menu bar at the top.
inline Screen makeScreen(ScreenNumber number, Rect frame) {
    return makeScreen(
        number, frame,
        Rect(frame.origin.x, frame.origin.y, frame.size.width, frame.size.height - 25));
}

// The logging stack the services write through, with every level kept, and the screens port.
class WindowingTest : public ::testing::Test {
protected:
    std::vector<std::string> loggedMessages(const std::string& service) const {
        std::vector<std::string> messages;
        for (const auto& entry : logbook.recentEntries()) {
            if (entry.service == service) {
                messages.push_back(entry.message);
            }
        }
        return messages;
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
