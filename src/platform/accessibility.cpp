#include "platform/accessibility.h"

#include <array>
#include <utility>

namespace corvetta {

namespace {

std::string_view codeName(AXErrorCode code) {
    static constexpr std::array<std::pair<AXErrorCode, std::string_view>, 16> names{{
        {AXErrorCode::success, "kAXErrorSuccess"},
        {AXErrorCode::failure, "kAXErrorFailure"},
        {AXErrorCode::illegalArgument, "kAXErrorIllegalArgument"},
        {AXErrorCode::invalidUIElement, "kAXErrorInvalidUIElement"},
        {AXErrorCode::invalidUIElementObserver, "kAXErrorInvalidUIElementObserver"},
        {AXErrorCode::cannotComplete, "kAXErrorCannotComplete"},
        {AXErrorCode::attributeUnsupported, "kAXErrorAttributeUnsupported"},
        {AXErrorCode::actionUnsupported, "kAXErrorActionUnsupported"},
        {AXErrorCode::notificationUnsupported, "kAXErrorNotificationUnsupported"},
        {AXErrorCode::notImplemented, "kAXErrorNotImplemented"},
        {AXErrorCode::notificationAlreadyRegistered, "kAXErrorNotificationAlreadyRegistered"},
        {AXErrorCode::notificationNotRegistered, "kAXErrorNotificationNotRegistered"},
        {AXErrorCode::apiDisabled, "kAXErrorAPIDisabled"},
        {AXErrorCode::noValue, "kAXErrorNoValue"},
        {AXErrorCode::parameterizedAttributeUnsupported,
         "kAXErrorParameterizedAttributeUnsupported"},
        {AXErrorCode::notEnoughPrecision, "kAXErrorNotEnoughPrecision"},
    }};
    for (const auto& [known, name] : names) {
        if (known == code) {
            return name;
        }
    }
    return {};
}

}  // namespace

std::string describe(AXErrorCode code) {
    const auto value = std::to_string(static_cast<std::int32_t>(code));
    const auto name = codeName(code);
    return name.empty() ? value : std::string(name) + " (" + value + ")";
}

std::size_t AXElement::hash() const {
    const auto mixed = (static_cast<std::uint64_t>(static_cast<std::uint32_t>(process_)) << 32) ^
                       token_ ^ (valid_ ? 0x9e3779b97f4a7c15ULL : 0);
    return std::hash<std::uint64_t>{}(mixed * 0xff51afd7ed558ccdULL);
}

std::string AXElement::description() const {
    if (!valid_) {
        return "AXElement(none)";
    }
    return "AXElement(pid " + std::to_string(process_) + ", " + std::to_string(token_) + ")";
}

std::string describe(const AXValue& value) {
    struct Describer {
        std::string operator()(std::monostate) const { return "no value"; }
        std::string operator()(bool flag) const { return flag ? "true" : "false"; }
        std::string operator()(std::int64_t integer) const { return std::to_string(integer); }
        std::string operator()(const std::string& text) const { return "\"" + text + "\""; }
        std::string operator()(const Point& point) const { return "Point " + point.description(); }
        std::string operator()(const Size& size) const { return "Size " + size.description(); }
        std::string operator()(const AXElement& element) const { return element.description(); }
        std::string operator()(const std::vector<AXElement>& elements) const {
            return std::to_string(elements.size()) + " elements";
        }
    };
    return std::visit(Describer{}, value);
}

std::vector<Expected<AXValue, AXErrorCode>> AccessibilityPort::copyMultipleAttributeValues(
    const AXElement& element, const std::vector<std::string_view>& attributes) {
    std::vector<Expected<AXValue, AXErrorCode>> values;
    values.reserve(attributes.size());
    for (const auto attribute : attributes) {
        values.push_back(copyAttributeValue(element, attribute));
    }
    return values;
}

}  // namespace corvetta
