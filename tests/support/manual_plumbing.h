// manual_plumbing.h: The process plumbing on a manual clock, for benchmarks and fuzz targets.
#pragma once

#include <string>
#include <utility>

#include "app/service_root.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/manual_queue.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"

namespace corvetta::testing {

// What a `ServiceRoot` needs besides the desktop, with time that moves only when the caller
// advances it. Logging keeps to `minimumLogLevel` (2: warnings and above by default), so the
// measured work is not the log book's.
struct ManualPlumbing {
    explicit ManualPlumbing(int minimumLogLevel = 2)
        : loggingDefaults({{LoggingService::kMinimumLogLevelKey, minimumLogLevel}}) {}

    ProcessPlumbing on(Desktop& desktop, std::string description = {}) {
        return ProcessPlumbing{.desktop = desktop,
                               .queue = queue,
                               .defaults = defaults,
                               .notifications = notifications,
                               .logbook = logbook,
                               .logging = logging,
                               .version = "Corvetta 0.1.0",
                               .desktopDescription = std::move(description)};
    }

    InMemoryPreferences loggingDefaults;
    InMemoryPreferences defaults;
    NotificationCenter notifications;
    ManualClock clock;
    ManualQueue queue{clock};
    Logbook logbook{loggingDefaults, notifications, clock, nullptr};
    LoggingService logging{loggingDefaults, logbook};
};

}  // namespace corvetta::testing
