// layout_lock_target.h: Where a layout hands the windows it placed, to keep them together.
#pragma once

#include <vector>

#include "layouts/ax_window_ref.h"

namespace corvetta {

// What layout application needs of the layout lock: the windows it placed, in placement order.
// The lock decides whether to hold them together (two or more windows, the setting on).
class LayoutLockTarget {
public:
    virtual ~LayoutLockTarget() = default;
    virtual void lock(std::vector<AXWindowRef> windows) = 0;
};

}  // namespace corvetta
