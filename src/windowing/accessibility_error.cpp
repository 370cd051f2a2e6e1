#include "windowing/accessibility_error.h"

namespace corvetta {

namespace {

// Without the permission every call answers apiDisabled; callers act on the missing permission,
// not on the call that happened to notice it.
AccessibilityError attributeFailure(AccessibilityError::Kind kind, AXErrorCode code) {
    if (code == AXErrorCode::apiDisabled) {
        return {AccessibilityError::Kind::permissionDenied, code};
    }
    return {kind, code};
}

std::string codeText(AXErrorCode code) {
    return std::to_string(static_cast<std::int32_t>(code));
}

}  // namespace

AccessibilityError AccessibilityError::failedToGet(AXErrorCode code) {
    return attributeFailure(Kind::failedToGetAttribute, code);
}

AccessibilityError AccessibilityError::failedToSet(AXErrorCode code) {
    return attributeFailure(Kind::failedToSetAttribute, code);
}

std::string AccessibilityError::description() const {
    switch (kind) {
        case Kind::failedToGetAttribute:
            return "Failed to get accessibility attribute: " + codeText(code);
        case Kind::failedToSetAttribute:
            return "Failed to set accessibility attribute: " + codeText(code);
        case Kind::invalidValue:
            return "Invalid accessibility value";
        case Kind::failedToCreateValue:
            return "Failed to create accessibility value";
        case Kind::permissionDenied:
            return "Accessibility permission denied";
        case Kind::timeout:
            return "Operation timed out";
    }
    return "Invalid accessibility value";
}

}  // namespace corvetta
