#include "automation_methods_fixture.h"
#include "workspaces/display_key.h"
#include "workspaces/workspace_json.h"

namespace corvetta {
namespace {

using testing_support::AutomationMethodsTest;

class WorkspaceMethodsTest : public AutomationMethodsTest {
protected:
    WorkspaceService& workspaces() { return rig->services.workspaceService; }

    // "Coding": an editor window on the built-in display of a recorded arrangement.
    Workspace coding() {
        DisplayFingerprint builtIn{.resolution = {1440, 900},
                                   .isBuiltIn = true,
                                   .name = "Built-in",
                                   .persistentUUID = "9A1B2C3D-0000-4000-8000-000000000001"};
        return Workspace{
            .id = Uuid::random(),
            .name = "Coding",
            .windowInfos = {{.frame = {0, 25, 720, 875},
                             .monitorID = builtIn.persistentUUID,
                             .appBundleIdentifier = "com.example.editor",
                             .windowTitle = "main.cpp",
                             .windowIndex = 0}},
            .displayArrangement = DisplayArrangementInfo{.displayFingerprints = {builtIn},
                                                         .mainDisplayFingerprint = builtIn,
                                                         .arrangementFingerprint = "1:x:x"},
            .appDeeplinks = std::map<std::string, std::string>{{"editor#0", "editor://main"}}};
    }
};

TEST_F(WorkspaceMethodsTest, ListsAndDescribesSeededWorkspaces) {
    workspaces().add(coding());
    workspaces().add(Workspace{.id = Uuid::random(), .name = "Empty"});

    const auto list = result("list_workspaces")["workspaces"];
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0]["windowCount"], 1);
    EXPECT_EQ(list[0]["deeplinks"], Json::parse(R"({"editor#0": "editor://main"})"));
    EXPECT_EQ(list[1]["spaceId"], nullptr);

    const auto layout = result("get_workspace_layout", {{"name", "Coding"}});
    EXPECT_EQ(layout["windowCount"], 1);
    Json window = Json::parse(R"({"appBundleIdentifier": "com.example.editor",
        "windowTitle": "main.cpp", "monitorID": "9A1B2C3D-0000-4000-8000-000000000001",
        "frame": {"x": 0.0, "y": 25.0, "width": 720.0, "height": 875.0}, "isFullscreen": false,
        "relativePosition": {"x": 0.0, "y": 0.0}, "windowIndex": 0, "screen": null,
        "newWindowMenuName": null, "newWindowItemTitle": null})");
    window["screen"] = displayKey(coding().displayArrangement->displayFingerprints[0]);
    EXPECT_EQ(layout["windows"][0], window);
    const auto& display = layout["savedDisplayArrangement"]["displays"][0];
    EXPECT_EQ(display["name"], "Built-in");
    EXPECT_EQ(display["mainDisplay"], true);
    EXPECT_EQ(result("get_workspace_layout", {{"name", "Empty"}})["savedDisplayArrangement"],
              nullptr);
}

TEST_F(WorkspaceMethodsTest, ChangesWorkspacesAndSpacesByName) {
    workspaces().add(coding());
    workspaces().add(Workspace{.id = Uuid::random(), .name = "Mail"});

    EXPECT_EQ(result("rename_workspace", {{"name", "Coding"}, {"new_name", " Deep work "}}),
              Json::parse(R"({"name": "Deep work"})"));
    const auto created = result("create_space", {{"name", "Work"}});
    EXPECT_EQ(result("activate_space", {{"name", "Work"}})["active"], "Work");
    const auto spaces = result("list_spaces")["spaces"];
    ASSERT_EQ(spaces.size(), 2u);
    EXPECT_EQ(spaces[0]["name"], "Global");
    EXPECT_EQ(spaces[0]["isGlobal"], true);
    EXPECT_EQ(spaces[1]["isActive"], true);
    EXPECT_EQ(spaces[1]["id"], created["id"]);
    EXPECT_EQ(result("activate_space", {{"name", "Global"}})["id"], spaces[0]["id"]);
    EXPECT_EQ(result("delete_space", {{"name", "Work"}}), Json::parse(R"({"deleted": "Work"})"));
    EXPECT_EQ(result("delete_workspace", {{"name", "Mail"}}),
              Json::parse(R"({"deleted": "Mail"})"));
    EXPECT_EQ(workspaces().workspaces().size(), 1u);
}

// Every refusal answers with the text a client can show, and changes nothing.
TEST_F(WorkspaceMethodsTest, RefusesUnknownNamesAndInvalidNames) {
    workspaces().add(coding());
    workspaces().add(Workspace{.id = Uuid::random(), .name = "Mail"});
    ASSERT_TRUE(rig->services.spaceManager.addSpace("Work"));
    struct Case {
        const char* method;
        Json params;
        std::string error;
    };
    // clang-format off
    const Case cases[] = {
        {"get_workspace_layout", {{"name", "Nope"}}, "Not found: workspace 'Nope'"},
        {"delete_workspace", {{"name", "Nope"}}, "Not found: workspace 'Nope'"},
        {"delete_workspace", Json::object(), "Missing required param: name"},
        {"rename_workspace", {{"name", "Coding"}}, "Missing required param: new_name"},
        {"rename_workspace", {{"name", "Coding"}, {"new_name", "mail"}}, WorkspaceService::kNameTaken},
        {"rename_workspace", {{"name", "Coding"}, {"new_name", "  "}}, WorkspaceService::kNameRequired},
        {"create_space", {{"name", ""}}, SpaceManager::kNameEmpty},
        {"create_space", {{"name", "work"}}, SpaceManager::kNameTaken},
        {"delete_space", {{"name", "Global"}}, "Not found: space 'Global'"},
        {"activate_space", {{"name", "Play"}}, "Not found: space 'Play'"},
        {"set_deeplink", {{"name", "Nope"}, {"bundle_id", "com.example.editor"}, {"window_index", 0}, {"value", "x"}}, "Not found: workspace 'Nope'"},
        {"set_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.editor"}, {"value", "x"}}, "Missing required param: window_index"},
        {"set_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.editor"}, {"window_index", -1}, {"value", "x"}}, "Invalid param window_index: expected a whole number from 0"},
        {"set_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.editor"}, {"window_index", 1}, {"value", "x"}}, "Workspace 'Coding' has no window 1 of com.example.editor"},
        {"set_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.other"}, {"window_index", 0}, {"value", "x"}}, "Workspace 'Coding' has no window 0 of com.example.other"},
        {"set_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.editor"}, {"window_index", 0}, {"value", " \t"}}, "A deeplink needs a value"},
        {"set_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.editor"}, {"window_index", 0}, {"value", "ls\nrm -rf ~"}}, "A deeplink is one line of at most 4096 characters"},
        {"remove_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.editor"}, {"window_index", 3}}, "Not found: deeplink 'com.example.editor#3' in workspace 'Coding'"},
        {"remove_deeplink", {{"name", "Coding"}, {"bundle_id", "com.example.editor"}}, "Missing required param: window_index"},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(error(c.method, c.params), c.error) << c.method << " " << c.params.dump();
    }
    EXPECT_EQ(workspaces().workspaces()[0].name, "Coding");
    EXPECT_EQ(workspaces().workspaces()[0].appDeeplinks, coding().appDeeplinks);
    EXPECT_EQ(rig->services.spaceManager.spaces().size(), 1u);
}

TEST_F(WorkspaceMethodsTest, SetsAndRemovesAWindowsDeeplinkAndSavesIt) {
    workspaces().add(coding());
    const Json window = {
        {"name", "Coding"}, {"bundle_id", "com.example.editor"}, {"window_index", 0}};
    Json set = window;
    set["value"] = " https://example.com ";
    EXPECT_EQ(result("set_deeplink", set), Json::parse(R"({"name": "Coding",
        "key": "com.example.editor#0", "value": "https://example.com", "kind": "browserURL"})"));
    EXPECT_EQ(result("remove_deeplink", window),
              Json::parse(R"({"removed": "com.example.editor#0"})"));
    // What is saved is what a restart reads back: the old entry kept, the removed one gone.
    const auto bytes = rig->services.plumbing.defaults.data(WorkspaceService::kUserDefaultsKey);
    ASSERT_TRUE(bytes.has_value());
    const auto stored =
        decodeLossyWorkspaces(std::string(bytes->begin(), bytes->end())).value().workspaces;
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0].appDeeplinks, coding().appDeeplinks);
    EXPECT_EQ(result("list_workspaces")["workspaces"][0]["deeplinks"].size(), 1u);
}

}  // namespace
}  // namespace corvetta
