// accessibility_error.h: Why an accessibility operation on a window failed, as logged.
#pragma once

#include <string>

#include "platform/accessibility.h"

namespace corvetta {

// Why an accessibility operation failed, as the window layer reports it.
struct AccessibilityError {
    enum class Kind {
        failedToGetAttribute,
        failedToSetAttribute,
        invalidValue,
        failedToCreateValue,
        permissionDenied,
        timeout,
    };

    Kind kind = Kind::invalidValue;
    // The interface's code, for the two attribute failures.
    AXErrorCode code = AXErrorCode::success;

    // apiDisabled (no permission) becomes permissionDenied, keeping the code.
    static AccessibilityError failedToGet(AXErrorCode code);
    static AccessibilityError failedToSet(AXErrorCode code);

    // "Failed to get accessibility attribute: -25204", "Invalid accessibility value", ...
    std::string description() const;
    bool operator==(const AccessibilityError&) const = default;
};

}  // namespace corvetta
