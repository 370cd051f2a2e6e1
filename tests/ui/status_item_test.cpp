#include "ui/status_item.h"

#include <QAction>
#include <QCoreApplication>
#include <memory>

#include <gtest/gtest.h>

#include "app/app_notifications.h"
#include "foundation/json_file_preferences.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/temporary_folder.h"
#include "support/test_logging.h"

namespace corvetta {
namespace {

QAction* actionTitled(QMenu& menu, const QString& title) {
    for (QAction* action : menu.actions()) {
        if (action->text().section('\t', 0, 0) == title) {
            return action;
        }
        if (action->menu()) {
            if (QAction* inner = actionTitled(*action->menu(), title)) {
                return inner;
            }
        }
    }
    return nullptr;
}

// The tray's menu draws the delegate's and runs its commands; on the offscreen platform there is
// no tray, which must not matter to the menu.
TEST(StatusItem, DrawsTheDelegatesMenuRunsItsCommandsAndRedrawsOnlyAfterItCloses) {
    testing::TemporaryFolder folder;
    ManualClock clock;
    ManualQueue queue{clock};
    NotificationCenter notifications;
    testing::TestLogging log{notifications, clock};
    SimulatedDesktopSetup setup;
    setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true}};
    setup.applications = {
        {.pid = 100,
         .bundleIdentifier = "com.example.editor",
         .name = "Editor",
         .windows = {{.number = 10, .title = "Notes", .frame = {100, 100, 800, 600}}}}};
    setup.frontmost = 100;
    SimulatedDesktop desktop(std::move(setup), queue);
    JsonFilePreferences defaults(folder / "preferences.json", clock);
    AppDelegate delegate({.desktop = desktop,
                          .queue = queue,
                          .defaults = defaults,
                          .notifications = notifications,
                          .logbook = log.logbook,
                          .logging = log.logging,
                          .configFolder = folder / "config"},
                         [] {});
    delegate.applicationDidFinishLaunching();
    queue.runUntilIdle();
    StatusItem item(delegate);

    QAction* right = actionTitled(item.menu(), "Right Half");
    ASSERT_NE(right, nullptr);
    EXPECT_EQ(right->text(), QString("Right Half\t⌃⌥→"));
    right->trigger();
    queue.advance(std::chrono::seconds(1));
    EXPECT_EQ(desktop.windowFrame(10), (Rect{720, 25, 720, 875}));

    // A workspace saved while the menu is open shows up once it has closed, not under the pointer.
    emit item.menu().aboutToShow();
    delegate.services().workspaceService.add(Workspace{.id = Uuid::random(), .name = "Work"});
    QCoreApplication::processEvents();
    EXPECT_EQ(actionTitled(item.menu(), "Work"), nullptr);
    emit item.menu().aboutToHide();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    EXPECT_NE(actionTitled(item.menu(), "Work"), nullptr);
    EXPECT_NE(actionTitled(item.menu(), "Global"), nullptr);
    delegate.applicationWillTerminate();
}

}  // namespace
}  // namespace corvetta
