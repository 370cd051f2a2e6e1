// layout_gap.h: The gap between neighbouring windows, taken off a calculated frame.
#pragma once

#include "foundation/geometry.h"

namespace corvetta {

// Moves every edge of the frame that does not lie on (within 2 points of) the same edge of the
// visible frame inward by half the spacing, so two windows meeting inside the screen end up
// `spacing` apart while windows keep touching the screen's edges. Spacing 0 or less, or an
// empty frame, changes nothing, and neither does a spacing that would leave no width (or height)
// on that axis.
Rect insetByLayoutGap(const Rect& frame, const Rect& visibleFrame, double spacing);

}  // namespace corvetta
