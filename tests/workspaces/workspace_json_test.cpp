#include "workspaces/workspace_json.h"

#include <gtest/gtest.h>

#include "workspaces/space_json.h"

namespace corvetta {
namespace {

Workspace fullWorkspace() {
    Workspace workspace;
    workspace.id = Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    workspace.name = "Coding";
    workspace.windowInfos = {WindowInfo{.frame = {10, 20.5, 800, 600},
                                        .monitorID = "9A1B2C3D-0000-4000-8000-000000000001",
                                        .appBundleIdentifier = "com.example.editor",
                                        .isFullscreen = false,
                                        .zOrder = 0,
                                        .windowTitle = "main.cpp",
                                        .windowIndex = 1,
                                        .newWindowMenuName = "File",
                                        .newWindowItemTitle = "New Window"},
                             WindowInfo{.frame = {0, 0, 100, 100}, .isFullscreen = true}};
    workspace.shortcutKeyCode = 18;
    workspace.shortcutModifiers = 0x100000;
    workspace.displayArrangement = DisplayArrangementInfo{.arrangementFingerprint = "1:none:a"};
    workspace.customLayout = CustomLayout{
        .id = Uuid::random(), .name = "Halves", .layout = {{0, 0, 0.5, 1}, {0.5, 0, 0.5, 1}}};
    workspace.closeNonWorkspaceWindows = true;
    workspace.skipLaunchMissingApps = false;
    workspace.spaceId = Uuid::random();
    workspace.folder = "Work";
    workspace.appDeeplinks = std::map<std::string, std::string>{{"editor#0", "editor://x"}};
    return workspace;
}

TEST(WorkspaceJson, WritesFieldsInOrderAndLeavesAbsentOptionalsOut) {
    const auto full = workspaceToJson(fullWorkspace());
    std::vector<std::string> keys;
    for (const auto& [key, value] : full.items()) {
        keys.push_back(key);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{
                        "id", "name", "windowInfos", "shortcutKeyCode", "shortcutModifiers",
                        "displayArrangement", "customLayout", "closeNonWorkspaceWindows",
                        "skipLaunchMissingApps", "spaceId", "folder", "appDeeplinks"}));
    EXPECT_EQ(full["windowInfos"][0]["frame"], Json::parse("[[10.0, 20.5], [800.0, 600.0]]"));
    EXPECT_EQ(full["customLayout"]["layout"][1], Json::parse("[[0.5, 0.0], [0.5, 1.0]]"));

    const auto bare = workspaceToJson(Workspace{.name = "Bare", .windowInfos = {WindowInfo{}}});
    EXPECT_EQ(
        bare.dump(),
        R"({"name":"Bare","windowInfos":[{"frame":[[0.0,0.0],[0.0,0.0]],"isFullscreen":false}]})");
}

// The list is printed one workspace at a time; the bytes must be those of the whole list printed.
TEST(WorkspaceJson, RoundTripsEveryFieldAsTheWholeListPrinted) {
    const std::vector<Workspace> list{fullWorkspace(), {.name = "Old, no id"}};
    auto encoded = encodeWorkspaces(list);
    ASSERT_TRUE(encoded);
    Json whole = Json::array();
    for (const auto& workspace : list) {
        whole.push_back(workspaceToJson(workspace));
    }
    EXPECT_EQ(*encoded, whole.dump(2));
    EXPECT_EQ(encodeWorkspaces({}).value(), "[]");
    // Text that is not UTF-8 cannot be carried, even after good workspaces.
    EXPECT_FALSE(encodeWorkspaces({list[0], Workspace{.name = "bad \xff byte"}}));
    const auto decoded = decodeLossyWorkspaces(*encoded);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->dropped, 0u);
    EXPECT_EQ(decoded->workspaces, list);
}

// Each element that fails is skipped on its own; the rest of the list survives.
TEST(WorkspaceJson, LossyListDropsOnlyTheDamagedWorkspaces) {
    const std::string window = R"({"frame": [[0, 0], [10, 10]], "isFullscreen": false})";
    struct Case {
        const char* what;
        std::string element;
        bool decodes;
    };
    // clang-format off
    const Case cases[] = {
        {"only frame and isFullscreen", R"({"name": "a", "windowInfos": [)" + window + "]}", true},
        {"window without frame", R"({"name": "a", "windowInfos": [{"isFullscreen": true}]})", false},
        {"window without isFullscreen", R"({"name": "a", "windowInfos": [{"frame": [[0, 0], [1, 1]]}]})", false},
        {"no name", R"({"windowInfos": []})", false},
        {"no windowInfos", R"({"name": "a"})", false},
        {"key code over 16 bits", R"({"name": "a", "windowInfos": [], "shortcutKeyCode": 70000})", false},
        {"deeplink not text", R"({"name": "a", "windowInfos": [], "appDeeplinks": {"k": 1}})", false},
        {"not an object", "42", false},
    };
    // clang-format on
    for (const auto& c : cases) {
        const auto text = R"([{"name": "keep", "windowInfos": []}, )" + c.element + "]";
        const auto decoded = decodeLossyWorkspaces(text);
        ASSERT_TRUE(decoded) << c.what;
        EXPECT_EQ(decoded->workspaces.size(), c.decodes ? 2u : 1u) << c.what;
        EXPECT_EQ(decoded->dropped, c.decodes ? 0u : 1u) << c.what;
    }
    EXPECT_FALSE(decodeLossyWorkspaces(R"({"name": "not a list"})"));
    EXPECT_FALSE(decodeLossyWorkspaces("[{"));
}

TEST(SpaceJson, RoundTripsThePayloadAndFailsItWhole) {
    const SpacesPayload payload{{{.id = Uuid::random(), .name = "Work", .folder = "Jobs"},
                                 {.id = Uuid::random(),
                                  .name = "Home",
                                  .shortcutKeyCode = 4,
                                  .shortcutModifiers = 0x180000}}};
    EXPECT_EQ(decodeSpacesPayload(encodeSpacesPayload(payload)).value(), payload);
    for (const char* damaged : {"[]", R"({"spaces": {}})", R"({"spaces": [{"name": "x"}]})",
                                R"({"spaces": [{"id": "nope", "name": "x"}]})", "{"}) {
        EXPECT_FALSE(decodeSpacesPayload(damaged)) << damaged;
    }
}

}  // namespace
}  // namespace corvetta
