#include <gtest/gtest.h>

#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/temporary_folder.h"
#include "support/test_logging.h"
#include "workspaces/add_space_form.h"
#include "workspaces/save_workspace_form.h"

namespace corvetta::testing {
namespace {

// In memory, with a switch that makes every write fail.
class SwitchablePreferences final : public Preferences {
public:
    bool synchronize() override { return writable; }
    std::string lastWriteError() const override { return writable ? "" : "disk full"; }
    bool writable = true;

protected:
    void changed(const PropertyValue::Dictionary&) override {}
};

SimulatedDesktopSetup desk() {
    SimulatedDesktopSetup s;
    s.displays = {{1, "Main", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 1, true}};
    s.applications = {{.pid = 100,
                       .bundleIdentifier = "com.example.editor",
                       .name = "Editor",
                       .windows = {{.number = 1, .title = "main.cpp", .frame = {0, 25, 800, 600}},
                                   {.number = 2, .title = "notes", .frame = {800, 25, 600, 600}}}}};
    return s;
}

// Spaces Work and Home (active); "Mail" global, "Code" in Work.
class WorkspaceFormsTest : public ::testing::Test {
protected:
    void SetUp() override {
        work = spaces.addSpace("Work").value();
        home = spaces.addSpace("Home").value();
        workspaces.add({.id = Uuid::random(), .name = "Mail", .windowInfos = {{}}});
        workspaces.add(
            {.id = Uuid::random(), .name = "Code", .windowInfos = {{}}, .spaceId = work.id});
        spaces.activate(home.id);
        form.open();
        spaceForm.open();
    }
    static void type(NameForm& f, const std::string& name) {
        f.setName(name + "?");  // the user typed, then corrected
        f.setName(name);
    }

    TemporaryFolder folder;
    ManualClock clock;
    ManualQueue queue{clock};
    NotificationCenter notifications;
    TestLogging log{notifications, clock};
    SwitchablePreferences defaults;
    SimulatedDesktop sim{desk(), queue};
    WorkspaceService workspaces{defaults, notifications, clock, log.logging, folder.path()};
    SpaceManager spaces{workspaces,  defaults,      notifications,     clock,
                        log.logging, folder.path(), [](const Uuid&) {}};
    WorkspaceCapture capture{sim.accessibilityPort(),
                             sim.windowListPort(),
                             sim.applicationsPort(),
                             sim.screenPort(),
                             defaults,
                             workspaces,
                             clock,
                             log.logging};
    SaveWorkspaceForm form{{capture, workspaces, spaces, notifications}};
    AddSpaceForm spaceForm{spaces, notifications};
    WorkspaceSpace work, home;
};

TEST_F(WorkspaceFormsTest, NamesAreCheckedAsTypedInTheChosenSpace) {
    struct Row {
        NameForm& form;
        const char* name;
        std::optional<Uuid> space;
        const char* message;
    };
    const Row rows[] = {
        {form, " \n ", home.id, WorkspaceService::kNameRequired},
        {form, "  mail ", home.id, WorkspaceService::kNameTaken},  // global: taken everywhere
        {form, "CODE", work.id, WorkspaceService::kNameTaken},
        {form, "code", std::nullopt, WorkspaceService::kNameTaken},  // global meets every space
        {form, "code", home.id, ""},
        {spaceForm, "  ", std::nullopt, SpaceManager::kNameEmpty},
        {spaceForm, "global", std::nullopt, SpaceManager::kNameTaken},
        {spaceForm, " WORK ", std::nullopt, SpaceManager::kNameTaken},
        {spaceForm, "Travel", std::nullopt, ""},
    };
    EXPECT_EQ(form.nameMessage(), "") << "an untouched form does not complain";
    EXPECT_FALSE(form.canSave());
    EXPECT_EQ(form.spaceId(), home.id) << "the active space is chosen at opening";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        form.chooseSpace(row.space);
        type(row.form, row.name);
        EXPECT_EQ(row.form.nameMessage(), row.message);
        EXPECT_EQ(row.form.canSave(), std::string(row.message).empty());
    }
}

TEST_F(WorkspaceFormsTest, SavesTheListShownUntilRefreshed) {
    EXPECT_EQ(form.windowRows(),
              (std::vector<CapturedWindowRow>{{"Editor", "main.cpp"}, {"Editor", "notes"}}));
    EXPECT_EQ(form.spaceChoices()[0], (SpaceChoice{std::nullopt, "Global"}));
    type(form, " Research ");
    sim.closeWindow(2);
    ASSERT_TRUE(form.save());
    const auto& saved = workspaces.workspaces().back();
    EXPECT_EQ(saved.name, "Research");
    EXPECT_EQ(saved.spaceId, home.id);
    EXPECT_EQ(saved.windowInfos.size(), 2u) << "what the user saw";
    EXPECT_EQ(saved.closeNonWorkspaceWindows, std::nullopt) << "off is stored as absent";
    EXPECT_TRUE(saved.displayArrangement.has_value());
    EXPECT_FALSE(form.canSave()) << "done";

    form.open();
    EXPECT_EQ(form.name(), "");
    EXPECT_EQ(form.windowRows().size(), 1u);
    // Nothing left to capture: the name stays, Save is off.
    type(form, "Empty");
    defaults.set(WorkspaceCapture::kUserExcludedBundleIDsKey,
                 std::vector<std::string>{"com.example.editor"});
    form.refreshWindows();
    EXPECT_EQ(form.name(), "Empty");
    EXPECT_TRUE(form.windowRows().empty());
    EXPECT_FALSE(form.canSave());
}

TEST_F(WorkspaceFormsTest, ChangesWhileOpenAreCheckedAgain) {
    type(form, "Later");
    form.chooseSpace(work.id);
    workspaces.add({.id = Uuid::random(), .name = "later", .windowInfos = {{}}});
    EXPECT_EQ(form.nameMessage(), WorkspaceService::kNameTaken);
    EXPECT_FALSE(form.save());
    EXPECT_EQ(workspaces.workspaces().size(), 3u);

    // The chosen space goes: the workspace would go to the global space, as its siblings did.
    spaces.deleteSpace(work.id);
    EXPECT_EQ(form.spaceId(), std::nullopt);
    EXPECT_EQ(form.spaceChoices().size(), 2u);
}

TEST_F(WorkspaceFormsTest, AWriteFailureKeepsTheWorkspaceAndSaveWritesAgain) {
    type(form, "Research");
    defaults.writable = false;
    EXPECT_FALSE(form.save());
    EXPECT_EQ(form.failure(), std::string(NameForm::kNotWrittenPrefix) + "disk full");
    EXPECT_EQ(form.nameMessage(), "") << "the name is not its own conflict";
    EXPECT_TRUE(form.canSave());
    form.setName("Ignored");
    EXPECT_EQ(form.name(), "Research") << "what was added cannot be edited any more";

    EXPECT_FALSE(form.save()) << "still failing";
    defaults.writable = true;
    EXPECT_TRUE(form.save());
    EXPECT_EQ(form.failure(), "");
    const auto named = std::count_if(workspaces.workspaces().begin(), workspaces.workspaces().end(),
                                     [](const Workspace& w) { return w.name == "Research"; });
    EXPECT_EQ(named, 1) << "written again, never added twice";
}

}  // namespace
}  // namespace corvetta::testing
