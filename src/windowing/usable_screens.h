// usable_screens.h: Finds the display after or before the current one, for moves across displays.
#pragma once

#include <span>

#include "diagnostics/deferred_logger.h"
#include "platform/screen.h"

namespace corvetta {

// The displays a window can be sent to, and the one after the current. Holds views: the list and
// the current screen must outlive it.
class UsableScreens {
public:
    UsableScreens(std::span<const Screen> screens, const Screen& currentScreen,
                  LoggingService& logging);

    // The entry after the current screen (found by identity), the last wrapping to the first; the
    // current screen itself when it is not listed or is alone.
    const Screen& nextScreen() const;
    // The mirror: the entry before the current screen, the first wrapping to the last.
    const Screen& previousScreen() const;

    std::span<const Screen> screens() const { return screens_; }
    const Screen& currentScreen() const { return *currentScreen_; }

private:
    // The entry `step` places after the current screen, wrapping around.
    const Screen& neighbour(std::size_t step) const;

    std::span<const Screen> screens_;
    const Screen* currentScreen_;
    DeferredLogger logger_;
};

}  // namespace corvetta
