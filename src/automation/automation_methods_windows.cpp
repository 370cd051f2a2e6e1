#include <algorithm>
#include <array>
#include <string_view>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "automation/method_support.h"
#include "windowing/ax_reading.h"
#include "windowing/window_action_rows.h"
#include "windowing/window_direction.h"
#include "workspaces/display_arrangement_capture.h"
#include "workspaces/display_key.h"

namespace corvetta {

namespace {

// Answers once the window has moved, with `result`, or with the move's error text.
SnapCompletion answerWhenMoved(MethodReply& reply, Json result) {
    return [reply = std::exchange(reply, nullptr),
            result = std::move(result)](const SnapResult& outcome) {
        if (outcome) {
            reply(result);
        } else {
            reply(unexpected(outcome.error()));
        }
    };
}

void snapWindow(const AutomationContext& context, const MethodParams& params, MethodReply& reply) {
    const std::string position = params.requiredText("position");
    const WindowActionRow* row = findWindowActionByKeyName(position);
    if (row == nullptr || !row->bySocket) {
        throw MCPError::invalidParam("Invalid position: " + position);
    }
    const WindowDirection action = context.snappingService.direction(SnapPosition(*row->position));
    context.snappingService.snapFrontmostWindow(
        action, answerWhenMoved(reply, Json{{"position", position}}));
}

// Exactly what the shortcut of the same name does.
void performAction(const AutomationContext& context, const MethodParams& params,
                   MethodReply& reply) {
    const std::string name = params.requiredText("action");
    auto& service = context.snappingService;
    if (const WindowActionRow* row = findWindowActionByKeyName(name); row && row->displayMove) {
        auto done = answerWhenMoved(reply, Json{{"action", name}});
        if (row->displayMove == DisplayMove::next) {
            service.moveFrontmostWindowToNextDisplay(std::move(done));
        } else {
            service.moveFrontmostWindowToPreviousDisplay(std::move(done));
        }
        return;
    }
    const auto type = directionTypeFromRawValue(name);
    if (!type) {
        throw MCPError::invalidParam("Unknown action: " + name);
    }
    const WindowDirection action = *type == DirectionType::custom
                                       ? WindowDirection::custom(params.requiredRect("rect"))
                                       : WindowDirection(*type);
    service.snapFrontmostWindow(action, answerWhenMoved(reply, Json{{"action", name}}));
}

Json applicationWindowFields(const RunningApplication& application, Json fields) {
    fields["appName"] = application.localizedName;
    fields["bundleIdentifier"] = textOrNull(application.bundleIdentifier);
    return fields;
}

// Windows that close while they are read, and applications that do not answer, are left out.
Json listWindows(const AutomationContext& context) {
    auto& accessibility = context.desktop.accessibilityPort();
    Json windows = Json::array();
    for (const auto& application : context.desktop.applicationsPort().runningApplications()) {
        if (application.activationPolicy != ActivationPolicy::regular) {
            continue;
        }
        const auto elements = readAttribute<std::vector<AXElement>>(
            accessibility, accessibility.applicationElement(application.processIdentifier),
            AXAttribute::kWindows);
        for (const auto& window : elements.value_or(std::vector<AXElement>{})) {
            const auto frame = readAccessibilityFrame(accessibility, window);
            if (!frame) {
                continue;
            }
            windows.push_back(applicationWindowFields(
                application, Json{{"title", readAttribute<std::string>(accessibility, window,
                                                                       AXAttribute::kTitle)
                                                .value_or("")},
                                  {"minimized", readAttribute<bool>(accessibility, window,
                                                                    AXAttribute::kMinimized)
                                                    .value_or(false)},
                                  {"frame", frameJson(*frame)}}));
        }
    }
    return Json{{"windows", std::move(windows)}};
}

// The main display is the primary one, holding the menu bar, as the display arrangement records
// it; the display with the key window follows focus and says nothing about the arrangement.
Json listDisplays(const AutomationContext& context) {
    const auto screens = context.desktop.screenPort().screens();
    Json displays = Json::array();
    for (std::size_t i = 0; i < screens.size(); ++i) {
        const Screen& screen = screens[i];
        displays.push_back(
            Json{{"stableID", displayKey(displayFingerprint(screen, screens.front()))},
                 {"name", screen.localizedName},
                 {"isBuiltIn", screen.isBuiltIn},
                 {"resolution",
                  Json{{"width", screen.frame.width()}, {"height", screen.frame.height()}}},
                 {"scaleFactor", screen.backingScaleFactor},
                 {"mainDisplay", i == 0},
                 {"frame", frameJson(accessibilityFrameOfScreenRect(screen.frame, screens))},
                 {"visibleFrame",
                  frameJson(accessibilityFrameOfScreenRect(screen.visibleFrame, screens))}});
    }
    return Json{{"displayCount", screens.size()}, {"displays", std::move(displays)}};
}

Json frontmostWindow(const AutomationContext& context) {
    auto& accessibility = context.desktop.accessibilityPort();
    const auto application = context.desktop.applicationsPort().frontmostApplication();
    if (!application) {
        throw MCPError::noFrontmostWindow();
    }
    const auto window = readAttribute<AXElement>(
        accessibility, accessibility.applicationElement(application->processIdentifier),
        AXAttribute::kFocusedWindow);
    const auto frame = window ? readAccessibilityFrame(accessibility, *window)
                              : Expected<Rect, AXErrorCode>(unexpected(window.error()));
    if (!frame) {
        throw MCPError::noFrontmostWindow();
    }
    return applicationWindowFields(
        *application,
        Json{{"title",
              readAttribute<std::string>(accessibility, *window, AXAttribute::kTitle).value_or("")},
             {"frame", frameJson(*frame)}});
}

}  // namespace

void addWindowMethods(MethodTable& table, const SharedContext& context) {
    table["snap_window"] = [context](const MethodParams& params, MethodReply& reply) {
        snapWindow(*context, params, reply);
    };
    table["perform_action"] = [context](const MethodParams& params, MethodReply& reply) {
        performAction(*context, params, reply);
    };
    table["list_windows"] =
        answeringAtOnce([context](const MethodParams&) { return listWindows(*context); });
    table["list_displays"] =
        answeringAtOnce([context](const MethodParams&) { return listDisplays(*context); });
    table["get_frontmost_window"] =
        answeringAtOnce([context](const MethodParams&) { return frontmostWindow(*context); });
}

}  // namespace corvetta
