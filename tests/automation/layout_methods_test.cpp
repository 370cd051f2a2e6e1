#include "automation_methods_fixture.h"

namespace corvetta {
namespace {

using LayoutMethodsTest = testing_support::AutomationMethodsTest;

TEST_F(LayoutMethodsTest, SavedLayoutsAreListedInTheFormTheyAreSavedIn) {
    rig->services.customLayoutStore.seedDefaultsIfNeeded();
    const Json panes = Json::parse("[[0, 0, 0.75, 1], [0.75, 0, 0.25, 1]]");
    const Json saved = result("save_layout", {{"name", "  Wide  "}, {"panes", panes}});
    const Json listed = result("list_layouts")["layouts"];
    ASSERT_EQ(listed.size(), 7u);
    EXPECT_EQ(listed[6], saved);
    EXPECT_EQ(saved["name"], "Wide");
    EXPECT_EQ(saved["panes"], panes);
    EXPECT_EQ(listed[2]["panes"][1], Json::parse("[0.3333333333333333, 0, 0.3333333333333333, 1]"));
    EXPECT_EQ(listed[0], Json::parse(R"({"id": ")" + listed[0]["id"].get<std::string>() +
                                     R"(", "name": "Full",
        "description": "1 window taking the full screen", "panes": [[0, 0, 1, 1]],
        "spaceId": null, "folder": null, "shortcut": null, "defaultTemplateKey": "full",
        "applyToAllDisplays": false})"));
}

TEST_F(LayoutMethodsTest, SaveLayoutRefusesWhatTheBuilderWouldNot) {
    result("save_layout", {{"name", "Wide"}, {"panes", Json::parse("[[0, 0, 1, 1]]")}});
    const auto pane = [](const char* panes) { return Json::parse(panes); };
    const struct {
        Json params;
        std::string error;
    } cases[] = {
        {{{"name", "WIDE"}, {"panes", pane("[[0, 0, 1, 1]]")}},
         "A layout with this name already exists."},
        {{{"name", " "}, {"panes", pane("[[0, 0, 1, 1]]")}},
         "Invalid param name: expected a name that is not blank"},
        {{{"panes", pane("[[0, 0, 1, 1]]")}}, "Missing required param: name"},
        {{{"name", "A"}}, "Missing required param: panes"},
        {{{"name", "A"}, {"panes", pane("[]")}},
         "Invalid param panes: expected a list of at least one [x, y, width, height]"},
        {{{"name", "A"}, {"panes", pane("[[0, 0, 1, 1], [0, 0, 1]]")}},
         "Invalid param panes: pane 2 is not [x, y, width, height]"},
        {{{"name", "A"}, {"panes", pane("[[0, 0, 0, 1]]")}},
         "Invalid param panes: pane 1 needs a positive width and height"},
        {{{"name", "A"}, {"panes", pane("[[0.5, 0, 0.6, 1]]")}},
         "Invalid param panes: pane 1 reaches outside the unit square (0 <= x, y and x + width, "
         "y + height <= 1)"},
        {{{"name", "A"}, {"panes", pane("[[0, 0, 1, 1]]")}, {"space", "Home"}},
         "Not found: space 'Home'"},
        {{{"name", "wide"}, {"panes", pane("[[0, 0, 1, 1]]")}, {"space", "Work"}},
         "A layout with this name already exists in this space or the global space."},
    };
    result("create_space", {{"name", "Work"}});
    for (const auto& c : cases) {
        EXPECT_EQ(error("save_layout", c.params), c.error) << c.params.dump();
    }
    const auto saved = result(
        "save_layout", {{"name", "Tall"}, {"panes", pane("[[0, 0, 1, 1]]")}, {"space", "Work"}});
    EXPECT_EQ(saved["spaceId"], result("list_spaces")["spaces"][1]["id"]);
    EXPECT_EQ(result("list_layouts")["layouts"].size(), 2u);
}

TEST_F(LayoutMethodsTest, ApplyWorkspaceLayoutAnswersOnceTheWindowsAreInTheirPanes) {
    rig->services.customLayoutStore.seedDefaultsIfNeeded();
    rig->sim.setMouseLocation({700, 400});
    EXPECT_EQ(result("apply_workspace_layout", {{"name", "Halves"}}),
              Json::parse(R"({"name": "Halves", "windowCount": 2, "windowsVerified": 2})"));
    EXPECT_EQ(frameOf(kMain), Rect(0, 25, 720, 875));

    rig->sim.setMouseLocation({2000, 400});
    const struct {
        Json params;
        std::string error;
    } cases[] = {
        {{{"name", "Nope"}}, "Not found: layout 'Nope'"},
        {Json::object(), "Missing required param: name"},
        {{{"name", "Halves"}}, "No eligible windows on screen for layout"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(error("apply_workspace_layout", c.params), c.error) << c.params.dump();
    }
}

}  // namespace
}  // namespace corvetta
