#include "workspaces/accessibility_readiness_probe.h"

namespace corvetta {

namespace {

// The interface answered, and there was simply nothing there to write to.
bool answeredWithNothing(AXErrorCode code) {
    return code == AXErrorCode::noValue || code == AXErrorCode::attributeUnsupported;
}

}  // namespace

bool AccessibilityReadinessProbe::writesAccepted() {
    if (!accessibility_.isProcessTrusted()) {
        return false;
    }
    const auto front = applications_.frontmostApplication();
    if (!front) {
        return true;
    }
    const auto focused = accessibility_.copyAttributeValue(
        accessibility_.applicationElement(front->processIdentifier), AXAttribute::kFocusedWindow);
    if (!focused) {
        return answeredWithNothing(focused.error());
    }
    const auto* window = std::get_if<AXElement>(&*focused);
    if (!window || !window->isValid()) {
        return true;
    }
    const auto position = accessibility_.copyAttributeValue(*window, AXAttribute::kPosition);
    if (!position) {
        return answeredWithNothing(position.error());
    }
    const AXErrorCode written =
        accessibility_.setAttributeValue(*window, AXAttribute::kPosition, *position);
    return written == AXErrorCode::success;
}

}  // namespace corvetta
