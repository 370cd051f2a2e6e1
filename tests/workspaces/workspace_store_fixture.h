// workspace_store_fixture.h: Workspace and space stores over a temporary folder, for their tests.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/temporary_folder.h"
#include "support/test_logging.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_json.h"
#include "workspaces/workspace_service.h"

namespace corvetta::testing {

class WorkspaceStoreTest : public ::testing::Test {
protected:
    // A fresh service over what is stored now, as at a start of the program.
    WorkspaceService& startWorkspaces() {
        spaces.reset();
        workspaces.reset();
        workspaces = std::make_unique<WorkspaceService>(defaults, notifications, clock, log.logging,
                                                        folder.path());
        return *workspaces;
    }
    SpaceManager& startSpaces() {
        spaces.reset();
        if (!workspaces) {
            startWorkspaces();
        }
        spaces = std::make_unique<SpaceManager>(
            *workspaces, defaults, notifications, clock, log.logging, folder.path(),
            [this](const Uuid& id) { layoutsMovedFrom.push_back(id); });
        return *spaces;
    }

    static Workspace named(const std::string& name, std::optional<Uuid> spaceId = std::nullopt) {
        return Workspace{.id = Uuid::random(),
                         .name = name,
                         .windowInfos = {WindowInfo{.frame = {1, 2, 3, 4}}},
                         .spaceId = spaceId};
    }

    void storeRaw(const std::string& text) {
        defaults.set(WorkspaceService::kUserDefaultsKey, Bytes(text.begin(), text.end()));
    }
    std::string storedRaw() const {
        const auto bytes = defaults.data(WorkspaceService::kUserDefaultsKey);
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    }
    std::vector<std::string> storedNames() const {
        std::vector<std::string> names;
        const auto stored = decodeLossyWorkspaces(storedRaw()).value();
        for (const auto& workspace : stored.workspaces) {
            names.push_back(workspace.name);
        }
        return names;
    }
    long loggedStartingWith(const std::string& prefix) const {
        const auto messages = log.messages();
        return std::count_if(messages.begin(), messages.end(),
                             [&](const std::string& m) { return m.starts_with(prefix); });
    }
    std::vector<std::filesystem::path> quarantined(const std::string& stem) const {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            if (entry.path().filename().string().starts_with(stem + "-quarantine-")) {
                found.push_back(entry.path());
            }
        }
        return found;
    }

    TemporaryFolder folder;
    ManualClock clock;
    NotificationCenter notifications;
    TestLogging log{notifications, clock};
    InMemoryPreferences defaults;
    std::vector<Uuid> layoutsMovedFrom;
    std::unique_ptr<WorkspaceService> workspaces;
    std::unique_ptr<SpaceManager> spaces;
};

}  // namespace corvetta::testing
