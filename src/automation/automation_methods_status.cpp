#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "foundation/date.h"

namespace corvetta {

namespace {

Json getLogs(const AutomationContext& context, const MethodParams& params) {
    LogFilter filter;
    if (const auto level = params.optionalText("level")) {
        filter.minimumLevel = parseLogLevel(*level);
        if (!filter.minimumLevel) {
            throw MCPError::invalidParam("Invalid level: " + *level +
                                         " (expected debug, info, warning or error)");
        }
    }
    filter.limit = params.optionalCount("limit");
    filter.category = params.optionalText("category");
    filter.service = params.optionalText("service");
    filter.search = params.optionalText("search");

    Json entries = Json::array();
    for (const auto& entry : context.logbook.recentEntries(filter)) {
        entries.push_back(Json{{"timestamp", formatIso8601(entry.timestamp)},
                               {"level", logLevelName(entry.level)},
                               {"service", entry.service},
                               {"category", entry.category.rawValue},
                               {"message", entry.message}});
    }
    const std::size_t count = entries.size();
    return Json{{"count", count}, {"entries", std::move(entries)}};
}

Json getStatus(const AutomationContext& context) {
    Json notRegistered = Json::array();
    if (context.shortcutsNotRegistered) {
        for (const auto& [name, combination] : context.shortcutsNotRegistered()) {
            notRegistered.push_back(Json{{"name", name}, {"combination", combination}});
        }
    }
    return Json{{"statusMessage", context.statusMessage ? context.statusMessage() : ""},
                {"version", context.version},
                {"desktop", context.desktopDescription},
                {"shortcutsNotRegistered", std::move(notRegistered)},
                {"isRestoring", context.restorer.isRestoring()},
                {"restorationStatusMessage", context.restorer.restorationStatusMessage()}};
}

// Answers once the work queued before it has run, every window move under way has finished and
// the desktop has caught up, so a client that reads the desktop next sees all it asked for. The
// desktop is caught up first as well: a key press the server has already sent must start its move
// before the mover is asked whether it is idle.
void sync(const SharedContext& context, MethodReply& reply) {
    const std::weak_ptr<const AutomationContext> weak = context;
    context->queue.post([weak, reply = std::exchange(reply, nullptr)] {
        const auto queued = weak.lock();
        if (!queued) {
            return;
        }
        queued->desktop.synchronize([weak, reply] {
            const auto caughtUp = weak.lock();
            if (!caughtUp) {
                return;
            }
            caughtUp->windowMover.whenIdle([weak, reply] {
                if (const auto idle = weak.lock()) {
                    idle->desktop.synchronize([reply] { reply(Json::object()); });
                }
            });
        });
    });
}

}  // namespace

void addStatusMethods(MethodTable& table, const SharedContext& context) {
    table["get_logs"] = answeringAtOnce(
        [context](const MethodParams& params) { return getLogs(*context, params); });
    table["get_status"] =
        answeringAtOnce([context](const MethodParams&) { return getStatus(*context); });
    table["sync"] = [context](const MethodParams&, MethodReply& reply) { sync(context, reply); };
}

}  // namespace corvetta
