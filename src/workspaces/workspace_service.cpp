#include "workspaces/workspace_service.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "diagnostics/logging_service.h"
#include "foundation/files.h"
#include "foundation/names.h"
#include "platform/input_events.h"
#include "workspaces/workspace_json.h"

namespace corvetta {

namespace {

// Global workspaces share a scope with every space; named spaces only with themselves.
bool shareScope(const std::optional<Uuid>& a, const std::optional<Uuid>& b) {
    return !a || !b || *a == *b;
}

std::string idText(const std::optional<Uuid>& id) {
    return id ? id->string() : "nil";
}

// macOS virtual key codes of the digits 1-9 and 0: with Command alone they switch tabs and
// windows in many applications.
bool isCommandDigit(const ShortcutCombo& combo) {
    constexpr std::uint16_t kDigitKeys[] = {18, 19, 20, 21, 23, 22, 26, 28, 25, 29};
    constexpr std::uint64_t kModifierMask = ModifierFlag::kShift | ModifierFlag::kControl |
                                            ModifierFlag::kOption | ModifierFlag::kCommand;
    return (combo.modifiers & kModifierMask) == ModifierFlag::kCommand &&
           std::find(std::begin(kDigitKeys), std::end(kDigitKeys), combo.keyCode) !=
               std::end(kDigitKeys);
}

}  // namespace

WorkspaceService::WorkspaceService(Preferences& defaults, NotificationCenter& notifications,
                                   const Clock& clock, LoggingService& logging,
                                   const std::filesystem::path& configFolder,
                                   std::optional<std::filesystem::path> backupFile)
    : logger(logging, kServiceName),
      defaults_(defaults),
      notifications_(notifications),
      clock_(clock),
      backupFile_(backupFile.value_or(configFolder / kBackupFileName)),
      restoreGate_(clock) {
    // A save killed half-way leaves its temporary file behind; the backup itself is whole.
    removeAbandonedTemporaryFiles(backupFile_);
    load();
    runMigrations();
    if (const auto stored = defaults_.string(kActiveSpaceIdKeyV2)) {
        activeSpaceId_ = Uuid::parse(*stored);
    }
}

void WorkspaceService::load() {
    logger.info("Attempting to load workspaces from UserDefaults...");
    std::optional<std::string> data;
    if (const auto bytes = defaults_.data(kUserDefaultsKey)) {
        data = std::string(bytes->begin(), bytes->end());
    } else if (const auto text = defaults_.string(kUserDefaultsKey)) {
        // Written by hand into the preferences file as text rather than data: read it the same.
        data = *text;
    }
    if (!data) {
        logger.info(std::string("No data found in UserDefaults for key '") + kUserDefaultsKey +
                    "'");
        if (auto recovered = recoverFromBackup()) {
            workspaces_ = std::move(recovered->workspaces);
        }
        return;
    }
    logger.info("Successfully loaded data (" + std::to_string(data->size()) + " bytes).");
    auto decoded = decodeLossyWorkspaces(*data);
    if (!decoded) {
        logger.error("Error decoding workspaces: " + decoded.error() +
                     ". Attempting backup recovery.");
        quarantine(*data);
        if (auto recovered = recoverFromBackup()) {
            workspaces_ = std::move(recovered->workspaces);
        }
        return;
    }
    logger.info("Successfully decoded " + std::to_string(decoded->workspaces.size()) +
                " workspaces.");
    if (decoded->dropped > 0) {
        logger.warning(std::to_string(decoded->dropped) + " undecodable workspace entries skipped");
        quarantine(*data);
    }
    if (logger.wouldLog(LogLevel::debug)) {
        for (const auto& workspace : decoded->workspaces) {
            logger.debug("  Loaded workspace: " + workspace.name);
            logger.debug("    ID: " + idText(workspace.id));
        }
    }
    workspaces_ = std::move(decoded->workspaces);
}

std::optional<LossyWorkspaces> WorkspaceService::recoverFromBackup() {
    const auto path = backupFile_.string();
    auto contents = readFile(backupFile_);
    if (!contents) {
        if (contents.error().isMissing()) {
            logger.info("No backup file found at " + path);
        } else {
            logger.error("Failed to read workspace backup: " + contents.error().description());
        }
        return std::nullopt;
    }
    auto decoded = decodeLossyWorkspaces(*contents);
    if (!decoded) {
        logger.error("Failed to decode workspace backup: " + decoded.error());
        return std::nullopt;
    }
    logger.info("Restored " + std::to_string(decoded->workspaces.size()) +
                " workspaces from backup at " + path);
    if (decoded->dropped > 0) {
        logger.warning("Backup recovery skipped " + std::to_string(decoded->dropped) +
                       " undecodable entries (original backup file preserved on disk)");
    }
    return std::move(*decoded);
}

void WorkspaceService::quarantine(const std::string& data) {
    const auto written =
        quarantineData(backupFile_.parent_path(), kQuarantineStem, data, clock_.now());
    if (written) {
        logger.warning("Quarantined undecodable workspaces data (" + std::to_string(data.size()) +
                       " bytes) to " + written->string());
    } else {
        logger.error("Failed to quarantine workspaces data: " + written.error().description());
    }
}

void WorkspaceService::runMigrations() {
    // Records from before spaces existed carry no space, which already means the global space:
    // the first migration has nothing to move and only records that it ran.
    if (!defaults_.boolValue(kWorkspaceContextMigrationKey).value_or(false)) {
        logger.info(
            "Workspace space migration: workspaces without a space stay in the global "
            "space");
        defaults_.set(kWorkspaceContextMigrationKey, true);
    }
    if (!defaults_.boolValue(kSpaceV2MigrationKey).value_or(false)) {
        logger.info("V2 migration skipped: spaces are managed in spaces.json by SpaceManager");
        defaults_.set(kSpaceV2MigrationKey, true);
    }
}

void WorkspaceService::fixOrphanedWorkspaces(const std::set<Uuid>& existingSpaces) {
    bool changed = false;
    for (auto& workspace : workspaces_) {
        if (workspace.spaceId && !existingSpaces.contains(*workspace.spaceId)) {
            workspace.spaceId.reset();
            changed = true;
        }
    }
    if (!changed) {
        return;
    }
    logger.info("Fixed orphaned workspaces (assigned to Default space)");
    if (const auto saved = save()) {
        logger.info("Saved migrated/fixed workspaces");
    } else {
        logger.error("Failed to save migrated/fixed workspaces: " + saved.error());
    }
}

std::size_t WorkspaceService::moveWorkspacesToGlobal(const Uuid& spaceId) {
    std::size_t moved = 0;
    for (auto& workspace : workspaces_) {
        if (workspace.spaceId == spaceId) {
            workspace.spaceId.reset();
            ++moved;
        }
    }
    if (moved > 0) {
        (void)save();
    }
    return moved;
}

const Workspace* WorkspaceService::workspace(const Uuid& id) const {
    const auto found = std::find_if(workspaces_.begin(), workspaces_.end(),
                                    [&](const Workspace& w) { return w.id == id; });
    return found == workspaces_.end() ? nullptr : &*found;
}

Workspace* WorkspaceService::find(const Uuid& id) {
    return const_cast<Workspace*>(std::as_const(*this).workspace(id));
}

const Workspace* WorkspaceService::workspaceNamed(const std::string& name) const {
    const auto found = std::find_if(workspaces_.begin(), workspaces_.end(),
                                    [&](const Workspace& w) { return w.name == name; });
    return found == workspaces_.end() ? nullptr : &*found;
}

void WorkspaceService::setActiveSpaceId(std::optional<Uuid> id) {
    activeSpaceId_ = id;
    if (id) {
        defaults_.set(kActiveSpaceIdKeyV2, id->string());
    } else {
        defaults_.remove(kActiveSpaceIdKeyV2);
    }
}

void WorkspaceService::add(Workspace workspace) {
    warnAboutSystemShortcut(workspace);
    const auto name = workspace.name;
    workspaces_.push_back(std::move(workspace));
    (void)save();
    logger.info("Added workspace: " + name);
}

void WorkspaceService::addWorkspaces(std::vector<Workspace> workspaces) {
    if (workspaces.empty()) {
        return;
    }
    std::vector<std::string> names;
    for (auto& workspace : workspaces) {
        warnAboutSystemShortcut(workspace);
        names.push_back(workspace.name);
        workspaces_.push_back(std::move(workspace));
    }
    (void)save();
    for (const auto& name : names) {
        logger.info("Added workspace: " + name);
    }
}

bool WorkspaceService::update(const Workspace& workspace) {
    Workspace* existing = workspace.id ? find(*workspace.id) : nullptr;
    if (!existing) {
        logger.error("Failed to update workspace: ID " + idText(workspace.id) + " not found");
        return false;
    }
    warnAboutSystemShortcut(workspace);
    *existing = workspace;
    (void)save();
    logger.info("Updated workspace: " + workspace.name);
    return true;
}

bool WorkspaceService::remove(const std::optional<Uuid>& id) {
    if (!id) {
        logger.error("Attempted to delete workspace with nil ID.");
        return false;
    }
    const auto before = workspaces_.size();
    std::erase_if(workspaces_, [&](const Workspace& w) { return w.id == id; });
    if (workspaces_.size() == before) {
        logger.error("Failed to delete workspace: ID " + id->string() + " not found");
        return false;
    }
    (void)save();
    logger.info("Deleted workspace with ID: " + id->string());
    return true;
}

Expected<void, std::string> WorkspaceService::rename(const Uuid& id, const std::string& newName) {
    const Workspace* existing = workspace(id);
    if (!existing) {
        return unexpected(std::string("Not found"));
    }
    auto name = validateName(newName, id, existing->spaceId);
    if (!name) {
        return unexpected(name.error());
    }
    Workspace renamed = *existing;
    renamed.name = *name;
    update(renamed);
    return {};
}

bool WorkspaceService::updateWorkspaceShortcut(const Uuid& id,
                                               std::optional<ShortcutCombo> shortcut) {
    const auto found = std::find_if(workspaces_.begin(), workspaces_.end(),
                                    [&](const Workspace& w) { return w.id == id; });
    if (found == workspaces_.end()) {
        logger.error("Failed to update workspace shortcut: ID " + id.string() + " not found");
        return false;
    }
    logger.info("Found workspace at index " + std::to_string(found - workspaces_.begin()));
    if (shortcut) {
        logger.info("Updating shortcut from keyCode=" +
                    (found->shortcutKeyCode ? std::to_string(*found->shortcutKeyCode) : "nil") +
                    ", modifiers=" +
                    (found->shortcutModifiers ? std::to_string(*found->shortcutModifiers) : "nil") +
                    " to keyCode=" + std::to_string(shortcut->keyCode) +
                    ", modifiers=" + std::to_string(shortcut->modifiers));
        found->shortcutKeyCode = shortcut->keyCode;
        found->shortcutModifiers = shortcut->modifiers;
        warnAboutSystemShortcut(*found);
    } else {
        logger.info("Clearing shortcut for workspace '" + found->name + "'");
        found->shortcutKeyCode.reset();
        found->shortcutModifiers.reset();
    }
    // The shortcut service re-registers workspace shortcuts when it sees the change posted.
    (void)save();
    return true;
}

Expected<std::string, std::string> WorkspaceService::validateName(
    const std::string& name, const std::optional<Uuid>& editing,
    const std::optional<Uuid>& spaceId) const {
    auto candidate = trimmedName(name);
    if (candidate.empty()) {
        return unexpected(std::string(kNameRequired));
    }
    const auto key = comparableName(candidate);
    for (const auto& other : workspaces_) {
        if (editing && other.id == editing) {
            continue;
        }
        if (shareScope(other.spaceId, spaceId) && comparableName(other.name) == key) {
            logger.warning("Workspace name '" + candidate +
                           "' conflicts with existing workspace '" + other.name + "'");
            return unexpected(std::string(kNameTaken));
        }
    }
    return candidate;
}

void WorkspaceService::warnAboutSystemShortcut(const Workspace& workspace) const {
    if (workspace.shortcutKeyCode && workspace.shortcutModifiers &&
        isCommandDigit({*workspace.shortcutKeyCode, *workspace.shortcutModifiers})) {
        logger.warning("Saving workspace with potential system shortcut conflict (Cmd+Number)");
    }
}

Expected<void, std::string> WorkspaceService::save() {
    logger.info("Attempting to save " + std::to_string(workspaces_.size()) + " workspaces");
    if (logger.wouldLog(LogLevel::debug)) {
        for (const auto& workspace : workspaces_) {
            logger.debug("  Saving workspace: " + workspace.name);
        }
    }
    auto encoded = encodeWorkspaces(workspaces_);
    if (!encoded) {
        logger.error("Error encoding workspaces: " + encoded.error());
        return unexpected(encoded.error());
    }
    logger.info("Encoded workspaces data size: " + std::to_string(encoded->size()) + " bytes");
    defaults_.set(kUserDefaultsKey, Bytes(encoded->begin(), encoded->end()));
    if (defaults_.synchronize()) {
        lastWriteError_.reset();
        logger.info("Successfully encoded and saved workspaces to UserDefaults.");
    } else {
        lastWriteError_ = defaults_.lastWriteError();
        logger.error("Failed to flush workspaces to UserDefaults: " + *lastWriteError_);
    }
    if (workspaces_.empty()) {
        // An accidental wipe must not take the last good backup with it.
        logger.info("Skipping backup write: workspaces empty, preserving existing backup.");
    } else if (const auto written = writeFileAtomically(backupFile_, *encoded)) {
        logger.info("Backup written to " + backupFile_.string());
    } else {
        logger.error("Failed to write workspace backup: " + written.error().description());
    }
    notifications_.post(kWorkspacesDidChange);
    if (lastWriteError_) {
        return unexpected(*lastWriteError_);
    }
    return {};
}

}  // namespace corvetta
