// ax_window_ref.h: One window's accessibility element as a key for the layout lock's maps.
#pragma once

#include <cstddef>
#include <functional>

#include "platform/accessibility.h"

namespace corvetta {

// Equal and hashed by the element's identity, so it can key dictionaries.
struct AXWindowRef {
    AXElement element;

    bool operator==(const AXWindowRef&) const = default;
};

}  // namespace corvetta

template <>
struct std::hash<corvetta::AXWindowRef> {
    std::size_t operator()(const corvetta::AXWindowRef& ref) const noexcept {
        return ref.element.hash();
    }
};
