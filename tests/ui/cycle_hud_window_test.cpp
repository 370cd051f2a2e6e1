#include "ui/cycle_hud_window.h"

#include <string>

#include "overlay_fixture.h"

namespace corvetta::testing {
namespace {

class CycleHudWindowTest : public OverlayTest {
protected:
    void addWorkspaces(int count) {
        for (int i = 1; i <= count; ++i) {
            root.workspaceService.add(
                {.id = Uuid::random(), .name = "W" + std::to_string(i), .windowInfos = {{}}});
        }
    }
    void releaseControl() {
        desktop.postEvent({.type = EventType::flagsChanged, .modifierFlags = 0});
    }

    HoldToCycle cycle{{root.workspaceService, root.spaceManager, root.workspaceRestoration,
                       desktop.eventMonitorPort(), plumbing.defaults, plumbing.notifications,
                       plumbing.logging}};
    CycleHudWindow hud{cycle, plumbing.notifications, ViewColors::fallback(), [] { return kArea; }};
};

TEST_F(CycleHudWindowTest, ShowsThePendingItemAmongTheCandidatesUntilTheCycleEnds) {
    addWorkspaces(3);
    EXPECT_FALSE(hud.isVisible());
    EXPECT_TRUE(hud.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));

    cycle.cycleWorkspaces();
    ASSERT_TRUE(hud.isVisible());
    EXPECT_EQ(hud.geometry().center(), kArea.center());
    EXPECT_EQ(hud.kindText(), "Workspace");
    EXPECT_EQ(hud.rowTexts(), (QStringList{"W1", "W2", "W3"}));
    EXPECT_EQ(hud.pendingText(), "W1");
    cycle.cycleWorkspaces();
    EXPECT_EQ(hud.pendingText(), "W2");
    EXPECT_EQ(hud.pendingRow(), 1);
    releaseControl();
    EXPECT_FALSE(hud.isVisible()) << "committed";

    root.spaceManager.addSpace("Work");
    cycle.cycleSpaces();
    ASSERT_TRUE(hud.isVisible());
    EXPECT_EQ(hud.kindText(), "Space");
    EXPECT_EQ(hud.rowTexts(), (QStringList{"Global", "Work"}));
    EXPECT_EQ(hud.pendingText(), "Work");
    cycle.cancel();
    EXPECT_FALSE(hud.isVisible());
}

TEST_F(CycleHudWindowTest, ALongListKeepsThePendingOneInView) {
    addWorkspaces(12);
    struct Row {
        int presses;
        const char* first;
        int pendingRow;
    };
    // Centred where it can be, the list never scrolled past either end.
    const Row rows[] = {{1, "W1", 0}, {6, "W3", 3}, {12, "W6", 6}, {13, "W1", 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.presses);
        cycle.cancel();
        for (int i = 0; i < row.presses; ++i) {
            cycle.cycleWorkspaces();
        }
        EXPECT_EQ(hud.rowTexts().size(), CycleHudWindow::kMaxRows);
        EXPECT_EQ(hud.rowTexts().front(), row.first);
        EXPECT_EQ(hud.pendingRow(), row.pendingRow);
        EXPECT_EQ(hud.rowTexts()[hud.pendingRow()], hud.pendingText());
    }
}

}  // namespace
}  // namespace corvetta::testing
