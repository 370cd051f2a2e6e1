// pointer.h: The pointer port: where the mouse is, in screen space.
#pragma once

#include "foundation/geometry.h"

namespace corvetta {

// The pointer port.
class PointerPort {
public:
    virtual ~PointerPort() = default;

    // Where the pointer is, in screen space (bottom-left origin of the primary display).
    virtual Point mouseLocation() const = 0;
};

}  // namespace corvetta
