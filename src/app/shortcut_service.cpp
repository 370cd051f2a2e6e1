#include "app/shortcut_service.h"

#include <algorithm>

#include "layouts/layout_template.h"
#include "shortcuts/key_labels.h"
#include "shortcuts/shortcut_names.h"
#include "windowing/window_action.h"

namespace corvetta {

namespace {

constexpr const char* kQuitAppName = "quitApp";

// The records' shortcut families: the name prefix, how the family's owners and conflicts read,
// the store announcing their changes, and the lines framing their registration.
struct FamilyRow {
    std::string_view prefix;
    std::string (*shortcutName)(std::string_view id);
    const char* noun;
    const char* conflictPrefix;
    const char* didChange;
    std::vector<const char*> startLines;
    const char* doneLine;
};

const std::array<FamilyRow, 3>& familyTable() {
    static const std::array<FamilyRow, 3> table{{
        {kWorkspaceShortcutPrefix,
         workspaceShortcutName,
         "workspace",
         "Workspace shortcut conflict: ",
         WorkspaceService::kWorkspacesDidChange,
         {"Registering workspace shortcuts...",
          "Registering workspace shortcuts with KeyboardShortcuts"},
         "Workspace shortcuts registration complete"},
        {kSpaceShortcutPrefix,
         spaceShortcutName,
         "space",
         "Space shortcut conflict: ",
         SpaceManager::kSpacesDidChange,
         {"Registering space shortcuts..."},
         "Space shortcuts registration complete"},
        {kLayoutShortcutPrefix,
         layoutShortcutName,
         "layout",
         "Layout shortcut conflict: ",
         CustomLayoutStore::kDidChangeNotification,
         {"Registering custom layout shortcuts..."},
         "Custom layout shortcuts registration complete"},
    }};
    return table;
}

constexpr const char* kActionConflictPrefix = "Shortcut conflict: ";

// Both the records' optional halves, or nothing.
template <class Record>
std::optional<Shortcut> recordShortcut(const Record& record) {
    if (!record.shortcutKeyCode || !record.shortcutModifiers) {
        return std::nullopt;
    }
    return Shortcut{*record.shortcutKeyCode, *record.shortcutModifiers};
}

// Only the four modifiers make a combination different; the other flag bits never reach a hot key.
Shortcut normalized(const Shortcut& shortcut) {
    return {shortcut.keyCode, ShortcutConverter::eventModifierFlags(
                                  ShortcutConverter::carbonModifiers(shortcut.modifiers))};
}

std::string quoted(const char* noun, const std::string& name) {
    return std::string(noun) + " '" + name + "'";
}

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

std::vector<ShortcutService::RecordShortcut> ShortcutService::recordShortcuts() const {
    std::vector<RecordShortcut> records;
    const auto add = [&](Family family, const Uuid& id, const std::string& recordName,
                         std::optional<Shortcut> shortcut) {
        const auto& row = familyTable()[static_cast<std::size_t>(family)];
        records.push_back(
            {family, id, row.shortcutName(id.string()), quoted(row.noun, recordName), shortcut});
    };
    for (const auto& workspace : services_.workspaceService.workspaces()) {
        if (workspace.id) {
            add(Family::workspace, *workspace.id, workspace.name, recordShortcut(workspace));
        }
    }
    for (const auto& space : services_.spaceManager.spaces()) {
        add(Family::space, space.id, space.name, recordShortcut(space));
    }
    for (const auto& layout : services_.layoutStore.layouts()) {
        add(Family::layout, layout.id, layout.name, recordShortcut(layout));
    }
    return records;
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

std::optional<std::string> ShortcutService::conflictFor(const std::string& name,
                                                        const Shortcut& shortcut) const {
    const auto wanted = normalized(shortcut);
    const auto clash = [&](const std::string& owner) {
        const char* prefix = kActionConflictPrefix;
        for (const auto& row : familyTable()) {
            if (name.starts_with(row.prefix)) {
                prefix = row.conflictPrefix;
            }
        }
        return std::string(prefix) + "Shortcut conflicts with " + owner;
    };
    for (const auto& listed : staticListings()) {
        if (listed.name != name && listed.shortcut && normalized(*listed.shortcut) == wanted) {
            return clash(listed.owner);
        }
    }
    for (const auto& record : recordShortcuts()) {
        if (record.name != name && record.shortcut && normalized(*record.shortcut) == wanted) {
            return clash(record.owner);
        }
    }
    return std::nullopt;
}

ShortcutListing ShortcutService::listing(const std::string& name, std::string owner,
                                         std::optional<Shortcut> shortcut) const {
    return ShortcutListing{
        .name = name,
        .owner = std::move(owner),
        .shortcut = shortcut,
        .label = shortcut ? shortcutLabel(*shortcut) : std::string(),
        .registered = services_.shortcutBridge.isShortcutRegistered(name),
    };
}

std::vector<ShortcutListing> ShortcutService::staticListings() const {
    std::vector<ShortcutListing> listings;
    for (const auto& row : shortcutNameTable()) {
        if (row.role == ShortcutRole::recorderScratch) {
            continue;
        }
        const std::string name(row.name);
        // The live store only: a bridge fallback is no hot key.
        const auto live = services_.hotKeyStore.shortcut(libraryShortcutName(name));
        listings.push_back(
            listing(name, quoted("action", name),
                    live ? std::optional(ShortcutConverter::toShortcut(*live)) : std::nullopt));
    }
    return listings;
}

std::vector<ShortcutListing> ShortcutService::listShortcuts() const {
    auto listings = staticListings();
    for (const auto& record : recordShortcuts()) {
        listings.push_back(listing(record.name, record.owner, record.shortcut));
    }
    return listings;
}

std::optional<ShortcutService::RecordShortcut> ShortcutService::findRecord(
    const std::string& name) const {
    for (const auto& row : familyTable()) {
        if (!name.starts_with(row.prefix)) {
            continue;
        }
        const auto id = Uuid::parse(std::string_view(name).substr(row.prefix.size()));
        if (!id) {
            return std::nullopt;
        }
        for (auto& record : recordShortcuts()) {
            if (record.id == *id && record.name.starts_with(row.prefix)) {
                return record;
            }
        }
        return std::nullopt;
    }
    return std::nullopt;
}

Expected<ShortcutListing, ShortcutChangeError> ShortcutService::changeShortcut(
    const std::string& name, const std::optional<Shortcut>& shortcut) {
    const auto* row = findShortcutNameRow(name);
    const bool isStatic = row && row->role != ShortcutRole::recorderScratch;
    const auto record = isStatic ? std::nullopt : findRecord(name);
    if (!isStatic && !record) {
        return unexpected(
            ShortcutChangeError{ShortcutChangeError::Kind::unknownName, "shortcut '" + name + "'"});
    }
    if (shortcut && (shortcut->keyCode < 0 || shortcut->keyCode > kMaxVirtualKeyCode)) {
        return unexpected(ShortcutChangeError{ShortcutChangeError::Kind::notStored,
                                              "A key code is a whole number from 0 to 65535"});
    }
    if (shortcut) {
        if (auto conflict = conflictFor(record ? record->name : name, *shortcut)) {
            logger_.warning(*conflict);
            return unexpected(
                ShortcutChangeError{ShortcutChangeError::Kind::conflict, std::move(*conflict)});
        }
    }
    if (record) {
        if (auto stored = store(*record, shortcut); !stored) {
            return unexpected(stored.error());
        }
        for (auto& listed : listShortcuts()) {
            if (listed.name == record->name) {
                return std::move(listed);
            }
        }
    } else if (!services_.shortcutBridge.setShortcut(name, shortcut)) {
        return unexpected(ShortcutChangeError{ShortcutChangeError::Kind::notStored,
                                              "The shortcut for '" + name + "' was not stored"});
    }
    for (auto& listed : staticListings()) {
        if (listed.name == name) {
            return std::move(listed);
        }
    }
    return unexpected(ShortcutChangeError{ShortcutChangeError::Kind::unknownName, name});
}

Expected<void, ShortcutChangeError> ShortcutService::store(
    const RecordShortcut& record, const std::optional<Shortcut>& shortcut) {
    const auto keyCode =
        shortcut ? std::optional(static_cast<std::uint16_t>(shortcut->keyCode)) : std::nullopt;
    const auto refused = [&](std::string why) {
        return unexpected(ShortcutChangeError{
            ShortcutChangeError::Kind::notStored,
            "The shortcut of " + record.owner + " was not stored: " + std::move(why)});
    };
    switch (record.family) {
        case Family::workspace: {
            std::optional<ShortcutCombo> combo;
            if (shortcut) {
                combo = ShortcutCombo{*keyCode, static_cast<std::uint32_t>(shortcut->modifiers)};
            }
            services_.workspaceService.updateWorkspaceShortcut(record.id, combo);
            return {};
        }
        case Family::space: {
            auto space = *services_.spaceManager.space(record.id);
            space.shortcutKeyCode = keyCode;
            space.shortcutModifiers =
                shortcut ? std::optional(static_cast<std::uint32_t>(shortcut->modifiers))
                         : std::nullopt;
            if (auto updated = services_.spaceManager.updateSpace(space); !updated) {
                return refused(updated.error());
            }
            return {};
        }
        case Family::layout: {
            auto layout = *services_.layoutStore.find(record.id);
            layout.shortcutKeyCode = keyCode;
            layout.shortcutModifiers = shortcut ? std::optional(shortcut->modifiers) : std::nullopt;
            if (!services_.layoutStore.update(layout)) {
                return refused("the layout store refused it");
            }
            return {};
        }
    }
    return {};
}

}  // namespace corvetta
