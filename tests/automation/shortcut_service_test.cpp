#include <functional>

#include "automation_methods_fixture.h"

namespace corvetta::testing_support {
namespace {

constexpr std::uint32_t kCtrlOpt = ModifierFlag::kControl | ModifierFlag::kOption;
constexpr std::uint32_t kCmdOpt = ModifierFlag::kCommand | ModifierFlag::kOption;
constexpr std::uint16_t kOne = 18, kTwo = 19, kW = 13, kS = 1, kLeftArrow = 123;

// The program's shortcuts over the socket methods' services, registered as at launch.
class ShortcutServiceTest : public AutomationMethodsTest {
protected:
    void SetUp() override {
        AutomationMethodsTest::SetUp();
        for (const char* name : {"A", "B", "C"}) {
            result("capture_workspace", {{"name", name}});
        }
        home = rig->services.spaceManager.addSpace("Home")->id;
        rig->services.customLayoutStore.seedDefaultsIfNeeded();
        service().updateWindowManagementShortcuts(true);
        service().registerAllShortcuts();
    }
    ShortcutService& service() { return rig->services.shortcutService; }
    Uuid workspaceId(const char* name) const {
        return *rig->services.workspaceService.workspaceNamed(name)->id;
    }
    bool press(std::uint16_t keyCode, std::uint64_t modifiers) {
        const bool pressed = rig->sim.hotKeys().pressHotKey(keyCode, modifiers);
        queue.advance(std::chrono::seconds(10));
        return pressed;
    }
    void modifiersNow(std::uint64_t flags) {
        rig->sim.postEvent({.type = EventType::flagsChanged, .modifierFlags = flags});
    }
    bool logged(const std::string& line) const { return testLogging.contains(line); }
    Json set(const std::string& name, std::int64_t keyCode, std::uint64_t modifiers) {
        return result("set_shortcut",
                      {{"name", name}, {"keyCode", keyCode}, {"modifiers", modifiers}});
    }

    Uuid home;
};

// Each family's records are registered from their store's combination, follow every change of
// it, and leave nothing behind in the hot-key store once cleared.
TEST_F(ShortcutServiceTest, RecordShortcutsFollowTheirStores) {
    auto& services = rig->services;
    const auto layoutId = services.customLayoutStore.layouts().front().id;
    struct Family {
        std::string name;
        std::function<void(std::optional<Shortcut>)> store;
        const char* pressedLine;
    };
    const Family families[] = {
        {workspaceShortcutName(workspaceId("A").string()),
         [&](std::optional<Shortcut> s) {
             services.workspaceService.updateWorkspaceShortcut(
                 workspaceId("A"), s ? std::optional(ShortcutCombo{std::uint16_t(s->keyCode),
                                                                   std::uint32_t(s->modifiers)})
                                     : std::nullopt);
         },
         "Workspace shortcut triggered: 'A'"},
        {spaceShortcutName(home.string()),
         [&](std::optional<Shortcut> s) {
             auto space = *services.spaceManager.space(home);
             space.shortcutKeyCode = s ? std::optional(std::uint16_t(s->keyCode)) : std::nullopt;
             space.shortcutModifiers =
                 s ? std::optional(std::uint32_t(s->modifiers)) : std::nullopt;
             ASSERT_TRUE(services.spaceManager.updateSpace(space));
         },
         "Space shortcut triggered: 'Home'"},
        {layoutShortcutName(layoutId.string()),
         [&](std::optional<Shortcut> s) {
             auto layout = *services.customLayoutStore.find(layoutId);
             layout.shortcutKeyCode = s ? std::optional(std::uint16_t(s->keyCode)) : std::nullopt;
             layout.shortcutModifiers = s ? std::optional(s->modifiers) : std::nullopt;
             ASSERT_TRUE(services.customLayoutStore.update(layout));
         },
         "Custom layout shortcut triggered: 'Full'"},
    };
    for (const auto& family : families) {
        SCOPED_TRACE(family.name);
        family.store(Shortcut{kOne, kCmdOpt});
        EXPECT_TRUE(press(kOne, kCmdOpt));
        EXPECT_TRUE(logged(family.pressedLine));
        family.store(Shortcut{kTwo, kCmdOpt});
        EXPECT_FALSE(press(kOne, kCmdOpt));
        EXPECT_TRUE(press(kTwo, kCmdOpt));
        family.store(std::nullopt);
        EXPECT_FALSE(press(kTwo, kCmdOpt));
        EXPECT_FALSE(services.shortcutBridge.shortcut(family.name));
    }
    EXPECT_EQ(services.workspaceService.activeSpaceId(), home);
    // The layout's press reached the layout service, which laid the front window out.
    const auto messages = testLogging.messages();
    EXPECT_TRUE(std::ranges::any_of(messages, [](const std::string& m) {
        return m.starts_with("Applying custom layout 'Full' to ");
    }));
}

TEST_F(ShortcutServiceTest, AWorkspaceShortcutRestoresTheWorkspace) {
    const Rect saved = *frameOf(kMain);
    rig->sim.dragWindow(kMain, {500, 300, 640, 480});
    set(workspaceShortcutName(workspaceId("B").string()), kOne, kCmdOpt);
    ASSERT_TRUE(press(kOne, kCmdOpt));
    EXPECT_EQ(frameOf(kMain), saved);
    EXPECT_TRUE(logged("Restored 'B': 3 of 3 windows placed"));
}

TEST_F(ShortcutServiceTest, WindowManagementOffKeepsCommandsAndRecordShortcuts) {
    set(spaceShortcutName(home.string()), kOne, kCmdOpt);
    preferences.set(ShortcutService::kWindowManagementEnabledKey, false);
    service().updateWindowManagementShortcuts(true);
    EXPECT_FALSE(press(kLeftArrow, kCtrlOpt));
    EXPECT_TRUE(press(kOne, kCmdOpt));
    EXPECT_EQ(rig->services.workspaceService.activeSpaceId(), home);
    EXPECT_TRUE(press(kS, kCtrlOpt));
    EXPECT_TRUE(logged("Save Workspace shortcut triggered"));
    EXPECT_TRUE(logged("No user interface to show the save-workspace window"));
}

TEST_F(ShortcutServiceTest, ClashingCombinationsAreRefusedWithTheirOwner) {
    set("cycleSpaces", kOne, kCmdOpt);
    const struct {
        std::string name;
        std::int64_t keyCode;
        std::uint64_t modifiers;
        const char* message;
    } clashes[] = {
        {workspaceShortcutName(workspaceId("A").string()), kLeftArrow, kCtrlOpt,
         "Workspace shortcut conflict: Shortcut conflicts with action 'leftHalf'"},
        {spaceShortcutName(home.string()), kOne, kCmdOpt,
         "Space shortcut conflict: Shortcut conflicts with action 'cycleSpaces'"},
        {"leftHalf", kS, kCtrlOpt,
         "Shortcut conflict: Shortcut conflicts with action 'saveWorkspace'"},
    };
    for (const auto& clash : clashes) {
        SCOPED_TRACE(clash.name);
        EXPECT_EQ(error("set_shortcut", {{"name", clash.name},
                                         {"keyCode", clash.keyCode},
                                         {"modifiers", clash.modifiers}}),
                  clash.message);
    }
    // Records stored clashing (an import, an old version) keep the first one's key.
    set(workspaceShortcutName(workspaceId("A").string()), kTwo, kCmdOpt);
    rig->services.workspaceService.updateWorkspaceShortcut(workspaceId("B"),
                                                           ShortcutCombo{kTwo, kCmdOpt});
    EXPECT_TRUE(logged("Workspace shortcut conflict: Shortcut conflicts with workspace 'A'"));
    EXPECT_TRUE(press(kTwo, kCmdOpt));
    EXPECT_TRUE(logged("Workspace shortcut triggered: 'A'"));
}

// Control is the commit key: letting go of anything else keeps the cycle going.
TEST_F(ShortcutServiceTest, HoldToCycleCommitsOnlyWhenControlIsReleased) {
    rig->services.workspaceService.add(
        Workspace{.id = Uuid::random(), .name = "Elsewhere", .spaceId = home});
    set("cycleWorkspaces", kW, kCtrlOpt | ModifierFlag::kShift);
    const auto& display = service().cycle().display();
    for (const char* expected : {"A", "B", "C", "A", "B"}) {
        ASSERT_TRUE(press(kW, kCtrlOpt | ModifierFlag::kShift));
        EXPECT_EQ(display.candidates.at(*display.pendingIndex).name, expected);
        EXPECT_EQ(display.candidates.size(), 3u);  // the other space's workspace is left out
    }
    for (const std::uint64_t flags : {kCtrlOpt, std::uint32_t{ModifierFlag::kControl}}) {
        modifiersNow(flags);
        EXPECT_TRUE(display.visible);
    }
    modifiersNow(ModifierFlag::kOption);
    queue.advance(std::chrono::seconds(10));
    EXPECT_FALSE(display.visible);
    EXPECT_FALSE(service().cycle().isListening());
    for (const char* line :
         {"Cycle: installing modifier-release monitors",
          "Cycle: modifier released — committing pending workspace", "Cycle: removing monitors",
          "Cycle: Restored 'B': 3 of 3 windows placed"}) {
        EXPECT_TRUE(logged(line)) << line;
    }
    // The next cycle starts after the workspace just restored.
    ASSERT_TRUE(press(kW, kCtrlOpt | ModifierFlag::kShift));
    EXPECT_EQ(display.candidates.at(*display.pendingIndex).name, "C");

    set("cycleSpaces", kW, kCmdOpt | ModifierFlag::kControl);
    ASSERT_TRUE(press(kW, kCmdOpt | ModifierFlag::kControl));
    EXPECT_FALSE(service().cycle().pendingWorkspaceId());
    EXPECT_TRUE(logged("Cycle: previewing space 'Home' (2 candidates)"));
    modifiersNow(0);
    EXPECT_EQ(rig->services.workspaceService.activeSpaceId(), home);
    EXPECT_TRUE(logged("Cycle: modifier released — committing pending space"));
}

TEST_F(ShortcutServiceTest, ListsAndSetsShortcutsOverTheSocket) {
    const auto name = spaceShortcutName(home.string());
    const auto mine = set(name, kOne, kCmdOpt);
    EXPECT_EQ(mine, (Json{{"name", name},
                          {"owner", "space 'Home'"},
                          {"keyCode", kOne},
                          {"modifiers", kCmdOpt},
                          {"label", "⌥⌘1"},
                          {"registered", true}}));
    const auto cleared = result("set_shortcut", {{"name", "leftHalf"}, {"clear", true}});
    EXPECT_EQ(cleared["keyCode"], nullptr);
    EXPECT_EQ(cleared["registered"], false);
    const auto listed = result("list_shortcuts")["shortcuts"];
    EXPECT_EQ(listed[1]["name"], "rightHalf");
    EXPECT_EQ(listed[1]["label"], "⌃⌥→");
    EXPECT_TRUE(std::any_of(listed.begin(), listed.end(),
                            [&](const Json& entry) { return entry == mine; }));

    const struct {
        Json params;
        const char* message;
    } refused[] = {
        {{{"keyCode", 1}, {"modifiers", 0}}, "Missing required param: name"},
        {{{"name", "workspace_nope"}, {"clear", true}}, "Not found: shortcut 'workspace_nope'"},
        {{{"name", "temp_layout_shortcut"}, {"clear", true}},
         "Not found: shortcut 'temp_layout_shortcut'"},
        {{{"name", "center"}, {"modifiers", 0}}, "Missing required param: keyCode"},
        {{{"name", "center"}, {"keyCode", 70000}, {"modifiers", 0}},
         "Invalid param keyCode: expected a key code from 0 to 65535"},
        {{{"name", "center"}, {"keyCode", 1}, {"modifiers", 0x10000}},
         "Invalid param modifiers: expected event modifier flags of Shift (131072), Control "
         "(262144), Option (524288) and Command (1048576)"},
        {{{"name", "center"}, {"keyCode", 1}, {"modifiers", 0}, {"clear", true}},
         "Invalid param clear: a shortcut is either cleared or given keyCode and modifiers"},
    };
    for (const auto& r : refused) {
        EXPECT_EQ(error("set_shortcut", r.params), r.message) << r.params.dump();
    }
}

}  // namespace
}  // namespace corvetta::testing_support
