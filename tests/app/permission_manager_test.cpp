#include "app/permission_manager.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/date.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/test_logging.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kDiagnostic = "🔍 PERMISSION DIAGNOSTIC: ";

SimulatedDesktopSetup desktopSetup() {
    SimulatedDesktopSetup setup;
    setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true}};
    setup.accessibilityTrusted = false;
    return setup;
}

class PermissionManagerTest : public ::testing::Test {
protected:
    // A new launch: a fresh manager over the same stored preferences.
    void launch() {
        manager.reset();
        manager =
            std::make_unique<PermissionManager>(desktop.accessibilityPort(), desktop.alertPort(),
                                                preferences, notifications, queue, logging);
    }

    // Seconds from each check to the next, over the next `count` checks; each must be one check.
    std::vector<long> nextCheckGaps(int count) {
        std::vector<long> gaps;
        for (int i = 0; i < count; ++i) {
            const auto due = queue.timeUntilNextDue();
            if (!due) {
                break;
            }
            const int before = manager->permissionCheckCount();
            queue.advance(*due);
            EXPECT_EQ(manager->permissionCheckCount(), before + 1);
            gaps.push_back(std::chrono::duration_cast<std::chrono::seconds>(*due).count());
        }
        return gaps;
    }

    std::vector<std::string> messages() const { return testLogging.messages("PermissionManager"); }

    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    ManualQueue queue{clock};
    testing::TestLogging testLogging{notifications, clock};
    LoggingService& logging = testLogging.logging;
    SimulatedDesktop desktop{desktopSetup(), queue};
    SimulatedAlerts& alerts = desktop.alerts();
    std::vector<bool> posted;
    ObserverToken observer = notifications.addObserver(
        PermissionManager::kStatusChangedNotification, [this](const Notification& n) {
            posted.push_back(*n.userInfo.at(PermissionManager::kGrantedUserInfoKey).ifBool());
        });
    std::unique_ptr<PermissionManager> manager;
};

TEST_F(PermissionManagerTest, ChecksOftenWhileDeniedAndBacksOffOnceGranted) {
    struct Phase {
        bool trusted;
        std::vector<long> gaps;
        std::vector<bool> posted;
    };
    const std::vector<std::vector<Phase>> launches = {
        // The check already timed runs at the old pace before the new one applies.
        {{false, {3, 3, 3}, {}},
         {true, {3, 30, 30, 30, 30, 30, 120, 120}, {true}},
         {false, {120, 3, 3}, {false}},
         {true, {3, 30, 30, 30, 30, 30, 120}, {true}}},
        {{true, {30, 30, 30, 30, 30, 120, 120}, {true}}},
    };
    for (const auto& phases : launches) {
        SCOPED_TRACE(phases.front().trusted ? "starts granted" : "starts denied");
        posted.clear();
        launch();
        for (std::size_t i = 0; i < phases.size(); ++i) {
            SCOPED_TRACE(i);
            desktop.setAccessibilityTrusted(phases[i].trusted);
            if (i == 0) {
                manager->start();
            }
            EXPECT_EQ(nextCheckGaps(static_cast<int>(phases[i].gaps.size())), phases[i].gaps);
            EXPECT_EQ(posted, phases[i].posted);
            EXPECT_EQ(manager->isAccessibilityPermissionGranted(), phases[i].trusted);
            posted.clear();
        }
    }
}

TEST_F(PermissionManagerTest, LogsDiagnosticsAndStoresTheStatusForTheNextLaunch) {
    launch();
    manager->start();
    desktop.setAccessibilityTrusted(true);
    queue.advance(std::chrono::seconds(3));
    EXPECT_THAT(
        messages(),
        ElementsAre(kDiagnostic + "Persistent state - Ever granted: false, Last known status: "
                                  "unknown, Last check: never",
                    kDiagnostic + "FIRST CHECK ON APP LAUNCH - AXIsProcessTrusted() = false",
                    kDiagnostic + "Check #2 - AXIsProcessTrusted() = true",
                    kDiagnostic + "Permission status CHANGED from false to true"));

    desktop.setAccessibilityTrusted(false);
    queue.advance(std::chrono::seconds(30));
    const auto lastCheck = formatIso8601(clock.now());
    EXPECT_EQ(preferences.boolValue(PermissionManager::kEverGrantedKey), true);
    EXPECT_EQ(preferences.boolValue(PermissionManager::kLastKnownStatusKey), false);
    EXPECT_EQ(preferences.string(PermissionManager::kLastCheckTimestampKey), lastCheck);

    testLogging.logbook.clear();
    clock.advance(std::chrono::hours(5));
    launch();
    manager->start();
    EXPECT_THAT(
        messages(),
        ElementsAre(kDiagnostic +
                        "Persistent state - Ever granted: true, Last known "
                        "status: false, Last check: " +
                        lastCheck,
                    kDiagnostic + "FIRST CHECK ON APP LAUNCH - AXIsProcessTrusted() = false"));
    EXPECT_EQ(preferences.string(PermissionManager::kLastCheckTimestampKey),
              formatIso8601(clock.now()));
    EXPECT_EQ(preferences.boolValue(PermissionManager::kEverGrantedKey), true);
}

TEST_F(PermissionManagerTest, StopsCheckingWhenStoppedOrDestroyed) {
    launch();
    manager->start();
    manager->stop();
    EXPECT_FALSE(queue.timeUntilNextDue().has_value());
    // A check asked for while stopped does not start the timer again.
    manager->checkPermission();
    EXPECT_FALSE(queue.timeUntilNextDue().has_value());
    manager->start();
    EXPECT_EQ(manager->permissionCheckCount(), 3);
    EXPECT_TRUE(queue.timeUntilNextDue().has_value());
    manager.reset();
    queue.advance(std::chrono::minutes(10));
    EXPECT_FALSE(queue.timeUntilNextDue().has_value());
}

TEST_F(PermissionManagerTest, AlertAsksForAccessAndOpensSettingsOnlyWhenChosen) {
    const Alert expected{"Accessibility Access Required",
                         "Corvetta needs Accessibility access to manage window positions. Open "
                         "System Settings > Privacy & Security > Accessibility to grant it.",
                         {"Open Settings", "Cancel"}};
    struct Case {
        std::size_t button;
        bool settingsAvailable;
        int openings;
        std::string lastMessage;
    };
    const std::vector<Case> cases = {
        {0, true, 1, "Opened System Settings at Privacy & Security > Accessibility"},
        {0, false, 0, "Could not open System Settings at Privacy & Security > Accessibility"},
        {1, true, 0, "User cancelled the permission request"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lastMessage);
        SimulatedDesktop fresh(desktopSetup(), queue);
        auto& freshAlerts = fresh.alerts();
        freshAlerts.setAccessibilitySettingsAvailable(c.settingsAvailable);
        PermissionManager asking(fresh.accessibilityPort(), fresh.alertPort(), preferences,
                                 notifications, queue, logging);
        asking.requestPermission();
        asking.requestPermission();
        EXPECT_THAT(freshAlerts.shownAlerts(), ElementsAre(expected));
        EXPECT_FALSE(freshAlerts.answerAlert(2));
        EXPECT_TRUE(freshAlerts.answerAlert(c.button));
        EXPECT_FALSE(freshAlerts.pendingAlert().has_value());
        queue.runUntilIdle();
        EXPECT_EQ(freshAlerts.accessibilitySettingsOpenings(), c.openings);
        EXPECT_EQ(messages().back(), kDiagnostic + c.lastMessage);
        // Answered, so the user may be asked again.
        asking.requestPermission();
        EXPECT_EQ(freshAlerts.shownAlerts().size(), 2u);
    }
}

TEST_F(PermissionManagerTest, NoAlertWhenGrantedAndNoCallbackAfterTheManagerIsGone) {
    launch();
    desktop.setAccessibilityTrusted(true);
    manager->requestPermission();
    EXPECT_THAT(alerts.shownAlerts(), IsEmpty());
    EXPECT_EQ(messages().back(), kDiagnostic + "Permission already granted - not asking the user");

    desktop.setAccessibilityTrusted(false);
    manager->requestPermission();
    manager.reset();
    EXPECT_TRUE(alerts.answerAlert(0));
    queue.runUntilIdle();
    EXPECT_EQ(alerts.accessibilitySettingsOpenings(), 0);
}

}  // namespace
}  // namespace corvetta
