#include "ui/drift_pill_window.h"

#include <QAbstractButton>
#include <QTest>

#include "overlay_fixture.h"

namespace corvetta::testing {
namespace {

using namespace std::chrono_literals;

class DriftPillWindowTest : public OverlayTest {
protected:
    void lockAndDrift() {
        std::vector<AXWindowRef> refs{{*desktop.windowElement(1)}, {*desktop.windowElement(2)}};
        root.layoutLock.lock(refs);
        advance(1s);
        desktop.dragWindow(1, {0, 0, 545, 800});
        desktop.postEvent({.type = EventType::leftMouseUp, .location = {500, 400}});
        advance(1s);
    }

    DriftPillWindow pill{root.layoutLock, plumbing.notifications, light(),
                         [](const Rect&) { return kArea; }};
};

TEST_F(DriftPillWindowTest, AppearsFadingInWhileTheLayoutHasDriftedAndItsButtonsActOnTheLock) {
    EXPECT_FALSE(pill.isVisible());
    EXPECT_TRUE(pill.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
    const auto buttons = pill.findChildren<QAbstractButton*>();
    ASSERT_EQ(buttons.size(), 2);
    EXPECT_EQ(buttons[0]->text(), "Reset");
    EXPECT_EQ(buttons[0]->toolTip(), "Put the windows back in the original layout");
    EXPECT_EQ(buttons[1]->text(), "Untile");
    EXPECT_EQ(buttons[1]->toolTip(), "Stop Layout Lock and leave the windows as they are");

    lockAndDrift();
    ASSERT_TRUE(pill.isVisible());
    EXPECT_LT(pill.windowOpacity(), 1.0) << "shown transparent, then faded in";
    EXPECT_TRUE(QTest::qWaitFor([&] { return pill.windowOpacity() == 1.0; }));
    EXPECT_EQ(pill.geometry().center().x(), kArea.center().x());
    EXPECT_EQ(pill.geometry().bottom(), kArea.bottom() - DriftPillWindow::kBottomMargin);

    QTest::mouseClick(buttons[0], Qt::LeftButton);
    advance(1s);
    EXPECT_EQ(*desktop.windowFrame(1), kLeft);
    EXPECT_FALSE(pill.isVisible());

    lockAndDrift();
    ASSERT_TRUE(pill.isVisible());
    QTest::mouseClick(buttons[1], Qt::LeftButton);
    EXPECT_EQ(root.layoutLock.map(), nullptr);
    EXPECT_FALSE(pill.isVisible());
    EXPECT_EQ(*desktop.windowFrame(1), Rect(0, 0, 545, 800)) << "untiled where they were";
}

}  // namespace
}  // namespace corvetta::testing
