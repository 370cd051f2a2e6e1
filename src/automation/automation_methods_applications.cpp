#include <stdexcept>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "automation/method_support.h"
#include "windowing/ax_reading.h"

namespace corvetta {

namespace {

// How an attribute that could not be read, or that the window does not have, is shown.
constexpr const char* kAXErrorText = "<ax-error>";
constexpr const char* kNullText = "<null>";

Json applicationFields(const RunningApplication& application) {
    return Json{{"bundleID", textOrNull(application.bundleIdentifier)},
                {"appName", application.localizedName}};
}

std::vector<AXElement> windowsOf(AccessibilityPort& accessibility,
                                 const RunningApplication& application) {
    auto windows = readAttribute<std::vector<AXElement>>(
        accessibility, accessibility.applicationElement(application.processIdentifier),
        AXAttribute::kWindows);
    if (!windows) {
        throw std::runtime_error("Cannot read the windows of " + application.localizedName + ": " +
                                 describe(windows.error()));
    }
    return std::move(*windows);
}

// What stands for an attribute that could not be read: "<null>" when the element does not have
// it, "<ax-error>" when reading it failed.
Json shownFailure(AXErrorCode error) {
    const bool absent = error == AXErrorCode::noValue || error == AXErrorCode::attributeUnsupported;
    return absent ? kNullText : kAXErrorText;
}

template <class T>
Json shownValue(const Expected<T, AXErrorCode>& value) {
    return value ? Json(*value) : shownFailure(value.error());
}

void openApp(const AutomationContext& context, const MethodParams& params, MethodReply& reply) {
    const std::string bundleIdentifier = params.requiredText("bundle_id");
    auto& applications = context.desktop.applicationsPort();
    if (!applications.canLaunchApplication(bundleIdentifier)) {
        throw MCPError::notFound("app '" + bundleIdentifier + "'");
    }
    applications.launchApplication(
        bundleIdentifier, [reply = std::exchange(reply, nullptr), bundleIdentifier](
                              const Expected<RunningApplication, LaunchError>& launched) {
            if (launched) {
                reply(applicationFields(*launched));
            } else if (launched.error().kind == LaunchError::Kind::notFound) {
                reply(
                    unexpected(MCPError::notFound("app '" + bundleIdentifier + "'").description()));
            } else {
                reply(unexpected(launched.error().message));
            }
        });
}

Json activateApp(const AutomationContext& context, const MethodParams& params) {
    const auto application = requireRunningApplication(context.desktop.applicationsPort(), params);
    if (!context.desktop.applicationsPort().activate(application.processIdentifier)) {
        throw std::runtime_error(application.localizedName + " cannot be activated");
    }
    return applicationFields(application);
}

Json inspectAppWindows(const AutomationContext& context, const MethodParams& params) {
    const auto application = requireRunningApplication(context.desktop.applicationsPort(), params);
    auto& accessibility = context.desktop.accessibilityPort();
    const auto elements = windowsOf(accessibility, application);
    int standardSubroles = 0;
    int closeButtons = 0;
    Json windows = Json::array();
    for (const auto& window : elements) {
        const auto title = readAttribute<std::string>(accessibility, window, AXAttribute::kTitle);
        const auto subrole =
            readAttribute<std::string>(accessibility, window, AXAttribute::kSubrole);
        const bool hasCloseButton =
            readAttribute<AXElement>(accessibility, window, AXAttribute::kCloseButton).has_value();
        const auto frame = readAccessibilityFrame(accessibility, window);
        standardSubroles += subrole && *subrole == kStandardWindowSubrole ? 1 : 0;
        closeButtons += hasCloseButton ? 1 : 0;
        windows.push_back(Json{{"title", shownValue(title)},
                               {"titleQuerySuccess", title.has_value()},
                               {"subrole", shownValue(subrole)},
                               {"hasCloseButton", hasCloseButton},
                               {"minimized", shownValue(readAttribute<bool>(
                                                 accessibility, window, AXAttribute::kMinimized))},
                               {"frame", frame ? frameJson(*frame) : shownFailure(frame.error())}});
    }
    Json result = applicationFields(application);
    result["rawWindowCount"] = elements.size();
    result["standardSubroleCount"] = standardSubroles;
    result["closeButtonCount"] = closeButtons;
    result["windows"] = std::move(windows);
    return result;
}

// Presses every window's close button, as a click on it would; an application may still keep a
// window open to ask about unsaved changes, so the count is of presses taken.
Json closeAppWindows(const AutomationContext& context, const MethodParams& params) {
    const auto application = requireRunningApplication(context.desktop.applicationsPort(), params);
    auto& accessibility = context.desktop.accessibilityPort();
    const auto windows = windowsOf(accessibility, application);
    int closed = 0;
    for (const auto& window : windows) {
        const auto button =
            readAttribute<AXElement>(accessibility, window, AXAttribute::kCloseButton);
        const AXErrorCode pressed =
            button ? accessibility.performAction(*button, AXAction::kPress) : button.error();
        if (pressed == AXErrorCode::success) {
            ++closed;
        } else {
            methodsLogger(context).warning("Could not close a window of " +
                                           application.description() + ": " + describe(pressed));
        }
    }
    Json result = applicationFields(application);
    result["windowCount"] = windows.size();
    result["closedCount"] = closed;
    return result;
}

}  // namespace

void addApplicationMethods(MethodTable& table, const SharedContext& context) {
    table["open_app"] = [context](const MethodParams& params, MethodReply& reply) {
        openApp(*context, params, reply);
    };
    table["activate_app"] = answeringAtOnce(
        [context](const MethodParams& params) { return activateApp(*context, params); });
    table["inspect_app_windows"] = answeringAtOnce(
        [context](const MethodParams& params) { return inspectAppWindows(*context, params); });
    table["close_app_windows"] = answeringAtOnce(
        [context](const MethodParams& params) { return closeAppWindows(*context, params); });
}

}  // namespace corvetta
