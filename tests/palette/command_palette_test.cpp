// The command palette over the program's services on a simulated desktop: its rows, keys, item
// actions, activation and when its window opens.

#include <algorithm>
#include <string>
#include <vector>

#include "palette/command_palette_controller.h"
#include "windowing/snapping_fixture.h"

namespace corvetta {
namespace {

constexpr ProcessId kEditor = 100;
constexpr ProcessId kTerminal = 200;
constexpr WindowNumber kEditorWindow = 11;
// ⌃⌥ in event modifier flags.
constexpr std::uint32_t kControlOption = 0x40000 | 0x80000;

class FakeSurface final : public PaletteSurface {
public:
    bool isPaletteVisible() const override { return visible; }
    void presentPalette() override { visible = true; }
    void hidePalette() override { visible = false; }
    bool visible = false;
};

class CommandPaletteTest : public testing_support::SnappingTest {
protected:
    void SetUp() override {
        callbacks.quit = [this] { ++quits; };
        callbacks.previousFrontmostApp = [this] {
            return rig->sim.applicationsPort().runningApplication(kTerminal);
        };
        SimulatedDesktopSetup s;
        s.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true}};
        s.applications = {{.pid = kEditor,
                           .bundleIdentifier = "com.example.editor",
                           .name = "Editor",
                           .windows = {{.number = kEditorWindow, .frame = {100, 100, 600, 400}}}},
                          {.pid = kTerminal,
                           .bundleIdentifier = "com.example.terminal",
                           .name = "Terminal",
                           .windows = {{.number = 21, .frame = {200, 200, 500, 300}}}}};
        s.frontmost = kEditor;
        start(std::move(s));
        attached = palette().attach(surface);
        palette().model().onExternalAction = [this](const PaletteExternalAction& action) {
            external.push_back(action);
        };
    }

    // A space "Work" (active), "Mail" in it with ⌃⌥1, "Code" global with two windows, the
    // built-in copies and a global "Wide".
    void fillStores() {
        auto& services = rig->services;
        services.customLayoutStore.seedDefaultsIfNeeded();
        work = services.spaceManager.addSpace("Work").value();
        services.spaceManager.activate(work.id);
        services.workspaceService.add(Workspace{.id = Uuid::random(),
                                                .name = "Mail",
                                                .windowInfos = {WindowInfo{}},
                                                .shortcutKeyCode = 18,
                                                .shortcutModifiers = kControlOption,
                                                .spaceId = work.id});
        services.workspaceService.add(Workspace{
            .id = Uuid::random(), .name = "Code", .windowInfos = {WindowInfo{}, WindowInfo{}}});
        services.customLayoutStore.add(
            CustomLayoutTemplate{.id = Uuid::random(), .name = "Wide", .panes = {{0, 0, 1, 1}}});
    }

    CommandPaletteController& palette() { return rig->services.commandPalette; }
    CommandPaletteModel& model() { return palette().model(); }
    void key(const char* name) { notifications.post(name); }

    std::vector<std::string> titles() {
        std::vector<std::string> result;
        for (int i = 0; i < model().visibleRowCount(); ++i) {
            result.push_back(model().rows()[model().visibleRow(i)->row].item.name());
        }
        return result;
    }
    const PaletteRow& rowTitled(const std::string& title) {
        const auto all = titles();
        const auto at = std::find(all.begin(), all.end(), title) - all.begin();
        EXPECT_LT(at, static_cast<long>(all.size())) << title;
        model().select(static_cast<int>(at));
        return *model().selectedRow();
    }
    std::vector<std::string> panel(const std::string& title) {
        rowTitled(title);
        key(CommandPaletteModel::kOpenItemActions);
        std::vector<std::string> names;
        for (const auto& action : model().itemActions()) {
            names.push_back(action.name);
        }
        return names;
    }
    // Opens the panel on the row and chooses its last action (delete).
    void askToDelete(const std::string& title) {
        const auto names = panel(title);
        for (std::size_t i = 1; i < names.size(); ++i) {
            key(CommandPaletteModel::kNavigateDown);
        }
        key(CommandPaletteModel::kConfirm);
    }

    FakeSurface surface;
    Registration attached;
    WorkspaceSpace work;
    int quits = 0;
    std::vector<PaletteExternalAction> external;
};

TEST_F(CommandPaletteTest, RowsComeInSectionsWithScopeBadgeAndShortcut) {
    fillStores();
    palette().toggle();
    EXPECT_EQ(titles(), (std::vector<std::string>{"Global", "Work", "Mail", "Code", "Halves",
                                                  "Thirds", "Fourths", "Main Left", "Main Right",
                                                  "Full", "Wide", "New Space", "New Workspace",
                                                  "New Layout", "Quit Corvetta"}));
    std::vector<std::string> headers;
    for (const auto& section : model().sections()) {
        headers.emplace_back(section.title);
    }
    EXPECT_EQ(headers, (std::vector<std::string>{"Spaces", "Workspaces", "Layouts", "Actions"}));

    struct Expected {
        const char* title;
        const char* scope;
        const char* badge;
        const char* shortcut;
        bool inActiveSpace;
    };
    for (const auto& e : std::vector<Expected>{
             {"Global", "", "", "", false},
             {"Work", "", "Active", "", true},
             {"Mail", "Work", "1 window", "⌃⌥1", true},
             {"Code", "Global", "2 windows", "", false},
             {"Halves", "Global", "2 panes", "", false},
             {"New Workspace", "", "", "⌃⌥S", false},
         }) {
        const auto& row = rowTitled(e.title);
        EXPECT_EQ(row.scope, e.scope) << e.title;
        EXPECT_EQ(row.badge, e.badge) << e.title;
        EXPECT_EQ(row.shortcutText, e.shortcut) << e.title;
        EXPECT_EQ(row.inActiveSpace, e.inActiveSpace) << e.title;
    }
    EXPECT_EQ(model().emptyText(), std::nullopt);
    EXPECT_EQ(model().hints(),
              (std::vector<PaletteHint>{
                  {"Ctrl+K", "actions"}, {"↵", "activate"}, {"↑↓", "navigate"}, {"esc", "close"}}));
}

TEST_F(CommandPaletteTest, EmptyTextsSayWhatIsMissing) {
    palette().toggle();
    EXPECT_EQ(model().emptyText(), "No workspaces or spaces.");
    EXPECT_EQ(titles().front(), "Halves");  // a deleted built-in copy is still offered
    model().setSearchText("zzz");
    EXPECT_EQ(model().emptyText(), "No results for \"zzz\"");
    EXPECT_TRUE(titles().empty());
    key(CommandPaletteModel::kConfirm);  // nothing to activate
    EXPECT_TRUE(surface.visible);
    model().setSearchText("thi");
    EXPECT_EQ(titles(), std::vector<std::string>{"Thirds"});
}

TEST_F(CommandPaletteTest, ArrowsWrapAndKeysCountOnlyWhileShown) {
    palette().toggle();
    const int count = model().visibleRowCount();
    key(CommandPaletteModel::kNavigateUp);
    EXPECT_EQ(model().selectedIndex(), count - 1);
    key(CommandPaletteModel::kNavigateDown);
    key(CommandPaletteModel::kNavigateDown);
    EXPECT_EQ(model().selectedIndex(), 1);
    key(CommandPaletteModel::kEscape);
    EXPECT_FALSE(surface.visible);
    key(CommandPaletteModel::kNavigateDown);
    EXPECT_EQ(model().selectedIndex(), 1);
    palette().toggle();
    EXPECT_EQ(model().selectedIndex(), 0);
    EXPECT_TRUE(model().searchFocused());
}

TEST_F(CommandPaletteTest, ItemActionsDependOnTheKindAndEscapeGoesBackFirst) {
    fillStores();
    palette().toggle();
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
        {"Work", {"Edit Space", "Delete Space"}},
        {"Mail", {"Edit Workspace", "Clone Workspace", "Delete Workspace"}},
        {"Wide", {"Edit Layout", "Clone Layout", "Delete Layout"}},
        {"Halves", {}},
        {"Global", {}},
        {"Quit Corvetta", {}},
    };
    for (const auto& [title, names] : cases) {
        EXPECT_EQ(panel(title), names) << title;
        EXPECT_EQ(model().showingItemActions(), !names.empty()) << title;
        if (names.empty()) {
            continue;
        }
        EXPECT_FALSE(model().searchFocused());
        EXPECT_EQ(model().hints().back(), (PaletteHint{"esc", "back"}));
        key(CommandPaletteModel::kEscape);
        EXPECT_FALSE(model().showingItemActions());
        EXPECT_TRUE(surface.visible) << title;
    }
}

TEST_F(CommandPaletteTest, DeleteAsksFirstThenRemoves) {
    fillStores();
    palette().toggle();
    struct Case {
        const char* title;
        const char* message;
    };
    for (const auto& c : std::vector<Case>{
             {"Wide", "This action cannot be undone."},
             {"Work",
              "This action cannot be undone. Its workspaces will be reassigned to the default "
              "space."},
             {"Mail", "This action cannot be undone."},
         }) {
        askToDelete(c.title);
        const auto confirmation = model().deleteConfirmation();
        ASSERT_TRUE(confirmation) << c.title;
        EXPECT_EQ(confirmation->title, std::string("Delete \"") + c.title + "\"");
        EXPECT_EQ(confirmation->message, c.message);
        EXPECT_EQ(confirmation->confirmButton + "/" + confirmation->cancelButton, "Delete/Cancel");
        // Escape cancels the deletion only; the item stays.
        key(CommandPaletteModel::kEscape);
        EXPECT_FALSE(model().itemPendingDelete());
        EXPECT_TRUE(model().showingItemActions());
        const auto kept = titles();
        EXPECT_EQ(std::count(kept.begin(), kept.end(), c.title), 1) << c.title;
        key(CommandPaletteModel::kEscape);
        askToDelete(c.title);
        key(CommandPaletteModel::kConfirm);
        const auto left = titles();
        EXPECT_EQ(std::count(left.begin(), left.end(), c.title), 0) << c.title;
        EXPECT_FALSE(model().showingItemActions());
    }
    EXPECT_TRUE(rig->services.spaceManager.spaces().empty());
    EXPECT_TRUE(rig->services.workspaceService.workspaceNamed("Code"));
    EXPECT_FALSE(rig->services.workspaceService.workspaceNamed("Mail"));
}

TEST_F(CommandPaletteTest, CloneAddsACopyWithoutTheShortcutAndSelectsIt) {
    fillStores();
    palette().toggle();
    for (const char* expected : {"Mail Copy", "Mail Copy 2"}) {
        panel("Mail");
        key(CommandPaletteModel::kNavigateDown);
        key(CommandPaletteModel::kConfirm);
        EXPECT_EQ(model().selectedRow()->item.name(), expected);
        const auto* copy = rig->services.workspaceService.workspaceNamed(expected);
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy->spaceId, work.id);
        EXPECT_FALSE(copy->shortcutKeyCode);
    }
    panel("Wide");
    key(CommandPaletteModel::kNavigateDown);
    key(CommandPaletteModel::kConfirm);
    EXPECT_EQ(model().selectedRow()->item.name(), "Wide Copy");
    EXPECT_EQ(rig->services.customLayoutStore.layouts().back().name, "Wide Copy");
}

TEST_F(CommandPaletteTest, ActivatingARowDoesWhatItSaysAndClosesThePalette) {
    fillStores();
    const auto activate = [&](const std::string& title) {
        palette().toggle();
        rowTitled(title);
        key(CommandPaletteModel::kConfirm);
        EXPECT_FALSE(surface.visible) << title;
        queue.runUntilIdle();
        queue.advance(std::chrono::seconds(2));
    };
    activate("Halves");
    EXPECT_EQ(frameOf(kEditorWindow), Rect(0, 25, 720, 875));
    activate("Global");
    EXPECT_EQ(rig->services.workspaceService.activeSpaceId(), std::nullopt);
    activate("Work");
    EXPECT_EQ(rig->services.workspaceService.activeSpaceId(), work.id);
    activate("New Space");
    ASSERT_EQ(external.size(), 1u);
    EXPECT_EQ(external[0].kind, PaletteExternalAction::Kind::newSpace);
    // Editing hands the item over and closes the palette.
    palette().toggle();
    panel("Code");
    key(CommandPaletteModel::kConfirm);
    ASSERT_EQ(external.size(), 2u);
    EXPECT_EQ(external[1].kind, PaletteExternalAction::Kind::editWorkspace);
    EXPECT_EQ(external[1].item->name(), "Code");
    EXPECT_FALSE(surface.visible);
    // Quitting gives the focus back to the application that was in front.
    activate("Quit Corvetta");
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(rig->sim.applicationsPort().frontmostApplication()->processIdentifier, kTerminal);
    EXPECT_EQ(model().previousApp()->processIdentifier, kTerminal);

    // The latest picks lead their sections when nothing is typed, also after a restart.
    palette().toggle();
    EXPECT_EQ(titles()[0], "Work");
    EXPECT_EQ(titles()[4], "Halves");
    EXPECT_EQ(preferences.stringList(PaletteRecents::kKey)->front(), "action:quit");
}

TEST_F(CommandPaletteTest, ShowRequestsToggleReuseTheWindowAndStopWithTheServices) {
    palette().toggle();
    palette().toggle();
    palette().toggle();
    attached.reset();
    palette().toggle();
    attached = palette().attach(surface);
    palette().servicesStopped();
    palette().toggle();
    EXPECT_FALSE(surface.visible);
    EXPECT_EQ(loggedMessages(CommandPaletteModel::kServiceName),
              (std::vector<std::string>{
                  "Command palette: show requested",
                  "Command palette: show requested",
                  "Command palette: already visible — toggling closed",
                  "Command palette: show requested",
                  "Command palette: re-showing preserved window",
                  "Command palette: show requested",
                  "Command palette: no window to show it in",
                  "Command palette: show requested",
                  "Command palette: aborted — spaceManager unavailable",
              }));
}

}  // namespace
}  // namespace corvetta
