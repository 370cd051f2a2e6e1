#include "workspaces/space_manager.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <utility>

#include "diagnostics/logging_service.h"
#include "foundation/files.h"
#include "foundation/names.h"
#include "workspaces/space_json.h"

namespace corvetta {

namespace {}  // namespace

SpaceManager::SpaceManager(WorkspaceService& workspaceService, Preferences& defaults,
                           NotificationCenter& notifications, const Clock& clock,
                           LoggingService& logging, const std::filesystem::path& configFolder,
                           MoveLayoutsToGlobal moveLayoutsToGlobal,
                           std::optional<std::filesystem::path> spacesFileOverride)
    : workspaceService_(workspaceService),
      logger(logging, kServiceName),
      spacesFile_(spacesFileOverride.value_or(configFolder / kSpacesFileName)),
      defaults_(defaults),
      notifications_(notifications),
      clock_(clock),
      moveLayoutsToGlobal_(std::move(moveLayoutsToGlobal)) {
    removeAbandonedTemporaryFiles(spacesFile_);
    if (load() != LoadResult::damaged) {
        std::set<Uuid> existing;
        for (const auto& space : storedSpaces_) {
            existing.insert(space.id);
        }
        workspaceService_.fixOrphanedWorkspaces(existing);
    }
}

SpaceManager::LoadResult SpaceManager::load() {
    auto contents = readFile(spacesFile_);
    if (!contents) {
        if (contents.error().isMissing()) {
            logger.debug("No spaces file yet at " + spacesFile_.string());
            return LoadResult::missing;
        }
        logger.error("Failed to load spaces.json: " + contents.error().description());
        // Unreadable rather than damaged: leave it where it is, and never write over it.
        saveRefused_ = true;
        return LoadResult::damaged;
    }
    auto decoded = decodeSpacesPayload(*contents);
    if (decoded) {
        storedSpaces_ = std::move(decoded->spaces);
        return LoadResult::loaded;
    }
    logger.error("Failed to load spaces.json: " + decoded.error());
    // The user's spaces are in there; keep them aside before the next save writes a new file.
    if (const auto moved = quarantineFile(spacesFile_, kQuarantineStem, clock_.now())) {
        logger.warning("Quarantined undecodable spaces.json to " + moved->string());
    } else {
        logger.error("Failed to quarantine spaces.json: " + moved.error().description());
        saveRefused_ = true;
    }
    return LoadResult::damaged;
}

Expected<void, std::string> SpaceManager::save() {
    lastWriteError_.reset();
    if (saveRefused_) {
        lastWriteError_ = spacesFile_.string() +
                          " could not be read at start, and saving would replace the spaces in it";
    } else if (const auto written =
                   writeFileAtomically(spacesFile_, encodeSpacesPayload({storedSpaces_}));
               !written) {
        lastWriteError_ = written.error().description();
    }
    if (lastWriteError_) {
        logger.error("Failed to save spaces.json: " + *lastWriteError_);
    }
    notifications_.post(kSpacesDidChange);
    if (lastWriteError_) {
        return unexpected(*lastWriteError_);
    }
    return {};
}

const WorkspaceSpace& SpaceManager::globalSpace() {
    if (!globalSpace_) {
        const auto stored = defaults_.string(kFallbackIdKey);
        auto id = stored ? Uuid::parse(*stored) : std::nullopt;
        if (!id) {
            id = Uuid::random();
            defaults_.set(kFallbackIdKey, id->string());
        }
        globalSpace_ = WorkspaceSpace{.id = *id, .name = kGlobalSpaceName};
    }
    return *globalSpace_;
}

const WorkspaceSpace* SpaceManager::space(const Uuid& id) const {
    const auto found = std::find_if(storedSpaces_.begin(), storedSpaces_.end(),
                                    [&](const WorkspaceSpace& s) { return s.id == id; });
    return found == storedSpaces_.end() ? nullptr : &*found;
}

const WorkspaceSpace* SpaceManager::spaceNamed(const std::string& name) const {
    const auto key = comparableName(name);
    const auto found =
        std::find_if(storedSpaces_.begin(), storedSpaces_.end(),
                     [&](const WorkspaceSpace& s) { return comparableName(s.name) == key; });
    return found == storedSpaces_.end() ? nullptr : &*found;
}

Expected<std::string, std::string> SpaceManager::validateName(
    const std::string& name, const std::optional<Uuid>& editing) const {
    auto candidate = trimmedName(name);
    if (candidate.empty()) {
        return unexpected(std::string(kNameEmpty));
    }
    const auto* existing = spaceNamed(candidate);
    if ((existing && existing->id != editing) ||
        comparableName(candidate) == comparableName(kGlobalSpaceName)) {
        return unexpected(std::string(kNameTaken));
    }
    return candidate;
}

Expected<WorkspaceSpace, std::string> SpaceManager::addSpace(const std::string& name) {
    auto valid = validateName(name, std::nullopt);
    if (!valid) {
        return unexpected(valid.error());
    }
    storedSpaces_.push_back(WorkspaceSpace{.id = Uuid::random(), .name = *valid});
    save();
    logger.info("Added space: " + *valid);
    return storedSpaces_.back();
}

void SpaceManager::addSpaces(std::vector<WorkspaceSpace> spaces) {
    if (spaces.empty()) {
        return;
    }
    std::vector<std::string> names;
    for (auto& space : spaces) {
        names.push_back(space.name);
        storedSpaces_.push_back(std::move(space));
    }
    save();
    for (const auto& name : names) {
        logger.info("Added space: " + name);
    }
}

Expected<void, std::string> SpaceManager::updateSpace(const WorkspaceSpace& updated) {
    const auto found = std::find_if(storedSpaces_.begin(), storedSpaces_.end(),
                                    [&](const WorkspaceSpace& s) { return s.id == updated.id; });
    if (found == storedSpaces_.end()) {
        return unexpected(std::string("Not found"));
    }
    auto valid = validateName(updated.name, updated.id);
    if (!valid) {
        return unexpected(valid.error());
    }
    *found = updated;
    found->name = *valid;
    save();
    logger.info("Updated space: " + found->name);
    return {};
}

Expected<void, std::string> SpaceManager::renameSpace(const Uuid& id, const std::string& name) {
    const auto* existing = space(id);
    if (!existing) {
        return unexpected(std::string("Not found"));
    }
    auto renamed = *existing;
    renamed.name = name;
    return updateSpace(renamed);
}

bool SpaceManager::deleteSpace(const Uuid& id) {
    const auto* existing = space(id);
    if (!existing) {
        return false;
    }
    const auto name = existing->name;
    std::erase_if(storedSpaces_, [&](const WorkspaceSpace& s) { return s.id == id; });
    save();
    workspaceService_.moveWorkspacesToGlobal(id);
    if (moveLayoutsToGlobal_) {
        moveLayoutsToGlobal_(id);
    }
    logger.info("Reassigned children of deleted space");
    // Left active, the id would name no space; the global space is what everything then shows.
    if (workspaceService_.activeSpaceId() == id) {
        workspaceService_.setActiveSpaceId(std::nullopt);
    }
    if (pendingSpaceId_ == id) {
        pendingSpaceId_.reset();
    }
    logger.info("Deleted space: " + name);
    return true;
}

bool SpaceManager::activate(const std::optional<Uuid>& id) {
    if (!id || *id == globalSpace().id) {
        workspaceService_.setActiveSpaceId(std::nullopt);
    } else if (space(*id)) {
        workspaceService_.setActiveSpaceId(*id);
    } else {
        return false;
    }
    logger.info("Activated space: " + activeSpace().name);
    notifications_.post(kSpacesDidChange);
    return true;
}

const WorkspaceSpace& SpaceManager::recordFor(const std::optional<Uuid>& id) {
    const auto* stored = id ? space(*id) : nullptr;
    return stored ? *stored : globalSpace();
}

const WorkspaceSpace& SpaceManager::activeSpace() {
    return recordFor(workspaceService_.activeSpaceId());
}

void SpaceManager::previewNextSpace() {
    if (storedSpaces_.empty()) {
        logger.info("Cycle: previewNextSpace called but no other spaces exist");
        return;
    }
    const auto& current =
        recordFor(pendingSpaceId_ ? pendingSpaceId_ : workspaceService_.activeSpaceId());
    // The global space comes first, then the stored spaces in order, then round again.
    std::vector<Uuid> order{globalSpace().id};
    for (const auto& stored : storedSpaces_) {
        order.push_back(stored.id);
    }
    const auto at = std::find(order.begin(), order.end(), current.id);
    const auto next = (at == order.end() || at + 1 == order.end()) ? order.front() : *(at + 1);
    pendingSpaceId_ = next;
    logger.info("Cycle: pending space set to '" + recordFor(next).name + "'");
}

void SpaceManager::commitPendingSpace() {
    if (!pendingSpaceId_) {
        return;
    }
    const auto pending = *std::exchange(pendingSpaceId_, std::nullopt);
    if (recordFor(pending).id == activeSpace().id) {
        logger.info("Cycle: pending space same as active — no switch needed");
        return;
    }
    logger.info("Cycle: committing switch to '" + recordFor(pending).name + "'");
    activate(pending);
}

void SpaceManager::cancelPendingSpace() {
    pendingSpaceId_.reset();
    logger.info("Cycle: pending space cancelled");
}

}  // namespace corvetta
