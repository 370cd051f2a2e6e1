#include "workspaces/workspace_restoration.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <vector>

#include "windowing/ax_reading.h"
#include "workspaces/display_migration.h"
#include "workspaces/live_windows.h"
#include "workspaces/window_matching.h"

namespace corvetta {

namespace {

std::string plural(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

}  // namespace

// A window that was given its place, for the stacking and state that follow the moves.
struct WorkspaceRestoration::Placement {
    AXElement window;
    std::optional<WindowNumber> number;
    int zOrder = 0;
    bool fullscreen = false;
    bool minimized = false;
};

struct WorkspaceRestoration::Run {
    Workspace workspace;
    RestoreTrigger trigger = RestoreTrigger::user;
    RestoreCompletion done;
    RestoreReport report;
    // Each application's saved windows, by index into the workspace's windows, in their saved
    // index order; applications in the order their first window was captured.
    std::vector<std::string> applications;
    std::map<std::string, std::vector<std::size_t>> savedWindows;
    std::set<std::string> ready;
    std::size_t applicationsPending = 0;
    int movesPending = 0;
    std::vector<WindowMoveRequest> moves;
    std::vector<Placement> placements;
    bool abandoned = false;
};

WorkspaceRestoration::WorkspaceRestoration(Ports ports, AccessibilityElement& accessibilityElement,
                                           WindowMover& windowMover, DeeplinkOpener& deeplinks,
                                           WorkspaceService& workspaceService,
                                           const WorkspaceCapture& capture, Preferences& defaults,
                                           MainQueue& queue, LoggingService& logging,
                                           ReadinessTimings timings)
    : ports_(ports),
      accessibilityElement_(accessibilityElement),
      windowMover_(windowMover),
      deeplinks_(deeplinks),
      workspaceService_(workspaceService),
      capture_(capture),
      defaults_(defaults),
      queue_(queue),
      logger(logging, kServiceName),
      readiness_(ports.accessibility, ports.applications, queue, logging, timings),
      alive_(std::make_shared<bool>(true)) {}

WorkspaceRestoration::~WorkspaceRestoration() {
    if (current_) {
        workspaceService_.restoreGate().end();
    }
}

bool WorkspaceRestoration::isRestoring() const {
    return workspaceService_.restoreGate().isHeld();
}

bool WorkspaceRestoration::isCurrent(const std::shared_ptr<Run>& run) const {
    return !run->abandoned && current_ == run;
}

void WorkspaceRestoration::setStatus(std::string message) {
    statusMessage_ = std::move(message);
    if (!statusMessage_.empty()) {
        logger.debug("Status: " + statusMessage_);
    }
}

void WorkspaceRestoration::restore(const Workspace& workspace, RestoreTrigger trigger,
                                   RestoreCompletion done) {
    auto run = std::make_shared<Run>();
    run->workspace = workspace;
    run->trigger = trigger;
    run->done = std::move(done);
    run->report.workspaceName = workspace.name;
    run->report.windowsSaved = static_cast<int>(workspace.windowInfos.size());

    switch (workspaceService_.restoreGate().tryBegin()) {
        case RestoreGate::Entry::busy:
            logger.warning("Not restoring '" + workspace.name + "': " + kBusy);
            run->report.began = false;
            run->report.summary = kBusy;
            queue_.post([run] { run->done(run->report); });
            return;
        case RestoreGate::Entry::tookOverStale:
            logger.warning("The restoration under way began more than " +
                           std::to_string(std::chrono::duration_cast<std::chrono::seconds>(
                                              workspaceService_.restoreGate().staleAfter())
                                              .count()) +
                           " s ago and never finished; taking over");
            if (current_) {
                current_->abandoned = true;
            }
            break;
        case RestoreGate::Entry::begun:
            break;
    }
    current_ = run;

    for (std::size_t i = 0; i < workspace.windowInfos.size(); ++i) {
        const auto& bundle = workspace.windowInfos[i].appBundleIdentifier;
        if (!bundle || bundle->empty()) {
            logger.warning("Skipping saved window " + std::to_string(i) +
                           ": it names no application");
            continue;
        }
        auto [entry, added] = run->savedWindows.try_emplace(*bundle);
        if (added) {
            run->applications.push_back(*bundle);
        }
        entry->second.push_back(i);
    }
    for (auto& [bundle, indices] : run->savedWindows) {
        std::stable_sort(indices.begin(), indices.end(), [&](std::size_t a, std::size_t b) {
            return workspace.windowInfos[a].windowIndex.value_or(0) <
                   workspace.windowInfos[b].windowIndex.value_or(0);
        });
    }
    logger.info("Restoring workspace '" + workspace.name +
                "': " + plural(workspace.windowInfos.size(), "window") + " of " +
                plural(run->applications.size(), "app") +
                (trigger == RestoreTrigger::automatic ? " (automatic)" : ""));
    setStatus("Restoring '" + workspace.name + "'…");

    run->applicationsPending = run->applications.size();
    if (run->applications.empty()) {
        place(run);
        return;
    }
    const bool mayLaunch = !workspace.skipLaunchMissingApps.value_or(false);
    for (const auto& bundle : run->applications) {
        readiness_.prepare(
            {bundle, run->savedWindows[bundle].size(), mayLaunch},
            [this, run](const std::string& status) {
                if (isCurrent(run)) {
                    setStatus(status);
                }
            },
            [this, run, bundle](const ReadinessResult& result) {
                applicationReady(run, bundle, result);
            });
    }
}

void WorkspaceRestoration::applicationReady(const std::shared_ptr<Run>& run,
                                            const std::string& bundleIdentifier,
                                            const ReadinessResult& result) {
    switch (result.outcome) {
        case ReadinessResult::Outcome::ready:
            run->ready.insert(bundleIdentifier);
            run->report.windowsOpened += static_cast<int>(result.windowsAppeared);
            break;
        case ReadinessResult::Outcome::notLaunched:
            logger.info("Leaving out " + bundleIdentifier + ": " + result.reason);
            break;
        case ReadinessResult::Outcome::failed:
            logger.error("Leaving out " + bundleIdentifier + ": " + result.reason);
            run->report.failedApplications.push_back(bundleIdentifier);
            break;
    }
    if (--run->applicationsPending == 0) {
        place(run);
    }
}

void WorkspaceRestoration::place(const std::shared_ptr<Run>& run) {
    if (!isCurrent(run)) {
        finish(run);
        return;
    }
    // The displays of this moment, not of the request: launches may have taken seconds, and a
    // restore after a wake must see the displays that came back.
    const DisplayMigration migration(run->workspace.displayArrangement, ports_.screens.screens());
    for (const auto& bundle : run->applications) {
        if (run->ready.contains(bundle)) {
            placeApplication(run, bundle, migration);
        }
    }
    startMoves(run);
}

void WorkspaceRestoration::startMoves(const std::shared_ptr<Run>& run) {
    const auto moves = std::exchange(run->moves, {});
    setStatus("Placing " + plural(moves.size(), "window") + "…");
    if (moves.empty()) {
        arrange(run);
        return;
    }
    run->movesPending = static_cast<int>(moves.size());
    // Every move at once, each verified and retried on its own, so a window that snaps to
    // character cells does not hold up the others.
    windowMover_.moveWindows(moves, [this, alive = std::weak_ptr<bool>(alive_), run](
                                        std::size_t, const WindowMoveResult& result) {
        if (alive.lock()) {
            moved(run, result);
        }
    });
}

bool WorkspaceRestoration::setFlag(const AXElement& window, std::string_view attribute, bool value,
                                   const char* what) {
    const AXErrorCode set = ports_.accessibility.setAttributeValue(window, attribute, value);
    if (set != AXErrorCode::success) {
        logger.warning(std::string("Cannot ") + what + " " + window.description() + ": " +
                       describe(set));
    }
    return set == AXErrorCode::success;
}

void WorkspaceRestoration::placeApplication(const std::shared_ptr<Run>& run,
                                            const std::string& bundleIdentifier,
                                            const DisplayMigration& migration) {
    const auto live =
        standardWindowsOfApplication(ports_.accessibility, ports_.applications, bundleIdentifier);
    const auto& indices = run->savedWindows[bundleIdentifier];
    std::vector<SavedWindowIdentity> identities;
    for (const auto index : indices) {
        const auto& info = run->workspace.windowInfos[index];
        identities.push_back({info.windowTitle, info.windowIndex});
    }
    std::vector<std::string> titles;
    for (const auto& window : live) {
        titles.push_back(window.title);
    }
    const auto matching = matchWindows(identities, titles);
    for (const auto unmatched : matching.unmatchedSaved) {
        logger.warning("No window of " + bundleIdentifier + " for saved window '" +
                       run->workspace.windowInfos[indices[unmatched]].windowTitle.value_or("") +
                       "'");
    }

    const auto screens = ports_.screens.screens();
    for (const auto& match : matching.matches) {
        const WindowInfo& saved = run->workspace.windowInfos[indices[match.saved]];
        const LiveWindow& window = live[match.live];
        const bool keepMinimized = saved.isMinimized.value_or(false);
        Placement placement{window.element, window.number, saved.zOrder.value_or(0),
                            saved.isFullscreen, keepMinimized};
        if (window.isMinimized && keepMinimized) {
            // Where it stands matters once the user brings it back; until then it is in place.
            logger.info("Leaving " + bundleIdentifier + " '" + window.title + "' minimized");
            ++run->report.windowsPlaced;
            run->placements.push_back(placement);
            continue;
        }
        // Full-screen and minimized windows do not move: bring them out first. A window saved in
        // full screen goes back to its display and enters full screen there afterwards.
        if (window.isFullscreen) {
            setFlag(window.element, AXAttribute::kFullScreen, false, "take out of full screen");
        }
        if (window.isMinimized) {
            setFlag(window.element, AXAttribute::kMinimized, false, "unminimize");
        }
        const auto migrated = migration.migrate(saved);
        if (!migrated || migrated->screenIndex >= screens.size()) {
            logger.error("No display to place " + bundleIdentifier + " '" + window.title + "' on");
            continue;
        }
        logger.info("Placing " + bundleIdentifier + " '" + window.title + "' (matched by " +
                    windowMatchRuleName(match.rule) + ") at " + migrated->frame.description() +
                    " (" + migrationRuleName(migrated->rule) + ")");
        run->placements.push_back(placement);
        run->moves.push_back(WindowMoveRequest{
            window.element, accessibilityElement_.convertFrame(migrated->frame),
            screens[migrated->screenIndex], false, kMoveAttempts, std::nullopt, 0});
    }
}

void WorkspaceRestoration::moved(const std::shared_ptr<Run>& run, const WindowMoveResult& result) {
    if (result) {
        ++run->report.windowsPlaced;
    } else {
        logger.warning("A window was not placed: " + std::string(description(result.error())));
    }
    if (--run->movesPending == 0) {
        arrange(run);
    }
}

void WorkspaceRestoration::arrange(const std::shared_ptr<Run>& run) {
    if (!isCurrent(run)) {
        finish(run);
        return;
    }
    setStatus("Stacking windows…");
    raiseInSavedOrder(run);
    for (const auto& placement : run->placements) {
        if (placement.fullscreen) {
            setFlag(placement.window, AXAttribute::kFullScreen, true, "put in full screen");
        } else if (placement.minimized) {
            setFlag(placement.window, AXAttribute::kMinimized, true, "minimize");
        }
    }
    dealWithOtherApplications(run);
}

void WorkspaceRestoration::raiseInSavedOrder(const std::shared_ptr<Run>& run) {
    std::vector<Placement> frontToBack;
    for (const auto& placement : run->placements) {
        if (!placement.minimized) {
            frontToBack.push_back(placement);
        }
    }
    std::stable_sort(frontToBack.begin(), frontToBack.end(),
                     [](const Placement& a, const Placement& b) { return a.zOrder < b.zOrder; });
    // Windows at the back that already lie in the saved order among themselves stay put: raising
    // the ones in front of them, back to front, puts everything in order. Raising less spares the
    // user a storm of focus changes (each raise activates the window on X11).
    std::map<WindowNumber, std::size_t> stackPlace;
    const auto stack = ports_.windowList.windowNumbersFrontToBack();
    for (std::size_t i = 0; i < stack.size(); ++i) {
        stackPlace.emplace(stack[i], i);
    }
    const auto placeOf = [&](const Placement& placement) -> std::optional<std::size_t> {
        if (!placement.number) {
            return std::nullopt;
        }
        const auto found = stackPlace.find(*placement.number);
        return found == stackPlace.end() ? std::nullopt : std::optional(found->second);
    };
    std::size_t settled = frontToBack.size();
    while (settled > 0) {
        const auto here = placeOf(frontToBack[settled - 1]);
        const auto behind =
            settled < frontToBack.size() ? placeOf(frontToBack[settled]) : std::nullopt;
        if (!here || (settled < frontToBack.size() && (!behind || *here > *behind))) {
            break;
        }
        --settled;
    }
    for (std::size_t i = settled; i-- > 0;) {
        const AXErrorCode raised =
            ports_.accessibility.performAction(frontToBack[i].window, AXAction::kRaise);
        if (raised != AXErrorCode::success) {
            logger.warning("Cannot raise " + frontToBack[i].window.description() + ": " +
                           describe(raised));
        }
    }
}

void WorkspaceRestoration::dealWithOtherApplications(const std::shared_ptr<Run>& run) {
    if (!run->workspace.closeNonWorkspaceWindows.value_or(false)) {
        openDeeplinks(run);
        return;
    }
    const bool automatic = run->trigger == RestoreTrigger::automatic;
    if (automatic) {
        logger.info("Automatic restore of '" + run->workspace.name +
                    "': not closing other apps (hiding them instead)");
    }
    const std::set<std::string> kept(run->applications.begin(), run->applications.end());
    const ProcessId self = ports_.applications.currentApplication().processIdentifier;
    std::size_t count = 0;
    for (const auto& application : ports_.applications.runningApplications()) {
        // The user's excluded applications are never arranged, so never closed either.
        if (application.activationPolicy != ActivationPolicy::regular ||
            application.processIdentifier == self || !application.bundleIdentifier ||
            kept.contains(*application.bundleIdentifier) ||
            capture_.isExcluded(*application.bundleIdentifier)) {
            continue;
        }
        if (automatic) {
            count += ports_.applications.hide(application.processIdentifier) ? 1 : 0;
            continue;
        }
        const auto windows = standardWindowsOf(ports_.accessibility, application.processIdentifier);
        for (const auto& window : windows.value_or(std::vector<LiveWindow>{})) {
            const auto button = readAttribute<AXElement>(ports_.accessibility, window.element,
                                                         AXAttribute::kCloseButton);
            if (button && ports_.accessibility.performAction(*button, AXAction::kPress) ==
                              AXErrorCode::success) {
                ++count;
            } else {
                logger.warning("Cannot close " + application.description() + " '" + window.title +
                               "'");
            }
        }
    }
    logger.info(automatic ? "Hid " + plural(count, "other app")
                          : "Closed " + plural(count, "window") + " of other apps");
    openDeeplinks(run);
}

void WorkspaceRestoration::openDeeplinks(const std::shared_ptr<Run>& run) {
    const auto& links = run->workspace.appDeeplinks;
    if (!links || links->empty()) {
        finish(run);
        return;
    }
    setStatus("Opening deeplinks…");
    deeplinks_.openDeeplinks(run->workspace, [this, alive = std::weak_ptr<bool>(alive_),
                                              run](const DeeplinkReport& report) {
        if (alive.lock()) {
            run->report.deeplinksOpened = report.opened;
            run->report.deeplinksRaised = report.raised;
            finish(run);
        }
    });
}

void WorkspaceRestoration::finish(const std::shared_ptr<Run>& run) {
    auto& report = run->report;
    if (run->abandoned) {
        report.summary = "Restoration of '" + report.workspaceName + "' was taken over";
        logger.warning(report.summary);
    } else {
        if (run->workspace.id) {
            defaults_.set(kLastRestoredWorkspaceIDKey, run->workspace.id->string());
        }
        report.summary =
            "Restored '" + report.workspaceName + "': " + std::to_string(report.windowsPlaced) +
            " of " + plural(static_cast<std::size_t>(report.windowsSaved), "window") + " placed";
        if (report.windowsOpened > 0) {
            report.summary += ", " + std::to_string(report.windowsOpened) + " opened";
        }
        if (!report.failedApplications.empty()) {
            report.summary += "; failed: " + joined(report.failedApplications);
        }
        logger.info(report.summary);
    }
    if (isCurrent(run)) {
        current_.reset();
        setStatus("");
        workspaceService_.restoreGate().end();
    }
    queue_.post([alive = std::weak_ptr<bool>(alive_), run] {
        if (alive.lock() && run->done) {
            auto done = std::exchange(run->done, nullptr);
            done(run->report);
        }
    });
}

}  // namespace corvetta
