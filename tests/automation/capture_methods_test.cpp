#include "automation_methods_fixture.h"

namespace corvetta {
namespace {

using testing_support::AutomationMethodsTest;

class CaptureMethodsTest : public AutomationMethodsTest {
protected:
    const std::vector<Workspace>& saved() { return rig->services.workspaceService.workspaces(); }
};

TEST_F(CaptureMethodsTest, CapturesTheWindowsIntoANewWorkspaceWithTheDisplays) {
    const auto captured = result("capture_workspace", {{"name", " Desk "}});
    EXPECT_EQ(captured["success"], true);
    EXPECT_EQ(captured["name"], "Desk");
    // The editor's window and its minimized one, and the terminal's; not the accessory helper.
    EXPECT_EQ(captured["windowCount"], 3);
    ASSERT_EQ(saved().size(), 1u);
    const Workspace& desk = saved().front();
    EXPECT_EQ(captured["id"], desk.id->string());
    EXPECT_EQ(desk.spaceId, std::nullopt);
    ASSERT_TRUE(desk.displayArrangement);
    EXPECT_EQ(desk.displayArrangement->displayFingerprints.size(), 2u);
    EXPECT_EQ(desk.windowInfos.front().windowTitle, "main.cpp");
    EXPECT_EQ(desk.windowInfos.back().isMinimized, true);
}

TEST_F(CaptureMethodsTest, RestoresANamedWorkspaceAndAnswersWithWhatItDid) {
    result("capture_workspace", {{"name", "Desk"}});
    const Json restored = result("restore_workspace", {{"name", "Desk"}});
    EXPECT_EQ(restored["name"], "Desk");
    EXPECT_EQ(restored["windowsSaved"], 3);
    EXPECT_EQ(restored["windowsPlaced"], 3);
    EXPECT_EQ(restored["failedApps"], Json::array());
    EXPECT_EQ(restored["summary"], "Restored 'Desk': 3 of 3 windows placed");
    EXPECT_EQ(error("restore_workspace", {{"name", "desk"}}), "Not found: workspace 'desk'");
    EXPECT_EQ(error("restore_workspace"), "Missing required param: name");
}

TEST_F(CaptureMethodsTest, PreviewsWithoutSaving) {
    const auto preview = result("preview_capture", {{"bundle_ids", {"com.example.terminal"}}});
    EXPECT_EQ(preview["windowCount"], 1);
    EXPECT_EQ(preview["windows"][0],
              (Json{{"appBundleIdentifier", "com.example.terminal"},
                    {"windowTitle", "zsh"},
                    {"frame", {{"x", 0}, {"y", 25}, {"width", 400}, {"height", 300}}},
                    {"monitorID", "1440x900_2.0_builtin_built-in_smart_1440x900_0_0"},
                    {"zOrder", 0},
                    {"windowIndex", 0},
                    {"isFullscreen", false},
                    {"isMinimized", false},
                    {"newWindowMenuName", nullptr},
                    {"newWindowItemTitle", nullptr}}));
    EXPECT_EQ(result("preview_capture")["windowCount"], 3);
    EXPECT_TRUE(saved().empty());
}

TEST_F(CaptureMethodsTest, RefusesWhatItCannotSaveAndSavesNothing) {
    result("capture_workspace", {{"name", "Desk"}});
    const std::vector<std::pair<Json, std::string>> cases{
        {{{"name", "desk"}}, WorkspaceService::kNameTaken},
        {{{"name", "  "}}, WorkspaceService::kNameRequired},
        {Json::object(), "Missing required param: name"},
        {{{"name", "Other"}, {"bundle_ids", {"com.example.nothing"}}}, "No windows to capture"},
        {{{"name", "Other"}, {"bundle_ids", "com.example.editor"}},
         "Invalid param bundle_ids: expected a list of bundle identifiers"},
        {{{"name", "Other"}, {"bundle_ids", {1}}},
         "Invalid param bundle_ids: expected a list of bundle identifiers"},
    };
    for (const auto& [params, text] : cases) {
        EXPECT_EQ(error("capture_workspace", params), text) << params.dump();
    }
    EXPECT_EQ(saved().size(), 1u);
}

}  // namespace
}  // namespace corvetta
