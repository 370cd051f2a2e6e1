// workspace_service.h: Owns the saved workspaces: stores them, keeps a backup, recovers from
// damage.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "foundation/expected.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "foundation/uuid.h"
#include "workspaces/workspace.h"
#include "workspaces/workspace_restore_gate.h"

namespace corvetta {

class LoggingService;

// The saved workspaces. The list lives under "savedWorkspaces" in the preferences (a data value
// holding the pretty-printed JSON array) and, whenever it is not empty, in a backup file beside
// the program's other files. Loading never stops the program: entries that cannot be decoded are
// skipped and their raw bytes quarantined; a value that is not a list at all falls back to the
// backup. Every change saves the whole list and posts kWorkspacesDidChange. Main thread only,
// except the restore gate.
class WorkspaceService {
public:
    static constexpr const char* kServiceName = "WorkspaceService";
    static constexpr const char* kUserDefaultsKey = "savedWorkspaces";
    static constexpr const char* kWorkspaceContextMigrationKey =
        "workspaceSpaceMigrationCompleted_v1.0";
    static constexpr const char* kSpaceV2MigrationKey = "workspaceSpaceV2MigrationCompleted";
    static constexpr const char* kActiveSpaceIdKeyV2 = "activeWorkspaceSpaceIdV2";
    static constexpr const char* kWorkspacesDidChange = "com.corvetta.workspacesDidChange";
    static constexpr const char* kBackupFileName = "workspaces-backup.json";
    static constexpr const char* kQuarantineStem = "workspaces";

    // Name validation texts: the one the service gives, and the shorter one forms may show.
    static constexpr const char* kNameRequired = "Name is required";
    static constexpr const char* kNameTaken =
        "A workspace with this name already exists in this space or the global space.";
    static constexpr const char* kNameTakenShort = "A workspace with this name already exists.";

    // Loads the list and the active space. `configFolder` holds the backup and quarantine files
    // unless `backupFile` names the backup elsewhere (quarantine files then go beside it).
    WorkspaceService(Preferences& defaults, NotificationCenter& notifications, const Clock& clock,
                     LoggingService& logging, const std::filesystem::path& configFolder,
                     std::optional<std::filesystem::path> backupFile = std::nullopt);
    WorkspaceService(const WorkspaceService&) = delete;
    WorkspaceService& operator=(const WorkspaceService&) = delete;

    const std::vector<Workspace>& workspaces() const { return workspaces_; }
    const Workspace* workspace(const Uuid& id) const;
    // The first workspace with exactly this name.
    const Workspace* workspaceNamed(const std::string& name) const;

    // Absent is the global space. Setting stores it under kActiveSpaceIdKeyV2 (removed for the
    // global space).
    const std::optional<Uuid>& activeSpaceId() const { return activeSpaceId_; }
    void setActiveSpaceId(std::optional<Uuid> id);

    void add(Workspace workspace);
    // Adds several with one save, as an import does.
    void addWorkspaces(std::vector<Workspace> workspaces);
    // Replaces the workspace with the same id; false (and logged) when there is none.
    bool update(const Workspace& workspace);
    // False when the id is absent (refused) or names no workspace.
    bool remove(const std::optional<Uuid>& id);
    // Validates the new name in the workspace's own space; the error is the validation text, or
    // "Not found" when no workspace has the id.
    Expected<void, std::string> rename(const Uuid& id, const std::string& newName);
    // A value sets the shortcut, none clears it. False when no workspace has the id.
    bool updateWorkspaceShortcut(const Uuid& id, std::optional<ShortcutCombo> shortcut);

    // The trimmed name, or kNameRequired / kNameTaken. `editing` is skipped in the comparison.
    Expected<std::string, std::string> validateName(const std::string& name,
                                                    const std::optional<Uuid>& editing,
                                                    const std::optional<Uuid>& spaceId) const;

    // Moves every workspace whose space is not among `existingSpaces` to the global space, and
    // saves if any moved. The space manager calls it once it has read its spaces.
    void fixOrphanedWorkspaces(const std::set<Uuid>& existingSpaces);
    // Moves the workspaces of a deleted space to the global space; the count moved.
    std::size_t moveWorkspacesToGlobal(const Uuid& spaceId);

    RestoreGate& restoreGate() { return restoreGate_; }
    const std::filesystem::path& backupFile() const { return backupFile_; }

    // Writes the list to the preferences and, unless it is empty, to the backup file; posts
    // kWorkspacesDidChange. Fails when the list cannot be encoded (nothing is written then) or the
    // preferences could not be written (the list is kept in memory and written by the next save).
    Expected<void, std::string> save();
    // Why the last save did not reach the preferences; none after one that did.
    const std::optional<std::string>& lastWriteError() const { return lastWriteError_; }

private:
    void load();
    std::optional<LossyWorkspaces> recoverFromBackup();
    void quarantine(const std::string& data);
    void runMigrations();
    void warnAboutSystemShortcut(const Workspace& workspace) const;
    Workspace* find(const Uuid& id);

    Logger logger;
    Preferences& defaults_;
    NotificationCenter& notifications_;
    const Clock& clock_;
    std::filesystem::path backupFile_;
    std::vector<Workspace> workspaces_;
    RestoreGate restoreGate_;
    std::optional<Uuid> activeSpaceId_;
    std::optional<std::string> lastWriteError_;
};

}  // namespace corvetta
