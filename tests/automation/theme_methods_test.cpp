#include "automation/automation_methods_fixture.h"
#include "foundation/json.h"
#include "support/temporary_folder.h"

namespace corvetta::testing_support {
namespace {

class ThemeMethodsTest : public AutomationMethodsTest {
protected:
    // The toasts that reached the screen, in order.
    std::vector<std::string> toastsShown() const {
        std::vector<std::string> shown;
        for (const auto& message : loggedMessages("ToastManager")) {
            if (message.starts_with("Toast shown: ")) {
                shown.push_back(message.substr(13));
            }
        }
        return shown;
    }

    static std::string theme(const std::string& name, const std::string& color = "#223344") {
        Json colors = Json::object();
        for (const auto& role : themeRoles()) {
            colors[std::string(role.key)] = color;
        }
        return writeJson(Json{{"name", name}, {"dark", colors}}, JsonStyle::compact);
    }

    testing::TemporaryFolder folder;
};

TEST_F(ThemeMethodsTest, ImportsListsSelectsAndDeletesThemes) {
    const Json imported = result("import_theme", {{"json", Json::parse(theme("Mine"))}});
    const std::string id = imported["id"];
    EXPECT_EQ(imported["source"], "imported");
    EXPECT_EQ(imported["current"], true);

    testing::writeTestFile(folder / "other.json", theme("Other"));
    const Json edited =
        result("import_theme", {{"path", (folder / "other.json").string()}, {"editing", id}});
    EXPECT_EQ(edited["id"], id);
    EXPECT_EQ(edited["name"], "Other");

    const Json listed = result("list_themes");
    EXPECT_EQ(listed["current"], id);
    EXPECT_EQ(
        listed["themes"][0],
        (Json{{"id", "default"}, {"name", "Default"}, {"source", "builtIn"}, {"current", false}}));
    EXPECT_EQ(listed["themes"].back()["name"], "Other");

    EXPECT_EQ(listed["appearance"], "light");
    result("simulate", {{"appearance", "dark"}});
    EXPECT_EQ(result("list_themes")["appearance"], "dark");

    EXPECT_EQ(result("select_theme", {{"id", "nord"}})["current"], true);
    EXPECT_EQ(result("delete_theme", {{"id", id}}), (Json{{"deleted", id}, {"current", "nord"}}));
    EXPECT_EQ(toastsShown(),
              (std::vector<std::string>{"Theme 'Mine' imported", "Theme 'Other' imported"}));
}

TEST_F(ThemeMethodsTest, RefusalsCarryTheTextTheUserWouldSee) {
    const struct {
        const char* method;
        Json params;
        std::string error;
    } cases[] = {
        {"import_theme",
         {{"json", R"({"name": "x"})"}},
         R"(The theme must define at least one of "light" or "dark".)"},
        {"import_theme",
         {{"path", "/nonexistent/theme.json"}},
         "The file couldn't be read: Could not open (No such file or directory)"},
        {"import_theme",
         {{"path", "theme.json"}},
         R"(Invalid param path: must be an absolute path, got "theme.json")"},
        {"import_theme", Json::object(),
         "Invalid param: give either path (a theme file) or json (the theme itself)"},
        {"select_theme", {{"id", "solarized"}}, "Not found: theme 'solarized'"},
        {"delete_theme",
         {{"id", "dracula"}},
         "Invalid param id: 'dracula' is a built-in theme; only imported themes can be deleted"},
        {"delete_theme", Json::object(), "Missing required param: id"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(error(c.method, c.params), c.error) << c.params.dump();
    }
    EXPECT_EQ(result("list_themes")["current"], "default");
    // Failed imports are told on screen as well.
    EXPECT_EQ(toastsShown(),
              (std::vector<std::string>{
                  R"(The theme must define at least one of "light" or "dark".)",
                  "The file couldn't be read: Could not open (No such file or directory)"}));
}

TEST_F(ThemeMethodsTest, RestorationsLayoutsAndSetupImportsAreAnnounced) {
    result("capture_workspace", {{"name", "Desk"}});
    result("restore_workspace", {{"name", "Desk"}});
    // A second restoration while one runs is refused without ending the first one's notice.
    send("restore_workspace", {{"name", "Desk"}});
    send("restore_workspace", {{"name", "Desk"}});
    queue.runUntilIdle();
    queue.advance(std::chrono::seconds(1));
    result("save_layout", {{"name", "Full"}, {"panes", Json::parse("[[0, 0, 1, 1]]")}});
    result("apply_workspace_layout", {{"name", "Full"}});
    error("import_setup", {{"path", (folder / "missing.json").string()}});
    // A quick restoration never shows its loading notice.
    EXPECT_EQ(toastsShown(),
              (std::vector<std::string>{
                  "Restored 'Desk': 3 of 3 windows placed", "A restoration is already in progress",
                  "Restored 'Desk': 3 of 3 windows placed", "Applied 'Full' to 1 window",
                  "Import failed: Not found: file '" + (folder / "missing.json").string() + "'"}));
}

}  // namespace
}  // namespace corvetta::testing_support
