// test_logging.h: A log book of its own, for tests that assert on what was logged.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "support/log_messages.h"

namespace corvetta::testing {

// A log book with its own switches and the logging service over it, for tests that assert on
// what was logged. Its settings never mix with the store under test.
struct TestLogging {
    TestLogging(NotificationCenter& notifications, const Clock& clock)
        : logbook(preferences, notifications, clock, nullptr), logging(preferences, logbook) {}

    // Oldest first; only the service's lines when one is named.
    std::vector<std::string> messages(const std::string& service = "") const {
        LogFilter filter;
        if (!service.empty()) {
            filter.service = service;
        }
        return loggedMessages(logbook, filter);
    }
    bool contains(const std::string& message) const {
        const auto all = messages();
        return std::find(all.begin(), all.end(), message) != all.end();
    }

    InMemoryPreferences preferences;
    Logbook logbook;
    LoggingService logging;
};

}  // namespace corvetta::testing
