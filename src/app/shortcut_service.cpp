#include "app/shortcut_service.h"

#include <algorithm>

#include "app/shortcut_families.h"
#include "layouts/layout_template.h"
#include "shortcuts/shortcut_names.h"
#include "windowing/window_action.h"

namespace corvetta {

using shortcut_families::familyTable;
using shortcut_families::normalized;

namespace {

constexpr const char* kQuitAppName = "quitApp";

// The window actions and the built-in layouts: the keys that move windows.
std::vector<std::string> windowManagementNames() {
    auto names = shortcutNames(ShortcutRole::windowAction);
    for (auto& name : shortcutNames(ShortcutRole::layoutPreset)) {
        names.push_back(std::move(name));
    }
    return names;
}

}  // namespace

ShortcutService::ShortcutService(Services services, Actions actions)
    : services_(services),
      actions_(std::move(actions)),
      logger_(services.logging, "ShortcutService", LogCategory::shortcut()),
      cycle_({.workspaces = services.workspaceService,
              .spaces = services.spaceManager,
              .restorer = services.restorer,
              .events = services.events,
              .defaults = services.defaults,
              .notifications = services.notifications,
              .logging = services.logging}) {}

ShortcutService::~ShortcutService() {
    unregisterAllShortcuts();
}

bool ShortcutService::isWindowManagementEnabled() const {
    return services_.defaults.boolValue(kWindowManagementEnabledKey).value_or(true);
}

bool ShortcutService::windowActionsWanted() const {
    return permissionGranted_ && isWindowManagementEnabled();
}

void ShortcutService::registerAllShortcuts() {
    started_ = true;
    logger_.info("Registering keyboard shortcuts...");
    if (!isWindowManagementEnabled()) {
        logger_.info("Window management features disabled, skipping window management shortcuts");
    } else if (!permissionGranted_) {
        logger_.info("Accessibility permission missing, skipping window management shortcuts");
    } else {
        registerWindowManagementShortcuts();
    }
    registerFixedShortcuts();
    registerRecordShortcuts();
    observeStores();
    logger_.info("All shortcuts registered.");
}

void ShortcutService::updateWindowManagementShortcuts(bool accessibilityPermissionGranted) {
    permissionGranted_ = accessibilityPermissionGranted;
    if (!started_ || windowActionsWanted() == windowActionsRegistered_) {
        return;
    }
    if (windowActionsRegistered_) {
        unregisterWindowManagementShortcuts();
    } else {
        registerWindowManagementShortcuts();
    }
}

void ShortcutService::registerWindowManagementShortcuts() {
    logger_.info("Registering window management shortcuts...");
    for (const auto& name : shortcutNames(ShortcutRole::windowAction)) {
        const auto action = WindowAction::fromShortcutName(name);
        if (!action) {
            logger_.error("No window action for shortcut " + name);
            continue;
        }
        services_.shortcutBridge.registerShortcut(name, [this, action = *action] {
            logger_.debug("Shortcut pressed: " + std::string(action.name()));
            action.perform(services_.snappingService);
        });
    }
    for (const auto& name : shortcutNames(ShortcutRole::layoutPreset)) {
        services_.shortcutBridge.registerShortcut(name, [this, name] { applyBuiltInLayout(name); });
    }
    windowActionsRegistered_ = true;
    logger_.info("Window management shortcuts registered");
}

void ShortcutService::unregisterWindowManagementShortcuts() {
    logger_.info("Unregistering window management shortcuts...");
    for (const auto& name : windowManagementNames()) {
        services_.shortcutBridge.unregisterShortcut(name);
    }
    windowActionsRegistered_ = false;
    logger_.info("Window management shortcuts unregistered");
}

void ShortcutService::unregisterAllShortcuts() {
    storeObservers_.clear();
    cycle_.cancel();
    services_.shortcutBridge.unregisterAllShortcuts();
    for (auto& registered : registeredRecordShortcuts_) {
        registered.clear();
    }
    windowActionsRegistered_ = false;
    started_ = false;
}

void ShortcutService::registerFixedShortcuts() {
    struct Fixed {
        const char* name;
        const char* triggered;
        std::function<void()> run;
    };
    auto& presenter = services_.windowPresenter;
    const std::vector<Fixed> fixed{
        {"saveWorkspace", "Save Workspace shortcut triggered",
         [&presenter] { presenter.showSaveWorkspaceWindow(); }},
        {"addSpace", "Add Space shortcut triggered",
         [&presenter] { presenter.showAddSpaceWindow(); }},
        {"newLayout", "New Layout shortcut triggered",
         [&presenter] { presenter.showNewLayoutWindow(); }},
        {"commandPalette", "Command palette shortcut triggered",
         [&presenter] { presenter.toggleCommandPalette(); }},
        {kQuitAppName, "Quit App shortcut triggered", [this] { actions_.quit(); }},
        {"cycleWorkspaces", "Cycle workspaces shortcut triggered",
         [this] { cycle_.cycleWorkspaces(); }},
        {"cycleSpaces", "Cycle spaces shortcut triggered", [this] { cycle_.cycleSpaces(); }},
    };
    // While the user never chose a combination the name's own default is the one that answers.
    if (services_.hotKeyStore.entry(kQuitAppName).kind == HotKeyStore::EntryKind::absent) {
        logger_.info("Using fallback shortcut for Quit App");
    }
    for (const auto& command : fixed) {
        services_.shortcutBridge.registerShortcut(
            command.name, [this, triggered = command.triggered, run = command.run] {
                logger_.info(triggered);
                run();
            });
    }
}

void ShortcutService::applyBuiltInLayout(const std::string& shortcutName) {
    for (const auto& row : layoutTemplateTable()) {
        if (row.legacyShortcutName != shortcutName) {
            continue;
        }
        for (const auto& layout : services_.layoutStore.layouts()) {
            if (layout.defaultTemplateKey == row.rawValue) {
                logger_.info("Applying built-in layout '" + layout.name + "'");
                actions_.applyLayout(layout.id);
                return;
            }
        }
        logger_.warning("No layout template left for the built-in layout '" +
                        std::string(row.name) + "'");
        return;
    }
}

void ShortcutService::unregisterRecordShortcuts() {
    for (auto& registered : registeredRecordShortcuts_) {
        for (const auto& [id, name] : registered) {
            services_.shortcutBridge.unregisterShortcut(name);
        }
        registered.clear();
    }
}

void ShortcutService::registerRecordShortcuts() {
    std::vector<std::string> previous;
    for (const auto& registered : registeredRecordShortcuts_) {
        for (const auto& [id, name] : registered) {
            previous.push_back(name);
        }
    }
    // All go first, so a combination that moved from one record to another is free when the
    // second one takes it.
    unregisterRecordShortcuts();
    const auto records = recordShortcuts();
    auto& bridge = services_.shortcutBridge;
    for (std::size_t family = 0; family < familyTable().size(); ++family) {
        const auto& row = familyTable()[family];
        for (const auto* line : row.startLines) {
            logger_.info(line);
        }
        for (const auto& record : records) {
            if (static_cast<std::size_t>(record.family) != family || !record.shortcut) {
                continue;
            }
            if (bridge.shortcut(record.name) != normalized(*record.shortcut)) {
                bridge.setShortcut(record.name, record.shortcut);
            }
            bridge.registerShortcut(record.name, [this, kind = record.family, id = record.id] {
                pressRecord(kind, id);
            });
            registeredRecordShortcuts_[family].emplace(record.id, record.name);
            if (!bridge.isShortcutRegistered(record.name)) {
                const auto conflict = conflictFor(record.name, *record.shortcut);
                logger_.warning(conflict.value_or(std::string(row.conflictPrefix) +
                                                  "Shortcut conflicts with another application"));
            }
        }
        logger_.info(row.doneLine);
    }
    // A record that lost its shortcut or went away leaves nothing behind in the hot-key store.
    for (const auto& name : previous) {
        const bool stillUsed = std::any_of(
            registeredRecordShortcuts_.begin(), registeredRecordShortcuts_.end(),
            [&](const auto& registered) {
                return std::any_of(registered.begin(), registered.end(),
                                   [&](const auto& entry) { return entry.second == name; });
            });
        if (!stillUsed && bridge.shortcut(name)) {
            bridge.setShortcut(name, std::nullopt);
        }
    }
}

void ShortcutService::observeStores() {
    storeObservers_.clear();
    for (const auto& row : familyTable()) {
        storeObservers_.push_back(
            services_.notifications.addObserver(row.didChange, [this](const Notification&) {
                logger_.info("Updating shortcuts...");
                registerRecordShortcuts();
            }));
    }
}

void ShortcutService::pressRecord(Family family, const Uuid& id) {
    switch (family) {
        case Family::workspace: {
            const auto* workspace = services_.workspaceService.workspace(id);
            if (!workspace) {
                return;
            }
            logger_.info("Workspace shortcut triggered: '" + workspace->name + "'");
            services_.restorer.restore(
                *workspace, RestoreTrigger::user,
                [logger = logger_](const RestoreReport& report) { logger.info(report.summary); });
            return;
        }
        case Family::space: {
            if (const auto* space = services_.spaceManager.space(id)) {
                logger_.info("Space shortcut triggered: '" + space->name + "'");
                services_.spaceManager.activate(id);
            }
            return;
        }
        case Family::layout: {
            if (const auto* layout = services_.layoutStore.find(id)) {
                logger_.info("Custom layout shortcut triggered: '" + layout->name + "'");
                actions_.applyLayout(id);
            }
            return;
        }
    }
}

}  // namespace corvetta
