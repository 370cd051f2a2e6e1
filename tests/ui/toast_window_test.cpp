// The toast window on the offscreen platform: it follows the toast manager, stands at the top of
// the display it is given, never takes focus, and draws in the theme's colours.

#include <QTest>
#include <cstdlib>

#include <gtest/gtest.h>

#include "appearance/builtin_themes.h"
#include "foundation/manual_queue.h"
#include "platform/settable_system_appearance.h"
#include "support/temporary_folder.h"
#include "support/test_logging.h"
#include "ui/theme_view_colors.h"
#include "ui/toast_window_controller.h"

namespace corvetta {
namespace {

class ToastWindowTest : public ::testing::Test {
protected:
    // Where CORVETTA_SCREENSHOTS names a folder, the window as drawn goes there.
    void screenshot(const QString& name) {
        if (const char* shots = std::getenv("CORVETTA_SCREENSHOTS")) {
            controller.window().grab().save(QString("%1/%2.png").arg(shots, name));
        }
    }
    bool settled() {
        QCoreApplication::processEvents();
        return controller.window().isVisible() &&
               controller.window().pos() == controller.restingPosition();
    }

    testing::TemporaryFolder folder;
    ManualClock clock;
    ManualQueue queue{clock};
    NotificationCenter notifications;
    testing::TestLogging logging{notifications, clock};
    InMemoryPreferences defaults;
    ToastManager toasts{defaults, queue, logging.logging};
    ThemeColorService accents{defaults, logging.logging};
    SettableSystemAppearance appearance;
    ThemeManager themes{{defaults, accents, appearance, clock, logging.logging, folder / "Themes"}};
    ToastWindowController controller{toasts, viewColorsOf(themes), 1};
    const QRect display{1920, 40, 1280, 1000};
};

TEST_F(ToastWindowTest, SlidesInAtTheTopOfItsDisplayReplacesInPlaceAndSlidesOut) {
    controller.presentOn(display);
    EXPECT_FALSE(controller.window().isVisible());
    toasts.show("Restored 'Work': 3 of 3 windows placed", ToastStyle::success);
    ASSERT_TRUE(controller.window().isVisible());
    QTRY_VERIFY(settled());
    const QRect shown = controller.window().frameGeometry();
    EXPECT_EQ(shown.top(), display.top() + ToastWindowController::kTopMargin);
    EXPECT_NEAR(shown.center().x(), display.center().x(), 1);
    EXPECT_TRUE(controller.window().windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));

    toasts.show("Applied 'Halves' to 2 windows", ToastStyle::info);
    EXPECT_EQ(controller.window().content().message(), "Applied 'Halves' to 2 windows");
    EXPECT_NEAR(controller.window().frameGeometry().center().x(), display.center().x(), 1);

    controller.dismiss();
    EXPECT_FALSE(toasts.isPresented());
    QTRY_VERIFY(!controller.window().isVisible());
    EXPECT_EQ(controller.window().pos(), controller.hiddenPosition());
}

TEST_F(ToastWindowTest, DrawsEachStyleInTheThemesLightAndDarkColours) {
    ASSERT_TRUE(themes.select("github"));
    controller.presentOn(display);
    const struct {
        SystemAppearance appearance;
        QColor background;
        QString name;
    } looks[] = {
        {SystemAppearance::light, QColor(0xFF, 0xFF, 0xFF), "light"},
        {SystemAppearance::dark, QColor(0x0D, 0x11, 0x17), "dark"},
    };
    const struct {
        ToastStyle style;
        const char* message;
        const char* name;
    } styles[] = {
        {ToastStyle::success, "Restored 'Work': 3 of 3 windows placed", "success"},
        {ToastStyle::info, "No eligible windows on screen for layout", "info"},
        {ToastStyle::error, "A restoration is already in progress", "error"},
        {ToastStyle::loading, "Restoring 'Work'…", "loading"},
    };
    for (const auto& look : looks) {
        appearance.set(look.appearance);
        const ViewColors colors = viewColorsOf(themes);
        EXPECT_EQ(colors.backgroundWindow, look.background);
        controller.setColors(colors);
        for (const auto& style : styles) {
            toasts.finishLoading(ToastData::make(style.message, style.style));
            if (style.style == ToastStyle::loading) {
                queue.advance(ToastManager::kLoadingDebounceDelay);
            }
            auto& content = controller.window().content();
            EXPECT_EQ(content.style(), style.style);
            EXPECT_EQ(content.isSpinning(), style.style == ToastStyle::loading);
            EXPECT_EQ(content.iconColor(ToastStyle::success), colors.spaceColor);
            EXPECT_EQ(content.iconColor(ToastStyle::info), colors.accent);
            QTRY_VERIFY(settled());
            screenshot(QString("toast-%1-%2").arg(look.name, style.name));
        }
    }
}

}  // namespace
}  // namespace corvetta
