// accessibility.h: The accessibility port: reading and moving other applications' windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/expected.h"
#include "foundation/geometry.h"

namespace corvetta {

// A process identifier, as the platform gives it.
using ProcessId = std::int32_t;

// The accessibility interface's error codes, with its own values, so a log line names the same
// failure on every desktop.
enum class AXErrorCode : std::int32_t {
    success = 0,
    failure = -25200,
    illegalArgument = -25201,
    invalidUIElement = -25202,
    invalidUIElementObserver = -25203,
    cannotComplete = -25204,
    attributeUnsupported = -25205,
    actionUnsupported = -25206,
    notificationUnsupported = -25207,
    notImplemented = -25208,
    notificationAlreadyRegistered = -25209,
    notificationNotRegistered = -25210,
    apiDisabled = -25211,
    noValue = -25212,
    parameterizedAttributeUnsupported = -25213,
    notEnoughPrecision = -25214,
};

// "kAXErrorCannotComplete (-25204)"; unknown values print as their number.
std::string describe(AXErrorCode code);

// Attribute and action names as the accessibility interface spells them.
namespace AXAttribute {
inline constexpr std::string_view kWindows = "AXWindows";
inline constexpr std::string_view kFocusedWindow = "AXFocusedWindow";
inline constexpr std::string_view kPosition = "AXPosition";
inline constexpr std::string_view kSize = "AXSize";
inline constexpr std::string_view kFullScreen = "AXFullScreen";
inline constexpr std::string_view kMinimized = "AXMinimized";
inline constexpr std::string_view kMinSize = "AXMinSize";
inline constexpr std::string_view kTitle = "AXTitle";
inline constexpr std::string_view kSubrole = "AXSubrole";
inline constexpr std::string_view kCloseButton = "AXCloseButton";
inline constexpr std::string_view kWindowId = "_AXWindowID";
}  // namespace AXAttribute

namespace AXAction {
inline constexpr std::string_view kPress = "AXPress";
inline constexpr std::string_view kRaise = "AXRaise";
}  // namespace AXAction

inline constexpr std::string_view kStandardWindowSubrole = "AXStandardWindow";

// A handle on one accessibility element (an application, a window, a button) of some process.
// What the token means is the backend's business; two handles are the same element exactly when
// they compare equal, so handles can key maps. The default handle is no element.
class AXElement {
public:
    constexpr AXElement() = default;
    constexpr AXElement(ProcessId process, std::uint64_t token)
        : process_(process), token_(token), valid_(true) {}

    ProcessId process() const { return process_; }
    std::uint64_t token() const { return token_; }
    bool isValid() const { return valid_; }

    bool operator==(const AXElement&) const = default;
    std::size_t hash() const;
    // "AXElement(pid 101, 11)", for log lines.
    std::string description() const;

private:
    ProcessId process_ = 0;
    std::uint64_t token_ = 0;
    bool valid_ = false;
};

// An attribute's value. Positions and sizes stand for the interface's wrapped point and size
// values; windows report them in accessibility space (top-left origin, y downward).
using AXValue = std::variant<std::monostate, bool, std::int64_t, std::string, Point, Size,
                             AXElement, std::vector<AXElement>>;

// "Point (10, 20)", "Size (800, 600)", "true", "3 elements"..., for log lines.
std::string describe(const AXValue& value);

// The accessibility port. Every call may fail with the interface's error codes: an element whose
// window or process is gone gives invalidUIElement, a process that does not answer cannotComplete,
// a missing permission apiDisabled, an attribute the element lacks attributeUnsupported, and an
// attribute that exists but has nothing to give noValue.
class AccessibilityPort {
public:
    virtual ~AccessibilityPort() = default;

    // Whether the user let this process use the interface.
    virtual bool isProcessTrusted() const = 0;
    // The application element of a process; never fails, later calls on it may.
    virtual AXElement applicationElement(ProcessId process) = 0;
    virtual Expected<AXValue, AXErrorCode> copyAttributeValue(const AXElement& element,
                                                              std::string_view attribute) = 0;
    // Several attributes of one element, each answer in the order asked, as the interface's
    // multiple-attribute copy gives them: one failing leaves the others standing. A backend may
    // fetch them together; by default each is read in turn.
    virtual std::vector<Expected<AXValue, AXErrorCode>> copyMultipleAttributeValues(
        const AXElement& element, const std::vector<std::string_view>& attributes);
    // success or the failure; a value of the wrong kind gives illegalArgument.
    virtual AXErrorCode setAttributeValue(const AXElement& element, std::string_view attribute,
                                          const AXValue& value) = 0;
    virtual AXErrorCode performAction(const AXElement& element, std::string_view action) = 0;
    virtual Expected<ProcessId, AXErrorCode> processOf(const AXElement& element) = 0;

    // Writes that belong together, such as a whole workspace's windows. A backend that waits after
    // each write until it has taken effect (on X11, for the window manager) may instead send them
    // all and wait once, when the outermost batch ends; reads inside a batch may not show its
    // writes yet. Batches nest. Use `AXWriteBatch` rather than calling these in pairs by hand.
    virtual void beginWriteBatch() {}
    virtual void endWriteBatch() {}
};

// One batch of writes for as long as it lives.
class AXWriteBatch {
public:
    explicit AXWriteBatch(AccessibilityPort& accessibility) : accessibility_(accessibility) {
        accessibility_.beginWriteBatch();
    }
    ~AXWriteBatch() { accessibility_.endWriteBatch(); }
    AXWriteBatch(const AXWriteBatch&) = delete;
    AXWriteBatch& operator=(const AXWriteBatch&) = delete;

private:
    AccessibilityPort& accessibility_;
};

}  // namespace corvetta

template <>
struct std::hash<corvetta::AXElement> {
    std::size_t operator()(const corvetta::AXElement& element) const noexcept {
        return element.hash();
    }
};
