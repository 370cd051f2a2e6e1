#include <chrono>
#include <stdexcept>

#include "automation/mcp_error.h"
#include "automation/method_ax_reading.h"
#include "automation/method_groups.h"
#include "automation/method_menu_search.h"
#include "automation/method_support.h"

namespace corvetta {

namespace {

using namespace std::chrono_literals;

constexpr const char* kBundleIdParam = "bundle_id";
// A new window is looked for every 100 ms, for 5 s.
constexpr Duration kPollInterval = 100ms;
constexpr int kPollCount = 50;
constexpr const char* kTimeoutText = "window did not appear within 5s";

FoundMenuItem requireNewWindowItem(const AutomationContext& context,
                                   const RunningApplication& application,
                                   const std::string& bundleIdentifier) {
    auto found =
        findNewWindowMenuItem(context.desktop.accessibilityPort(), application.processIdentifier);
    if (!found) {
        throw std::runtime_error(application.localizedName + ": " + found.error());
    }
    if (!*found) {
        throw MCPError::notFound("new window menu item of '" + bundleIdentifier + "'");
    }
    return std::move(**found);
}

std::optional<std::size_t> windowCount(const AutomationContext& context, ProcessId application) {
    auto& accessibility = context.desktop.accessibilityPort();
    const auto windows = readAttribute<std::vector<AXElement>>(
        accessibility, accessibility.applicationElement(application), AXAttribute::kWindows);
    return windows ? std::optional(windows->size()) : std::nullopt;
}

struct NewWindowWait {
    ProcessId application = 0;
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
    const auto count = windowCount(*context, wait.application);
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

// Chooses the application's new-window menu item, the way a person would, and waits for the
// window: pressing the item works whatever key the application binds it to.
void openNewWindow(const SharedContext& context, const MethodParams& params, MethodReply& reply) {
    const std::string bundleIdentifier = params.requiredText(kBundleIdParam);
    const auto application =
        requireRunningApplication(context->desktop.applicationsPort(), bundleIdentifier);
    const FoundMenuItem item = requireNewWindowItem(*context, application, bundleIdentifier);
    const auto before = windowCount(*context, application.processIdentifier);
    if (!before) {
        throw std::runtime_error("Cannot read the windows of " + application.localizedName);
    }
    // In front, the new window is the one the next snap acts on.
    context->desktop.applicationsPort().activate(application.processIdentifier);
    const AXErrorCode pressed =
        context->desktop.accessibilityPort().performAction(item.item, AXAction::kPress);
    if (pressed != AXErrorCode::success) {
        throw std::runtime_error("Cannot press " + item.menuName + " > " + item.itemTitle + ": " +
                                 describe(pressed));
    }
    methodsLogger(*context).info("Opening a new window of " + application.description() +
                                 " through " + item.menuName + " > " + item.itemTitle);
    awaitNewWindow(context, NewWindowWait{application.processIdentifier, bundleIdentifier, *before},
                   std::exchange(reply, nullptr));
}

Json discoverNewWindowShortcut(const AutomationContext& context, const MethodParams& params) {
    const std::string bundleIdentifier = params.requiredText(kBundleIdParam);
    const auto application =
        requireRunningApplication(context.desktop.applicationsPort(), bundleIdentifier);
    const FoundMenuItem item = requireNewWindowItem(context, application, bundleIdentifier);
    return Json{{"bundleID", bundleIdentifier},
                {"menuName", item.menuName},
                {"itemTitle", item.itemTitle},
                {"shortcut", item.shortcut.empty() ? Json(nullptr) : Json(item.shortcut)}};
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
