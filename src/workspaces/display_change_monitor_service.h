// display_change_monitor_service.h: Keeps the current display arrangement up to date and tells
// listeners when it was rebuilt.
#pragma once

#include <optional>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "foundation/registration.h"
#include "platform/screen.h"
#include "workspaces/display_fingerprint.h"

namespace corvetta {

class LoggingService;

// Posted after every rebuild of the current arrangement, with no user info.
inline constexpr const char* kDisplayArrangementDidChangeNotification =
    "com.corvetta.displayArrangementDidChange";

// Captures the arrangement when built and again each time the displays port reports a
// reconfiguration, then posts kDisplayArrangementDidChangeNotification. Main thread only.
class DisplayChangeMonitorService {
public:
    DisplayChangeMonitorService(ScreenPort& screens, NotificationCenter& notifications,
                                const Clock& clock, LoggingService& logging);
    DisplayChangeMonitorService(const DisplayChangeMonitorService&) = delete;
    DisplayChangeMonitorService& operator=(const DisplayChangeMonitorService&) = delete;

    const std::optional<DisplayArrangementInfo>& currentArrangement() const {
        return currentArrangement_;
    }
    Date lastUpdateTime() const { return lastUpdateTime_; }
    const std::string& serviceName() const { return logger_.serviceName(); }

private:
    void rebuild();

    ScreenPort& screens_;
    NotificationCenter& notifications_;
    const Clock& clock_;
    Logger logger_;
    std::optional<DisplayArrangementInfo> currentArrangement_;
    Date lastUpdateTime_;
    Registration screenObserver_;
};

}  // namespace corvetta
