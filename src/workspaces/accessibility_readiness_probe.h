// accessibility_readiness_probe.h: Asks whether the accessibility interface accepts window writes.
#pragma once

#include "platform/accessibility.h"
#include "platform/applications.h"

namespace corvetta {

// After a wake the accessibility interface can answer reads while it still refuses or drops
// writes, and a restore made then moves nothing. The probe writes the focused window's own
// position back to it: a write that changes nothing on screen, yet goes the whole way through.
class AccessibilityReadinessProbe {
public:
    AccessibilityReadinessProbe(AccessibilityPort& accessibility, ApplicationsPort& applications)
        : accessibility_(accessibility), applications_(applications) {}

    // True when the test write was accepted. With no window to write to (nothing in front, an
    // application in front without a focused window, a window without a position) an interface
    // that answered "no value" has shown it works, and that counts as ready too. Untrusted, an
    // application that does not answer, or a refused write: not ready.
    bool writesAccepted();

private:
    AccessibilityPort& accessibility_;
    ApplicationsPort& applications_;
};

}  // namespace corvetta
