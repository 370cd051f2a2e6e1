#include "import_export/import_resolution.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

Uuid id(std::uint8_t n) {
    Uuid::Bytes bytes{};
    bytes[15] = n;
    return Uuid(bytes);
}

// Fresh identifiers counting down from 200, so expectations can name them.
struct IdSource {
    std::uint8_t next = 200;
    std::function<Uuid()> function() {
        return [this] { return id(next--); };
    }
};

Workspace workspace(const char* name, std::optional<Uuid> workspaceId,
                    std::optional<Uuid> spaceId = std::nullopt) {
    Workspace w;
    w.id = workspaceId;
    w.name = name;
    w.spaceId = spaceId;
    return w;
}

template <class Record>
Record withShortcut(Record record, std::uint16_t keyCode, std::uint32_t modifiers) {
    record.shortcutKeyCode = keyCode;
    record.shortcutModifiers = modifiers;
    return record;
}

CustomLayoutTemplate layout(const char* name, Uuid layoutId) {
    CustomLayoutTemplate t;
    t.id = layoutId;
    t.name = name;
    t.panes = {Rect(0, 0, 1, 1)};
    return t;
}

TEST(ImportResolution, RenamesRenumbersAndFollowsSpaceReferences) {
    // The store: workspace "Morning" (id 1, Control-1) and space "Work" (id 9).
    const std::vector<Workspace> workspaces = {
        withShortcut(workspace("Morning", id(1)), 18, 0x40000)};
    const std::vector<WorkspaceSpace> spaces = {WorkspaceSpace{id(9), "Work", {}, {}, {}}};
    const std::vector<CustomLayoutTemplate> layouts;

    ImportResult file;
    file.spaces = {WorkspaceSpace{id(9), "Work", {}, {}, {}}};
    file.workspaces = {withShortcut(workspace("Morning", id(1), id(9)), 18, 0x40000),
                       workspace("Evening", id(2), id(9)), workspace("Stray", id(3), id(77)),
                       workspace("Old", std::nullopt, id(9))};
    IdSource ids;
    const auto resolved = resolveImport(file, {workspaces, spaces, layouts}, ids.function());

    ASSERT_EQ(resolved.spacesToCreate.size(), 1U);
    const Uuid newSpace = resolved.spacesToCreate[0].id;
    EXPECT_EQ(newSpace, id(200));
    EXPECT_EQ(resolved.spacesToCreate[0].name, "Work (Imported)");

    ASSERT_EQ(resolved.workspacesToAdd.size(), 4U);
    const auto& morning = resolved.workspacesToAdd[0];
    EXPECT_EQ(morning.name, "Morning (Imported)");
    EXPECT_EQ(morning.id, id(199));
    EXPECT_EQ(morning.spaceId, newSpace);
    EXPECT_FALSE(morning.shortcutKeyCode.has_value());
    const auto& evening = resolved.workspacesToAdd[1];
    EXPECT_EQ(evening.name, "Evening");
    EXPECT_EQ(evening.id, id(2));
    EXPECT_EQ(evening.spaceId, newSpace);
    EXPECT_FALSE(resolved.workspacesToAdd[2].spaceId.has_value()) << "a space nobody has";
    EXPECT_EQ(resolved.workspacesToAdd[3].id, id(198)) << "old data gets an identifier";

    EXPECT_EQ(resolved.renamedCount, 2);
    EXPECT_EQ(resolved.clearedShortcutCount, 1);
    ASSERT_EQ(resolved.renames.size(), 2U);
    EXPECT_EQ(resolved.renames[0].kind, "space");
    EXPECT_EQ(resolved.renames[1].to, "Morning (Imported)");
}

TEST(ImportResolution, ImportingTheSameFileTwiceNeverCollides) {
    std::vector<Workspace> workspaces = {workspace("X", id(1))};
    std::vector<WorkspaceSpace> spaces;
    std::vector<CustomLayoutTemplate> layouts;
    ImportResult file;
    file.workspaces = {withShortcut(workspace("X", id(1)), 7, 0x100000),
                       withShortcut(workspace("Y", id(2)), 8, 0x100000)};
    file.customLayouts = {withShortcut(layout("L", id(5)), 9, 0x100000)};

    IdSource ids;
    const auto first = resolveImport(file, {workspaces, spaces, layouts}, ids.function());
    EXPECT_EQ(first.workspacesToAdd[0].name, "X (Imported)");
    EXPECT_EQ(first.clearedShortcutCount, 0);
    workspaces.insert(workspaces.end(), first.workspacesToAdd.begin(), first.workspacesToAdd.end());
    layouts = first.layoutsToAdd;

    const auto second = resolveImport(file, {workspaces, spaces, layouts}, ids.function());
    EXPECT_EQ(second.workspacesToAdd[0].name, "X (Imported 2)");
    EXPECT_EQ(second.workspacesToAdd[1].name, "Y (Imported)");
    EXPECT_EQ(second.layoutsToAdd[0].name, "L (Imported)");
    EXPECT_EQ(second.clearedShortcutCount, 3) << "every shortcut the first import brought";
    for (const auto& added : second.workspacesToAdd) {
        for (const auto& existing : workspaces) {
            EXPECT_NE(added.id, existing.id);
        }
    }
    EXPECT_NE(second.layoutsToAdd[0].id, first.layoutsToAdd[0].id);
}

TEST(ImportResolution, NamesWithinTheFileAndBuiltInCopiesStayDistinct) {
    const std::vector<Workspace> workspaces;
    const std::vector<WorkspaceSpace> spaces;
    auto halves = layout("Halves", id(1));
    halves.defaultTemplateKey = "halves";
    const std::vector<CustomLayoutTemplate> layouts = {halves};

    ImportResult file;
    file.workspaces = {workspace("Same", id(3)), workspace("Same", id(4)),
                       workspace("same", id(5))};
    auto importedHalves = layout("Halves", id(6));
    importedHalves.defaultTemplateKey = "halves";
    auto importedThirds = layout("Thirds", id(7));
    importedThirds.defaultTemplateKey = "thirds";
    file.customLayouts = {importedHalves, importedThirds};
    IdSource ids;
    const auto resolved = resolveImport(file, {workspaces, spaces, layouts}, ids.function());

    EXPECT_EQ(resolved.workspacesToAdd[0].name, "Same");
    EXPECT_EQ(resolved.workspacesToAdd[1].name, "Same (Imported)");
    EXPECT_EQ(resolved.workspacesToAdd[2].name, "same") << "names compare exactly";
    EXPECT_FALSE(resolved.layoutsToAdd[0].defaultTemplateKey.has_value());
    EXPECT_EQ(resolved.layoutsToAdd[1].defaultTemplateKey, "thirds");
}

TEST(ImportResolution, CountsWorkspacesThatTypeTerminalCommands) {
    const std::vector<Workspace> none;
    const std::vector<WorkspaceSpace> noSpaces;
    const std::vector<CustomLayoutTemplate> noLayouts;
    auto typing = workspace("Dev", id(1));
    typing.appDeeplinks = {{"com.apple.Terminal#0", "~/src"}, {"com.apple.Terminal#1", "make run"}};
    auto browsing = workspace("Web", id(2));
    browsing.appDeeplinks = {{"com.apple.Terminal#0", "/srv"}, {"org.mozilla.firefox#0", "ls"}};
    ImportResult file;
    file.workspaces = {typing, browsing};
    EXPECT_EQ(resolveImport(file, {none, noSpaces, noLayouts}).terminalCommandCount, 1);
}

}  // namespace
}  // namespace corvetta
