#include <fstream>

#include "app/app_notifications.h"
#include "automation_methods_fixture.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using testing_support::AutomationMethodsTest;

class SetupMethodsTest : public AutomationMethodsTest {
protected:
    ServiceRoot& services() { return rig->services; }
    std::string exportTo(const std::filesystem::path& target) {
        return result("export_setup", {{"path", target.string()}})["path"];
    }
    testing::TemporaryFolder folder;
};

TEST_F(SetupMethodsTest, ExportThenImportIntoTheSameSetUpAddsEverythingUnderNewNames) {
    const auto work = services().spaceManager.addSpace("Work");
    ASSERT_TRUE(work);
    services().workspaceService.add(Workspace{.id = Uuid::random(),
                                              .name = "Morning",
                                              .shortcutKeyCode = 18,
                                              .shortcutModifiers = 0x40000,
                                              .spaceId = work->id});
    const auto layoutsBefore = services().customLayoutStore.layouts().size();
    preferences.set("gapSize", 12.0);

    const std::filesystem::path file = exportTo(folder.path());
    EXPECT_EQ(file.parent_path(), folder.path());
    EXPECT_EQ(file.filename().string().rfind("Corvetta_Backup_", 0), 0U);

    // Preview first: it says what would happen and changes nothing.
    const auto preview = result("import_preview", {{"path", file.string()}});
    EXPECT_EQ(preview["workspaces"], 1);
    EXPECT_EQ(preview["newSpaces"], 1);
    EXPECT_EQ(preview["layouts"], layoutsBefore);
    EXPECT_EQ(preview["renamed"], 2 + static_cast<int>(layoutsBefore));
    EXPECT_EQ(preview["shortcutsCleared"], 1);
    EXPECT_EQ(preview["settings"], true);
    EXPECT_EQ(services().workspaceService.workspaces().size(), 1U);
    EXPECT_EQ(services().spaceManager.spaces().size(), 1U);

    preferences.set("gapSize", 3.0);
    preferences.set("dragToSnapEnabled", false);
    int dragToSnapAnnounced = 0;
    const auto token =
        notifications.addObserver(AppNotifications::kDragToSnapEnabledChanged,
                                  [&](const Notification&) { ++dragToSnapAnnounced; });
    const auto imported = result("import_setup", {{"path", file.string()}});
    EXPECT_EQ(imported["workspaces"], 1);
    EXPECT_EQ(imported["settingsChanged"], Json::parse(R"(["dragToSnapEnabled", "gapSize"])"));
    EXPECT_EQ(dragToSnapAnnounced, 1);
    EXPECT_EQ(preferences.doubleValue("gapSize"), 12.0);

    const auto& spaces = services().spaceManager.spaces();
    ASSERT_EQ(spaces.size(), 2U);
    EXPECT_EQ(spaces[1].name, "Work (Imported)");
    EXPECT_NE(spaces[1].id, work->id);
    const auto& workspaces = services().workspaceService.workspaces();
    ASSERT_EQ(workspaces.size(), 2U);
    EXPECT_EQ(workspaces[1].name, "Morning (Imported)");
    EXPECT_EQ(workspaces[1].spaceId, spaces[1].id);
    EXPECT_FALSE(workspaces[1].shortcutKeyCode.has_value());
    EXPECT_EQ(services().customLayoutStore.layouts().size(), 2 * layoutsBefore);

    // A second import renames once more rather than overwriting the first.
    const auto again = result("import_setup", {{"path", file.string()}});
    EXPECT_EQ(services().workspaceService.workspaces().back().name, "Morning (Imported 2)");
    EXPECT_EQ(again["renames"][0]["to"], "Work (Imported 2)");
}

TEST_F(SetupMethodsTest, BadPathsAndFilesAreRefusedAndChangeNothing) {
    const auto write = [&](const char* name, const char* text) {
        std::ofstream(folder.path() / name) << text;
        return (folder.path() / name).string();
    };
    const struct {
        const char* method;
        std::string path;
        std::string error;
    } cases[] = {
        {"export_setup", "relative.json", "Invalid param path: must be an absolute path"},
        {"import_preview", "relative.json", "Invalid param path: must be an absolute path"},
        {"export_setup", write("blocker", "a file, not a folder") + "/setup.json",
         "Invalid param path: Failed to encode data: "},
        {"import_preview", (folder.path() / "nothing.json").string(), "Not found: file '"},
        {"import_setup", write("text.json", "not json"),
         "Invalid param path: Failed to read data: "},
        {"import_setup", write("object.json", R"({"hello": 1})"),
         "Invalid param path: File format is not valid. Please select a valid Corvetta export "
         "file."},
        {"import_setup", write("damaged.json", R"([{"name": "W", "windowInfos": [{"frame": 1}]}])"),
         "Invalid param path: Failed to read data: Malformed value for key \"frame\" at "
         "[0].windowInfos[0].frame"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(error(c.method, {{"path", c.path}}).rfind(c.error, 0), 0U)
            << c.method << " " << c.path << ": " << error(c.method, {{"path", c.path}});
    }
    EXPECT_TRUE(services().workspaceService.workspaces().empty());
    EXPECT_TRUE(services().spaceManager.spaces().empty());
}

}  // namespace
}  // namespace corvetta
