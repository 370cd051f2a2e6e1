#include "workspaces/application_readiness.h"

#include <variant>

#include "windowing/new_window_item.h"
#include "workspaces/live_windows.h"

namespace corvetta {

struct ApplicationReadiness::Run {
    ReadinessRequest request;
    std::function<void(const std::string&)> status;
    std::function<void(const ReadinessResult&)> done;
    ReadinessResult result;
    // The name people know it by, once it runs; its bundle identifier until then.
    std::string name;
    WorkItem poll;
};

ApplicationReadiness::ApplicationReadiness(AccessibilityPort& accessibility,
                                           ApplicationsPort& applications, MainQueue& queue,
                                           LoggingService& logging, ReadinessTimings timings)
    : accessibility_(accessibility),
      applications_(applications),
      queue_(queue),
      logger(logging, "WorkspaceRestoration"),
      timings_(timings),
      alive_(std::make_shared<bool>(true)) {}

ApplicationReadiness::~ApplicationReadiness() = default;

void ApplicationReadiness::prepare(ReadinessRequest request,
                                   std::function<void(const std::string&)> status,
                                   std::function<void(const ReadinessResult&)> done) {
    auto run = std::make_shared<Run>();
    run->name = request.bundleIdentifier;
    run->request = std::move(request);
    run->status = std::move(status);
    run->done = std::move(done);
    const auto copies = runningCopiesOf(applications_, run->request.bundleIdentifier);
    if (!copies.empty()) {
        run->name = copies.front().localizedName;
        openMissingWindows(run);
        return;
    }
    if (!run->request.mayLaunch) {
        run->result.outcome = ReadinessResult::Outcome::notLaunched;
        run->result.reason = "not running, and this workspace does not launch missing apps";
        logger.info("Not launching " + run->name + ": the workspace skips missing apps");
        finish(run);
        return;
    }
    run->status("Launching " + run->name + "…");
    logger.info("Launching " + run->name);
    run->result.launched = true;
    applications_.launchApplication(run->request.bundleIdentifier,
                                    [this, alive = std::weak_ptr<bool>(alive_), run](
                                        const Expected<RunningApplication, LaunchError>& outcome) {
                                        if (alive.lock()) {
                                            launched(run, outcome);
                                        }
                                    });
}

void ApplicationReadiness::launched(const std::shared_ptr<Run>& run,
                                    const Expected<RunningApplication, LaunchError>& outcome) {
    if (!outcome) {
        run->result.outcome = ReadinessResult::Outcome::failed;
        run->result.reason = "could not be launched: " + outcome.error().message;
        logger.error("Could not launch " + run->name + ": " + outcome.error().message);
        finish(run);
        return;
    }
    if (!outcome->localizedName.empty()) {
        run->name = outcome->localizedName;
    }
    run->status("Waiting for " + run->name + "…");
    awaitWindows(run, run->request.windowsWanted, timings_.firstWindow, [this, run] {
        if (windowCount(*run) == 0 && run->request.windowsWanted > 0) {
            // It may only open windows when asked (a launch that restores no session).
            logger.info(run->name + " launched without showing a window");
        }
        openMissingWindows(run);
    });
}

std::size_t ApplicationReadiness::windowCount(const Run& run) const {
    return standardWindowsOfApplication(accessibility_, applications_, run.request.bundleIdentifier)
        .size();
}

void ApplicationReadiness::awaitWindows(const std::shared_ptr<Run>& run, std::size_t wanted,
                                        Duration firstWait, std::function<void()> next) {
    struct Wait {
        std::size_t wanted;
        std::size_t seen;
        MonotonicTime deadline;
        std::function<void()> next;
    };
    auto wait = std::make_shared<Wait>(Wait{
        wanted, windowCount(*run), queue_.clock().monotonicNow() + firstWait, std::move(next)});
    auto check = std::make_shared<std::function<void()>>();
    *check = [this, run, wait, weakCheck = std::weak_ptr<std::function<void()>>(check)] {
        const std::size_t count = windowCount(*run);
        if (count >= wait->wanted) {
            wait->next();
            return;
        }
        const auto now = queue_.clock().monotonicNow();
        if (count > wait->seen) {
            wait->seen = count;
            wait->deadline = now + timings_.nextWindow;
        }
        if (now >= wait->deadline) {
            wait->next();
            return;
        }
        const auto again = weakCheck.lock();
        run->poll = queue_.postDelayed(timings_.poll, [alive = std::weak_ptr<bool>(alive_), again] {
            if (alive.lock()) {
                (*again)();
            }
        });
    };
    // The check owns itself through the poll it schedules; it ends with the last poll.
    const auto first = check;
    run->poll = queue_.postDelayed(Duration::zero(), [alive = std::weak_ptr<bool>(alive_), first] {
        if (alive.lock()) {
            (*first)();
        }
    });
}

void ApplicationReadiness::openMissingWindows(const std::shared_ptr<Run>& run) {
    const std::size_t count = windowCount(*run);
    if (count >= run->request.windowsWanted) {
        finish(run);
        return;
    }
    if (!requestNewWindow(run)) {
        if (count == 0 && run->request.windowsWanted > 0) {
            run->result.outcome = ReadinessResult::Outcome::failed;
            run->result.reason = "showed no window";
        }
        finish(run);
        return;
    }
    run->status("Opening a window of " + run->name + "…");
    awaitWindows(run, count + 1, timings_.firstWindow, [this, run, count] {
        const std::size_t now = windowCount(*run);
        if (now <= count) {
            logger.warning("No new window of " + run->name + " appeared");
            if (now == 0) {
                run->result.outcome = ReadinessResult::Outcome::failed;
                run->result.reason = "showed no window";
            }
            finish(run);
            return;
        }
        run->result.windowsAppeared += now - count;
        openMissingWindows(run);
    });
}

bool ApplicationReadiness::requestNewWindow(const std::shared_ptr<Run>& run) {
    const auto copies = runningCopiesOf(applications_, run->request.bundleIdentifier);
    if (copies.empty()) {
        logger.warning(run->name + " quit before its windows were restored");
        return false;
    }
    const ProcessId process = copies.front().processIdentifier;
    const auto found = findNewWindowItem(accessibility_, applications_, process);
    if (!found || !*found) {
        logger.warning(run->name + " offers no new-window item: " +
                       (found ? std::string("none found") : found.error()));
        return false;
    }
    const NewWindowItem& way = **found;
    if (const auto* item = std::get_if<FoundMenuItem>(&way.how)) {
        if (const auto pressed = accessibility_.performAction(item->item, AXAction::kPress);
            pressed != AXErrorCode::success) {
            logger.warning("Cannot press " + way.menuName + " > " + way.itemTitle + " of " +
                           run->name + ": " + describe(pressed));
            return false;
        }
    } else if (const auto performed = applications_.performApplicationAction(process, way.menuName);
               !performed) {
        logger.warning("Cannot perform " + way.menuName + " of " + run->name + ": " +
                       performed.error());
        return false;
    }
    ++run->result.windowsRequested;
    logger.info("Opening a new window of " + run->name + " through " + way.menuName + " > " +
                way.itemTitle);
    return true;
}

void ApplicationReadiness::finish(const std::shared_ptr<Run>& run) {
    run->poll.cancel();
    queue_.post([alive = std::weak_ptr<bool>(alive_), run] {
        if (alive.lock() && run->done) {
            auto done = std::exchange(run->done, nullptr);
            done(run->result);
        }
    });
}

}  // namespace corvetta
