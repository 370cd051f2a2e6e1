#include <chrono>
#include <stdexcept>
#include <variant>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "automation/method_support.h"
#include "windowing/ax_reading.h"
#include "windowing/new_window_item.h"

namespace corvetta {

namespace {

using namespace std::chrono_literals;

constexpr const char* kBundleIdParam = "bundle_id";
// A new window is looked for every 100 ms, for 5 s.
constexpr Duration kPollInterval = 100ms;
constexpr int kPollCount = 50;
constexpr const char* kTimeoutText = "window did not appear within 5s";

NewWindowItem requireNewWindowWay(const AutomationContext& context,
                                  const RunningApplication& application,
                                  const std::string& bundleIdentifier) {
    auto found =
        findNewWindowItem(context.desktop.accessibilityPort(), context.desktop.applicationsPort(),
                          application.processIdentifier);
    if (!found) {
        throw std::runtime_error(application.localizedName + ": " + found.error());
    }
    if (!*found) {
        throw MCPError::notFound("new window menu item of '" + bundleIdentifier + "'");
    }
    return std::move(**found);
}

// The windows of every running copy of the application: a new window may come with a new process
// of its own (a desktop action usually starts the program again).
std::optional<std::size_t> windowCount(const AutomationContext& context,
                                       const std::string& bundleIdentifier) {
    auto& accessibility = context.desktop.accessibilityPort();
    std::optional<std::size_t> total;
    for (const auto& application : context.desktop.applicationsPort().runningApplications()) {
        if (application.bundleIdentifier != bundleIdentifier) {
            continue;
        }
        const auto windows = readAttribute<std::vector<AXElement>>(
            accessibility, accessibility.applicationElement(application.processIdentifier),
            AXAttribute::kWindows);
        if (windows) {
            total = total.value_or(0) + windows->size();
        }
    }
    return total;
}

struct NewWindowWait {
    std::string bundleIdentifier;
    std::size_t windowsBefore = 0;
    int pollsLeft = kPollCount;
};

// Looks now and then every poll interval until the window count grows or the polls run out.
void awaitNewWindow(const std::weak_ptr<const AutomationContext>& weakContext, NewWindowWait wait,
                    MethodReply reply) {
    const auto context = weakContext.lock();
    if (!context) {
        return;
    }
    const auto count = windowCount(*context, wait.bundleIdentifier);
    if (count && *count > wait.windowsBefore) {
        reply(Json{{"bundleID", wait.bundleIdentifier}, {"windowCount", *count}});
        return;
    }
    if (wait.pollsLeft == 0) {
        reply(unexpected(std::string(kTimeoutText)));
        return;
    }
    --wait.pollsLeft;
    context->queue.postDelayed(kPollInterval,
                               [weakContext, wait = std::move(wait), reply = std::move(reply)] {
                                   awaitNewWindow(weakContext, wait, reply);
                               });
}

// Asks the way a person would, through the menu item or the launcher's action, and waits for the
// window: that works whatever key the application binds it to.
void openNewWindow(const SharedContext& context, const MethodParams& params, MethodReply& reply) {
    const std::string bundleIdentifier = params.requiredText(kBundleIdParam);
    auto& applications = context->desktop.applicationsPort();
    const auto application = requireRunningApplication(applications, bundleIdentifier);
    const NewWindowItem way = requireNewWindowWay(*context, application, bundleIdentifier);
    const auto before = windowCount(*context, bundleIdentifier);
    if (!before) {
        throw std::runtime_error("Cannot read the windows of " + application.localizedName);
    }
    // In front, the new window is the one the next snap acts on.
    applications.activate(application.processIdentifier);
    if (const auto* item = std::get_if<FoundMenuItem>(&way.how)) {
        const AXErrorCode pressed =
            context->desktop.accessibilityPort().performAction(item->item, AXAction::kPress);
        if (pressed != AXErrorCode::success) {
            throw std::runtime_error("Cannot press " + way.menuName + " > " + way.itemTitle + ": " +
                                     describe(pressed));
        }
    } else if (const auto performed = applications.performApplicationAction(
                   application.processIdentifier, way.menuName);
               !performed) {
        throw std::runtime_error("Cannot perform " + way.menuName + " of " +
                                 application.localizedName + ": " + performed.error());
    }
    methodsLogger(*context).info("Opening a new window of " + application.description() +
                                 " through " + way.menuName + " > " + way.itemTitle);
    awaitNewWindow(context, NewWindowWait{bundleIdentifier, *before},
                   std::exchange(reply, nullptr));
}

Json discoverNewWindowShortcut(const AutomationContext& context, const MethodParams& params) {
    const std::string bundleIdentifier = params.requiredText(kBundleIdParam);
    const auto application =
        requireRunningApplication(context.desktop.applicationsPort(), bundleIdentifier);
    const NewWindowItem way = requireNewWindowWay(context, application, bundleIdentifier);
    return Json{{"bundleID", bundleIdentifier},
                {"menuName", way.menuName},
                {"itemTitle", way.itemTitle},
                {"shortcut", way.shortcut.empty() ? Json(nullptr) : Json(way.shortcut)}};
}

}  // namespace

void addNewWindowMethods(MethodTable& table, const SharedContext& context) {
    table["open_new_window"] = [context](const MethodParams& params, MethodReply& reply) {
        openNewWindow(context, params, reply);
    };
    table["discover_new_window_shortcut"] = answeringAtOnce([context](const MethodParams& params) {
        return discoverNewWindowShortcut(*context, params);
    });
}

}  // namespace corvetta
