// placeholder_layout_lock.h: Stands in for the layout lock until it exists; only logs.
#pragma once

#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "layouts/layout_lock_target.h"

namespace corvetta {

// Takes the windows a layout placed and keeps nothing: the layout lock is not available yet, and
// the log says so, so a user who expects the group to hold together learns why it does not.
class PlaceholderLayoutLock : public LayoutLockTarget {
public:
    explicit PlaceholderLayoutLock(LoggingService& logging)
        : logger_(logging, "LayoutLockManager") {}

    void lock(std::vector<AXWindowRef> windows) override {
        logger_.info("Layout lock not available yet; " + std::to_string(windows.size()) +
                     " placed window(s) are not held together");
    }

private:
    Logger logger_;
};

}  // namespace corvetta
