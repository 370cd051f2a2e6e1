#include "workspace_store_fixture.h"

namespace corvetta::testing {
namespace {

using SpaceManagerTest = WorkspaceStoreTest;

TEST_F(SpaceManagerTest, ADamagedSpacesFileIsKeptAsideAndGlobalIsStillOffered) {
    const auto workspaceSpace = Uuid::random();
    startWorkspaces().add(named("In a lost space", workspaceSpace));
    writeTestFile(folder / "spaces.json", R"({"spaces": [{"name": "no id"}]})");
    auto& manager = startSpaces();

    EXPECT_TRUE(manager.spaces().empty());
    EXPECT_EQ(manager.globalSpace().name, "Global");
    const auto kept = quarantined("spaces");
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(readTestFile(kept[0]), R"({"spaces": [{"name": "no id"}]})");
    EXPECT_FALSE(std::filesystem::exists(folder / "spaces.json"));
    EXPECT_EQ(loggedStartingWith("Failed to load spaces.json: "), 1);
    // The workspaces may belong to the quarantined spaces: they keep pointing at them.
    EXPECT_EQ(workspaces->workspaces()[0].spaceId, workspaceSpace);
}

TEST_F(SpaceManagerTest, TheGlobalStandInKeepsItsIdAcrossRuns) {
    const auto first = startSpaces().globalSpace().id;
    EXPECT_EQ(defaults.string(SpaceManager::kFallbackIdKey), first.string());
    EXPECT_EQ(startSpaces().globalSpace().id, first);
    defaults.set(SpaceManager::kFallbackIdKey, "garbled");
    const auto replaced = startSpaces().globalSpace().id;
    EXPECT_NE(replaced, first);
    EXPECT_EQ(defaults.string(SpaceManager::kFallbackIdKey), replaced.string());
}

TEST_F(SpaceManagerTest, DeletingASpaceMovesItsWorkspacesAndLayoutsToGlobal) {
    auto& manager = startSpaces();
    const auto work = manager.addSpace("Work").value();
    const auto home = manager.addSpace("Home").value();
    std::vector<Workspace> inWork;
    for (const auto* name : {"A", "B", "C"}) {
        inWork.push_back(named(name, work.id));
        workspaces->add(inWork.back());
    }
    workspaces->add(named("D", home.id));
    ASSERT_TRUE(manager.activate(work.id));
    int posted = 0;
    const auto token = notifications.addObserver(SpaceManager::kSpacesDidChange,
                                                 [&](const Notification&) { ++posted; });

    EXPECT_TRUE(manager.deleteSpace(work.id));
    EXPECT_EQ(posted, 1);
    EXPECT_EQ(layoutsMovedFrom, std::vector<Uuid>{work.id});
    EXPECT_TRUE(log.contains("Reassigned children of deleted space"));
    for (std::size_t i = 0; i < inWork.size(); ++i) {
        auto expected = inWork[i];
        expected.spaceId.reset();
        EXPECT_EQ(workspaces->workspaces()[i], expected);
    }
    EXPECT_EQ(workspaces->workspaces()[3].spaceId, home.id);
    EXPECT_EQ(workspaces->activeSpaceId(), std::nullopt);
    EXPECT_EQ(manager.activeSpace().name, "Global");
    EXPECT_FALSE(manager.deleteSpace(work.id));

    // Another run reads the same spaces back; the moved workspaces stayed moved.
    startWorkspaces();
    EXPECT_EQ(startSpaces().spaces(), std::vector<WorkspaceSpace>{home});
    EXPECT_EQ(workspaces->workspaces()[0].spaceId, std::nullopt);
}

TEST_F(SpaceManagerTest, ValidatesNamesAndActivatesKnownSpacesOnly) {
    auto& manager = startSpaces();
    const auto work = manager.addSpace(" Work ").value();
    EXPECT_EQ(work.name, "Work");
    struct Case {
        const char* name;
        std::optional<Uuid> editing;
        std::optional<std::string> error;
    };
    const std::string taken = SpaceManager::kNameTaken;
    // clang-format off
    const Case cases[] = {
        {"", {}, SpaceManager::kNameEmpty}, {"  ", {}, SpaceManager::kNameEmpty},
        {"work", {}, taken},                {"Global", {}, taken},
        {"work", work.id, {}},              {"Play", {}, {}},
    };
    // clang-format on
    for (const auto& c : cases) {
        const auto result = manager.validateName(c.name, c.editing);
        EXPECT_EQ(result ? std::nullopt : std::optional(result.error()), c.error) << c.name;
    }
    EXPECT_FALSE(manager.activate(Uuid::random()));
    EXPECT_TRUE(manager.activate(work.id));
    EXPECT_EQ(defaults.string(WorkspaceService::kActiveSpaceIdKeyV2), work.id.string());
    EXPECT_TRUE(manager.activate(manager.globalSpace().id));
    EXPECT_EQ(workspaces->activeSpaceId(), std::nullopt);
}

TEST_F(SpaceManagerTest, OrphanedWorkspacesMoveToGlobalAtStart) {
    auto& service = startWorkspaces();
    service.add(named("Orphan", Uuid::random()));
    service.add(named("Global"));
    startSpaces();
    EXPECT_EQ(workspaces->workspaces()[0].spaceId, std::nullopt);
    EXPECT_TRUE(log.contains("Fixed orphaned workspaces (assigned to Default space)"));
    EXPECT_TRUE(log.contains("Saved migrated/fixed workspaces"));
    EXPECT_EQ(storedNames(), (std::vector<std::string>{"Orphan", "Global"}));
}

TEST_F(SpaceManagerTest, CyclingStepsThroughSpacesAndCommitsOnRelease) {
    auto& manager = startSpaces();
    manager.previewNextSpace();
    const auto work = manager.addSpace("Work").value();
    manager.previewNextSpace();
    EXPECT_EQ(manager.pendingSpaceId(), work.id);
    manager.cancelPendingSpace();
    manager.previewNextSpace();
    manager.commitPendingSpace();
    EXPECT_EQ(workspaces->activeSpaceId(), work.id);
    manager.previewNextSpace();
    manager.previewNextSpace();
    manager.commitPendingSpace();
    for (const auto* line :
         {"Cycle: previewNextSpace called but no other spaces exist",
          "Cycle: pending space set to 'Work'", "Cycle: pending space cancelled",
          "Cycle: committing switch to 'Work'", "Cycle: pending space set to 'Global'",
          "Cycle: pending space same as active — no switch needed"}) {
        EXPECT_TRUE(log.contains(line)) << line;
    }
}

}  // namespace
}  // namespace corvetta::testing
