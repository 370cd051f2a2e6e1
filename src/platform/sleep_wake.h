// sleep_wake.h: The sleep and wake port: the system going to sleep and waking up again.
#pragma once

#include <functional>

#include "foundation/registration.h"

namespace corvetta {

// The sleep and wake port, as the shared workspace announces them. Displays may come back late,
// changed or in another order after a wake, so whoever restores windows listens here.
class SleepWakePort {
public:
    virtual ~SleepWakePort() = default;

    // "NSWorkspaceWillSleepNotification": called on the main thread before the system sleeps,
    // for as long as the registration lives. The registration may outlive the port.
    [[nodiscard]] virtual Registration observeWillSleep(std::function<void()> handler) = 0;
    // "NSWorkspaceDidWakeNotification": called on the main thread once the system is awake again.
    [[nodiscard]] virtual Registration observeDidWake(std::function<void()> handler) = 0;
};

}  // namespace corvetta
