#include "workspaces/auto_restore_on_wake_service.h"

#include <algorithm>
#include <cstdio>

#include "workspaces/auto_restore_decision.h"
#include "workspaces/display_arrangement_stability_service.h"
#include "workspaces/display_change_monitor_service.h"
#include "workspaces/workspace_restorer.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

namespace {

std::string seconds(Duration duration) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", std::chrono::duration<double>(duration).count());
    return text;
}

}  // namespace

AutoRestoreOnWakeService::AutoRestoreOnWakeService(Services services)
    : services_(services),
      logger_(services.logging, "AutoRestoreOnWakeService"),
      quietWork_(services.queue),
      maxWaitWork_(services.queue),
      probeWork_(services.queue),
      probe_(services.accessibility, services.applications) {}

void AutoRestoreOnWakeService::start() {
    if (started_) {
        return;
    }
    started_ = true;
    wakeObserver_ = services_.sleepWake.observeDidWake([this] { handleDidWake(); });
    displayObserver_ = services_.notifications.addObserver(
        kDisplayArrangementDidChangeNotification,
        [this](const Notification&) { handleDisplayConfigChanged(); });
    logger_.info("AutoRestoreOnWakeService started");
}

void AutoRestoreOnWakeService::handleDidWake() {
    signal("system did wake", true);
}

void AutoRestoreOnWakeService::handleDisplayConfigChanged() {
    signal("display configuration changed", false);
}

void AutoRestoreOnWakeService::signal(const std::string& reason, bool isWake) {
    logger_.info("🔌 Auto-restore signal received (" + reason + ")");
    pendingIncludesWake_ = pendingIncludesWake_ || isWake;
    if (!pendingReason_) {
        pendingReason_ = reason;
        maxWaitWork_.schedule(kMaxWait, [this] { settle("max wait"); });
    }
    quietWork_.schedule(kQuietDelay, [this] { settle("quiet period"); });
}

void AutoRestoreOnWakeService::settle(const char* timer) {
    if (!pendingReason_) {
        return;
    }
    quietWork_.cancel();
    maxWaitWork_.cancel();
    const std::string reason = std::move(*pendingReason_);
    pendingReason_.reset();
    const bool didWake = std::exchange(pendingIncludesWake_, false);
    logger_.info("🔌 Auto-restore quiescence settled (" + std::string(timer) +
                 "), signal: " + reason);
    evaluate(didWake);
}

std::optional<Workspace> AutoRestoreOnWakeService::lastRestoredWorkspace() const {
    const auto stored = services_.defaults.string(WorkspaceRestorer::kLastRestoredWorkspaceIDKey);
    const auto id = stored ? Uuid::parse(*stored) : std::nullopt;
    const Workspace* workspace = id ? services_.workspaces.workspace(*id) : nullptr;
    return workspace ? std::optional<Workspace>(*workspace) : std::nullopt;
}

std::optional<DisplayChangeType> AutoRestoreOnWakeService::changeTypeFor(
    const Workspace& workspace) {
    const auto& current = services_.displayMonitor.currentArrangement();
    if (!workspace.displayArrangement || !current) {
        return std::nullopt;
    }
    return services_.displayStability.analyzeDisplayChange(*workspace.displayArrangement, *current)
        .changeType;
}

void AutoRestoreOnWakeService::evaluate(bool didWake) {
    auto workspace = lastRestoredWorkspace();
    const bool tracked = workspace && trackedWorkspaceID_ == workspace->id;
    AutoRestoreDecisionInput input{
        .enabled = services_.defaults.boolValue(kEnabledKey).value_or(kEnabledByDefault),
        .isRestoring = services_.restorer.isRestoring() || awaitingReadiness_.has_value(),
        .now = services_.queue.clock().now(),
        .lastFireTime = lastAutoRestoreFireTime_,
        .cooldown = kCooldown,
        .workspace = std::nullopt,
        .activeSpaceId = services_.workspaces.activeSpaceId(),
        .changeType = workspace ? changeTypeFor(*workspace) : std::nullopt,
        .wasMissing = tracked && missingDisplayForWorkspace_,
        .didWake = didWake,
    };
    trackedWorkspaceID_ = workspace ? workspace->id : std::nullopt;
    input.workspace = std::move(workspace);

    const AutoRestoreDecision decision = decideAutoRestore(input);
    missingDisplayForWorkspace_ = decision.displayMissing;
    if (!decision.shouldFire) {
        logger_.info("Auto-restore skipped: " + decision.reason);
        return;
    }
    const std::string& name = input.workspace->name;
    logger_.info("⏱ AUTO-RESTORE trigger '" + name + "' (" + decision.reason + ")");
    lastAutoRestoreFireTime_ = input.now;
    logger_.info("💤 Waiting for AX writes to be accepted before restoring '" + name + "'");
    awaitingReadiness_ = std::move(input.workspace);
    probeStarted_ = services_.queue.clock().monotonicNow();
    pollReadiness();
}

void AutoRestoreOnWakeService::pollReadiness() {
    if (probe_.writesAccepted()) {
        restoreAwaited();
        return;
    }
    const Duration waited = services_.queue.clock().monotonicNow() - probeStarted_;
    const Duration timeout = kReadinessTimeout;
    if (waited >= timeout) {
        logger_.warning("💤 AX readiness probe timed out after " + seconds(waited) +
                        "s — restoring anyway");
        restoreAwaited();
        return;
    }
    const Duration interval = kReadinessPollInterval;
    probeWork_.schedule(std::min(interval, timeout - waited), [this] { pollReadiness(); });
}

void AutoRestoreOnWakeService::restoreAwaited() {
    Workspace workspace = std::move(*awaitingReadiness_);
    awaitingReadiness_.reset();
    services_.restorer.restore(workspace, RestoreTrigger::automatic, [](const RestoreReport&) {});
}

}  // namespace corvetta
