// ax_reading.h: Typed reads through the accessibility port, a window's frame among them.
#pragma once

#include <string_view>
#include <variant>

#include "foundation/expected.h"
#include "foundation/geometry.h"
#include "platform/accessibility.h"

namespace corvetta {

// One attribute of the kind the caller expects; a value of another kind reads as `failure`, as
// an element that answers nonsense is as unusable as one that does not answer.
template <class T>
Expected<T, AXErrorCode> readAttribute(AccessibilityPort& accessibility, const AXElement& element,
                                       std::string_view attribute) {
    auto value = accessibility.copyAttributeValue(element, attribute);
    if (!value) {
        return unexpected(value.error());
    }
    if (auto* typed = std::get_if<T>(&*value)) {
        return std::move(*typed);
    }
    return unexpected(AXErrorCode::failure);
}

// A window's frame as the interface reports it ("AXPosition", "AXSize"): accessibility space,
// which is what automation clients are given.
inline Expected<Rect, AXErrorCode> readAccessibilityFrame(AccessibilityPort& accessibility,
                                                          const AXElement& window) {
    const auto position = readAttribute<Point>(accessibility, window, AXAttribute::kPosition);
    if (!position) {
        return unexpected(position.error());
    }
    const auto size = readAttribute<Size>(accessibility, window, AXAttribute::kSize);
    if (!size) {
        return unexpected(size.error());
    }
    return Rect(*position, *size);
}

}  // namespace corvetta
