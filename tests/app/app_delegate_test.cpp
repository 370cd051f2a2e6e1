#include "app/app_delegate.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/app_notifications.h"
#include "foundation/json_file_preferences.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/temporary_folder.h"
#include "support/test_logging.h"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::Not;

constexpr std::uint64_t kControlOption = ModifierFlag::kControl | ModifierFlag::kOption;
constexpr std::uint16_t kQ = 12, kLeftArrow = 123, kRightArrow = 124;
constexpr ProcessId kEditor = 100, kTerminal = 200;
constexpr WindowNumber kEditorWindow = 10;
constexpr Rect kStartFrame{100, 100, 800, 600};

// A delegate on a simulated desktop of two side-by-side 1440x900 displays with 25-point menu
// bars; the editor is in front. Preferences live in a real file, as they do in the program.
class AppDelegateTest : public ::testing::Test {
protected:
    static SimulatedDesktopSetup desktopSetup() {
        SimulatedDesktopSetup setup;
        setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true},
                          {2, "External", {1440, 0, 1440, 900}, {1440, 0, 1440, 875}, 1, false}};
        setup.applications = {
            {.pid = kEditor,
             .bundleIdentifier = "com.example.editor",
             .name = "Editor",
             .windows = {{.number = kEditorWindow, .title = "Notes", .frame = kStartFrame}}},
            {.pid = kTerminal,
             .bundleIdentifier = "com.example.terminal",
             .name = "Terminal",
             .windows = {{.number = 20, .title = "Shell", .frame = {0, 25, 400, 300}}}}};
        setup.frontmost = kEditor;
        setup.self.activationPolicy = ActivationPolicy::regular;
        return setup;
    }

    // Launches on the preferences file as it stands.
    void launch(SimulatedDesktopSetup setup = desktopSetup()) {
        desktop = std::make_unique<SimulatedDesktop>(std::move(setup), queue);
        defaults = std::make_unique<JsonFilePreferences>(preferencesFile, clock);
        delegate = std::make_unique<AppDelegate>(ProcessPlumbing{.desktop = *desktop,
                                                                 .queue = queue,
                                                                 .defaults = *defaults,
                                                                 .notifications = notifications,
                                                                 .logbook = log.logbook,
                                                                 .logging = log.logging,
                                                                 .configFolder = folder / "config"},
                                                 [this] { ++terminations; });
        delegate->applicationDidFinishLaunching();
        queue.runUntilIdle();
    }

    // Presses a combination and lets the move finish.
    bool press(std::uint16_t keyCode, std::uint64_t modifiers) {
        const bool delivered = desktop->hotKeys().pressHotKey(keyCode, modifiers);
        queue.advance(std::chrono::seconds(1));
        return delivered;
    }
    Rect editorFrame() const { return desktop->windowFrame(kEditorWindow).value(); }

    testing::TemporaryFolder folder;
    std::filesystem::path preferencesFile = folder / "preferences.json";
    ManualClock clock;
    ManualQueue queue{clock};
    NotificationCenter notifications;
    testing::TestLogging log{notifications, clock};
    std::unique_ptr<SimulatedDesktop> desktop;
    std::unique_ptr<JsonFilePreferences> defaults;
    std::unique_ptr<AppDelegate> delegate;
    int terminations = 0;
};

TEST_F(AppDelegateTest, FreshStartWritesDefaultsAndRegistersTheWindowActions) {
    launch();

    EXPECT_EQ(desktop->currentApplication().activationPolicy, ActivationPolicy::accessory);
    // The shortcut flags a first start writes are the shortcut start-up's test.
    EXPECT_EQ(defaults->boolValue("dragToSnapEnabled"), true);
    // Every window action with a combination (17), and quit, save-workspace, new-layout, add-space.
    EXPECT_EQ(desktop->hotKeys().registeredHotKeys().size(), 21u);
    EXPECT_TRUE(delegate->isAccessibilityPermissionGranted());
    EXPECT_TRUE(delegate->statusMenu().item("snapLeft")->isEnabled);
    EXPECT_EQ(delegate->statusMenu().item("snapLeft")->shortcutLabel, "⌃⌥←");
    for (const char* line :
         {"Registering keyboard shortcuts...", "Registering window management shortcuts...",
          "Window management shortcuts registered", "Using fallback shortcut for Quit App",
          "All shortcuts registered."}) {
        EXPECT_TRUE(log.contains(line)) << line;
    }

    // What was written survives the process: a second launch reads the same file.
    delegate.reset();
    ASSERT_TRUE(defaults->synchronize());
    const auto written = JsonFilePreferences(preferencesFile, clock).snapshot();
    EXPECT_EQ(written.at("dragToSnapEnabled").toBool(), true);
    // The built-in layout templates are seeded at launch.
    EXPECT_EQ(written.at(CustomLayoutStore::kSeededKey).toBool(), true);
}

TEST_F(AppDelegateTest, ExistingSettingsAreKeptAndDisabledWindowManagementKeepsTheCommands) {
    testing::writeTestFile(preferencesFile, R"({"dragToSnapEnabled": false,
        "allowAnyShortcut": false, "windowManagementEnabled": false})");
    launch();

    EXPECT_FALSE(delegate->isDragToSnapEnabled());
    EXPECT_TRUE(
        log.contains("Window management features disabled, skipping window management shortcuts"));
    EXPECT_FALSE(press(kLeftArrow, kControlOption));
    EXPECT_EQ(editorFrame(), kStartFrame);
    EXPECT_FALSE(delegate->statusMenu().item("snapLeft")->isEnabled);
    EXPECT_FALSE(delegate->perform("snapLeft"));

    EXPECT_TRUE(press(kQ, kControlOption | ModifierFlag::kShift));
    EXPECT_EQ(terminations, 1);
    EXPECT_TRUE(log.contains("Quit App shortcut triggered"));
}

TEST_F(AppDelegateTest, PressesMoveTheLastOtherApplicationsWindow) {
    launch();
    // Corvetta's own activation (its menu, a dialog) must not make it the target.
    desktop->activateThisApplication();
    queue.runUntilIdle();
    ASSERT_EQ(delegate->previousFrontmostApp().value_or(RunningApplication{}).processIdentifier,
              kEditor);

    // Where each action lands is the calculations' to pin; here, that a press reaches them.
    EXPECT_TRUE(press(kLeftArrow, kControlOption));
    EXPECT_EQ(editorFrame(), (Rect{0, 25, 720, 875}));
    EXPECT_TRUE(press(kRightArrow, kControlOption | ModifierFlag::kCommand));
    EXPECT_EQ(editorFrame(), (Rect{1440, 25, 720, 875}));
    EXPECT_EQ(delegate->previousFrontmostApp()->processIdentifier, kEditor);
}

// The window actions' keys are grabbed only while the permission is granted and the user's switch
// is on; either one turning off frees them, greys the menu, and turning back on restores them.
TEST_F(AppDelegateTest, WindowFeaturesFollowThePermissionAndTheSwitchAtRunTime) {
    struct Case {
        const char* name;
        std::function<void(bool on)> turn;
    };
    const Case cases[] = {
        {"permission",
         [this](bool on) {
             desktop->setAccessibilityTrusted(on);
             queue.advance(on ? PermissionManager::kCheckIntervalWhenDenied
                              : PermissionManager::kCheckIntervalWhenGranted);
         }},
        {"windowManagementEnabled",
         [this](bool on) {
             defaults->set("windowManagementEnabled", on);
             notifications.post(AppNotifications::kWindowManagementEnabledChanged);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        launch();
        c.turn(false);
        // Only the commands are left.
        EXPECT_EQ(desktop->hotKeys().registeredHotKeys().size(), 4u);
        EXPECT_FALSE(press(kLeftArrow, kControlOption));
        EXPECT_EQ(editorFrame(), kStartFrame);
        EXPECT_FALSE(delegate->statusMenu().item("snapRight")->isEnabled);
        EXPECT_TRUE(log.contains("Window management shortcuts unregistered"));

        c.turn(true);
        EXPECT_EQ(desktop->hotKeys().registeredHotKeys().size(), 21u);
        EXPECT_TRUE(press(kLeftArrow, kControlOption));
        EXPECT_EQ(editorFrame(), (Rect{0, 25, 720, 875}));
        EXPECT_TRUE(delegate->statusMenu().item("snapRight")->isEnabled);
        delegate.reset();
    }
}

TEST_F(AppDelegateTest, WithoutThePermissionNoActionKeyIsGrabbedAndTheRequestIsOffered) {
    auto setup = desktopSetup();
    setup.accessibilityTrusted = false;
    launch(std::move(setup));
    EXPECT_TRUE(
        log.contains("Accessibility permission missing, skipping window management shortcuts"));
    EXPECT_EQ(desktop->hotKeys().registeredHotKeys().size(), 4u);
    EXPECT_FALSE(delegate->isAccessibilityPermissionGranted());
    EXPECT_FALSE(delegate->statusMenu().item("snapLeft")->isEnabled);
    EXPECT_TRUE(delegate->perform("requestAccessibilityPermission"));
    EXPECT_EQ(desktop->alerts().shownAlerts().size(), 1u);
}

TEST_F(AppDelegateTest, MenuCommandsAndRebuilds) {
    launch();
    EXPECT_TRUE(delegate->perform("snapRight"));
    queue.advance(std::chrono::seconds(1));
    EXPECT_EQ(editorFrame(), (Rect{720, 25, 720, 875}));
    EXPECT_FALSE(delegate->perform("noSuchCommand"));

    // A change while the menu is open waits until it closes.
    const int revision = delegate->statusMenuRevision();
    delegate->menuWillOpen();
    notifications.post(AppNotifications::kWorkspacesDidChange);
    EXPECT_EQ(delegate->statusMenuRevision(), revision);
    delegate->menuDidClose();
    EXPECT_EQ(delegate->statusMenuRevision(), revision + 1);
    notifications.post(AppNotifications::kRefreshStatusMenu);
    EXPECT_EQ(delegate->statusMenuRevision(), revision + 2);

    defaults->set("hideWindowManagementMenuItems", true);
    notifications.post(AppNotifications::kRefreshStatusMenu);
    EXPECT_FALSE(delegate->statusMenu().item("snapLeft"));
    EXPECT_TRUE(delegate->statusMenu().item("quit"));
}

TEST_F(AppDelegateTest, TheMenuListsTheRecordsRunsTheirCommandsAndMarksCombinationsInUse) {
    auto setup = desktopSetup();
    // Another program holds Control+Option+Left before we start.
    setup.reservedHotKeys = {{kLeftArrow, 4096 | 2048}};
    launch(setup);
    auto& services = delegate->services();
    EXPECT_EQ(delegate->statusMenu().item("snapLeft")->shortcutLabel, "⌃⌥← (in use)");
    EXPECT_TRUE(delegate->statusMenu().item("snapLeft")->isShortcutInUse);
    EXPECT_FALSE(delegate->statusMenu().item("snapRight")->isShortcutInUse);
    // And said once on screen at start.
    ASSERT_TRUE(services.toastManager.current());
    EXPECT_EQ(services.toastManager.current()->message,
              "Another program holds 1 shortcut: leftHalf (⌃⌥←)");
    EXPECT_EQ(delegate->statusMenu().item("restoreSavedWorkspaceMenuItem"), std::nullopt);

    // The submenus follow the stores.
    const Uuid workspaceId = Uuid::random();
    services.workspaceService.add(Workspace{.id = workspaceId, .name = "Work"});
    const auto space = services.spaceManager.addSpace("Home");
    ASSERT_TRUE(space.has_value());
    const auto restore =
        delegate->statusMenu().item("restoreSavedWorkspaceMenuItem", workspaceId.string());
    ASSERT_TRUE(restore);
    EXPECT_EQ(restore->title, "Work");
    const auto home = delegate->statusMenu().item("switchSpaceMenuItem", space->id.string());
    ASSERT_TRUE(home);
    EXPECT_FALSE(home->isChecked);
    const auto global = services.spaceManager.globalSpace().id.string();
    EXPECT_TRUE(delegate->statusMenu().item("switchSpaceMenuItem", global)->isChecked);

    EXPECT_TRUE(delegate->perform("switchSpaceMenuItem", space->id.string()));
    EXPECT_EQ(services.workspaceService.activeSpaceId(), space->id);
    EXPECT_TRUE(delegate->statusMenu().item("switchSpaceMenuItem", space->id.string())->isChecked);
    EXPECT_TRUE(delegate->perform("switchSpaceMenuItem", global));
    EXPECT_EQ(services.workspaceService.activeSpaceId(), std::nullopt);

    // A layout from the submenu tiles the display's windows.
    const auto& layouts = services.customLayoutStore.layouts();
    const auto halves = std::find_if(layouts.begin(), layouts.end(),
                                     [](const auto& layout) { return layout.name == "Halves"; });
    ASSERT_NE(halves, layouts.end());
    EXPECT_TRUE(delegate->perform("applyLayoutMenuItem", halves->id.string()));
    queue.advance(std::chrono::seconds(1));
    EXPECT_EQ(editorFrame(), (Rect{0, 25, 720, 875}));
    EXPECT_FALSE(delegate->perform("applyLayoutMenuItem", Uuid::random().string()));
}

TEST_F(AppDelegateTest, TerminationReleasesHotKeysTimersAndObservers) {
    launch();
    delegate->applicationWillTerminate();
    EXPECT_TRUE(desktop->hotKeys().registeredHotKeys().empty());
    EXPECT_EQ(notifications.observerCount(AppNotifications::kRefreshStatusMenu), 0u);
    EXPECT_EQ(notifications.observerCount(PermissionManager::kStatusChangedNotification), 0u);
    // No check is left on the timer.
    EXPECT_EQ(queue.pendingCount(), 0u);
    delegate->applicationWillTerminate();  // a second call is harmless
}

}  // namespace
}  // namespace corvetta
