// space_manager.h: Owns the named spaces and their file, the "Global" stand-in and activation.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "foundation/expected.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "workspaces/workspace_service.h"
#include "workspaces/workspace_space.h"

namespace corvetta {

class LoggingService;

// The named spaces, kept in spaces.json beside the program's other files. The global space has
// no record: where one is needed (lists, menus, the cycle display) the "Global" stand-in with its
// stored id takes its place. The active space is held by the workspace service. Every change
// rewrites the file and posts kSpacesDidChange. Main thread only.
class SpaceManager {
public:
    static constexpr const char* kServiceName = "SpaceManager";
    static constexpr const char* kSpacesFileName = "spaces.json";
    static constexpr const char* kQuarantineStem = "spaces";
    static constexpr const char* kFallbackIdKey = "defaultSpaceFallbackUUID";
    static constexpr const char* kGlobalSpaceName = "Global";
    static constexpr const char* kSpacesDidChange = "com.corvetta.spacesDidChange";

    static constexpr const char* kNameEmpty = "Space name cannot be empty";
    static constexpr const char* kNameTaken =
        "A space with this name already exists. Please choose a different name.";

    // Moves the layout templates of a deleted space to the global space.
    using MoveLayoutsToGlobal = std::function<void(const Uuid&)>;

    // Reads the spaces, then moves workspaces that point at no space to the global space (not
    // when the file was damaged: its spaces may come back from the quarantined copy).
    SpaceManager(WorkspaceService& workspaceService, Preferences& defaults,
                 NotificationCenter& notifications, const Clock& clock, LoggingService& logging,
                 const std::filesystem::path& configFolder, MoveLayoutsToGlobal moveLayoutsToGlobal,
                 std::optional<std::filesystem::path> spacesFileOverride = std::nullopt);
    SpaceManager(const SpaceManager&) = delete;
    SpaceManager& operator=(const SpaceManager&) = delete;

    // The stored spaces, in stored order.
    const std::vector<WorkspaceSpace>& spaces() const { return storedSpaces_; }
    // The "Global" stand-in, created on first use with the id kept under kFallbackIdKey.
    const WorkspaceSpace& globalSpace();
    const WorkspaceSpace* space(const Uuid& id) const;
    const WorkspaceSpace* spaceNamed(const std::string& name) const;

    // The trimmed name, or kNameEmpty / kNameTaken. Names compare without case and surrounding
    // spaces; "Global" is taken by the stand-in.
    Expected<std::string, std::string> validateName(const std::string& name,
                                                    const std::optional<Uuid>& editing) const;
    // A new space with a fresh id, or the validation text.
    Expected<WorkspaceSpace, std::string> addSpace(const std::string& name);
    // Adds whole records with one save, as an import does; their names and ids are the caller's
    // to keep unique.
    void addSpaces(std::vector<WorkspaceSpace> spaces);
    // Replaces the space with the same id; the error is a validation text or "Not found".
    Expected<void, std::string> updateSpace(const WorkspaceSpace& space);
    Expected<void, std::string> renameSpace(const Uuid& id, const std::string& name);
    // Removes the space and moves its workspaces and layout templates to the global space. When it
    // was the active space the global space becomes active. False when no space has the id.
    bool deleteSpace(const Uuid& id);

    // No value, or the stand-in's id, is the global space. False for an id that names no space.
    bool activate(const std::optional<Uuid>& id);
    // The active space as a record: the stand-in for the global space.
    const WorkspaceSpace& activeSpace();

    // Cycling: the space selected while the cycle shortcut is held, committed on release.
    const std::optional<Uuid>& pendingSpaceId() const { return pendingSpaceId_; }
    // Steps from the pending (else the active) space to the next one, the global space first.
    void previewNextSpace();
    void commitPendingSpace();
    void cancelPendingSpace();

    const std::filesystem::path& spacesFile() const { return spacesFile_; }
    // Rewrites the file and posts kSpacesDidChange; the error says why the file was not written
    // (the spaces stay in memory and go out with the next save).
    Expected<void, std::string> save();
    // Why the last save did not reach the file; none after one that did.
    const std::optional<std::string>& lastWriteError() const { return lastWriteError_; }

private:
    enum class LoadResult { loaded, missing, damaged };
    LoadResult load();
    const WorkspaceSpace& recordFor(const std::optional<Uuid>& id);

    WorkspaceService& workspaceService_;
    std::optional<Uuid> pendingSpaceId_;
    Logger logger;
    std::vector<WorkspaceSpace> storedSpaces_;
    std::filesystem::path spacesFile_;
    Preferences& defaults_;
    NotificationCenter& notifications_;
    const Clock& clock_;
    MoveLayoutsToGlobal moveLayoutsToGlobal_;
    std::optional<WorkspaceSpace> globalSpace_;
    // A damaged file that could not be moved aside is never written over.
    bool saveRefused_ = false;
    std::optional<std::string> lastWriteError_;
};

}  // namespace corvetta
