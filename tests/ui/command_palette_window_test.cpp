// The palette's window on the offscreen platform: typing, the five keys, the panel and the
// delete confirmation reach the model; colours reach the widgets.

#include "ui/command_palette_window.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <cstdlib>

#include "windowing/snapping_fixture.h"

namespace corvetta {
namespace {

class CommandPaletteWindowTest : public testing_support::SnappingTest {
protected:
    void SetUp() override {
        SimulatedDesktopSetup s;
        s.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true}};
        s.applications = {{.pid = 100,
                           .bundleIdentifier = "com.example.editor",
                           .name = "Editor",
                           .windows = {{.number = 11, .frame = {100, 100, 600, 400}}}}};
        s.frontmost = 100;
        start(std::move(s));
        auto& services = rig->services;
        services.customLayoutStore.seedDefaultsIfNeeded();
        const auto work = services.spaceManager.addSpace("Work").value();
        services.workspaceService.add(Workspace{
            .id = Uuid::random(), .name = "Mail", .windowInfos = {{}}, .spaceId = work.id});
        window = std::make_unique<CommandPaletteWindow>(services.commandPalette, notifications,
                                                        ViewColors::fallback());
        services.commandPalette.toggle();
        search = window->findChild<QLineEdit*>("paletteSearch");
    }
    void TearDown() override { window.reset(); }

    CommandPaletteModel& model() { return rig->services.commandPalette.model(); }
    std::string selectedTitle() { return model().selectedRow()->item.name(); }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : window.get(),
                        static_cast<Qt::Key>(key), modifiers);
    }
    // Where CORVETTA_SCREENSHOTS names a folder, the window as drawn goes there.
    void screenshot(const char* name) {
        if (const char* folder = std::getenv("CORVETTA_SCREENSHOTS")) {
            window->grab().save(QString("%1/%2.png").arg(folder, name));
        }
    }

    std::unique_ptr<CommandPaletteWindow> window;
    QLineEdit* search = nullptr;
};

TEST_F(CommandPaletteWindowTest, OpensWithThePlaceholderAndTypingFiltersTheRows) {
    ASSERT_TRUE(window->isVisible());
    EXPECT_EQ(search->placeholderText().toStdString(), CommandPaletteModel::kPlaceholder);
    screenshot("palette-rows");
    QTest::keyClicks(search, "mai l");
    EXPECT_EQ(model().searchText(), "mai l");
    EXPECT_EQ(selectedTitle(), "Mail");
    EXPECT_EQ(model().visibleRowCount(), 2);  // Mail, Main Left
    screenshot("palette-query");
    QTest::keyClicks(search, "zz");
    EXPECT_EQ(model().emptyText(), "No results for \"mai lzz\"");
    screenshot("palette-no-results");
}

TEST_F(CommandPaletteWindowTest, ArrowsAndReturnActivateAndTheWindowHidesButStaysBuilt) {
    QTest::keyClicks(search, "halves");
    press(Qt::Key_Down);
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_FALSE(window->isVisible());
    queue.runUntilIdle();
    queue.advance(std::chrono::seconds(2));
    EXPECT_EQ(frameOf(11), Rect(0, 25, 720, 875));  // the only window takes the left pane
    rig->services.commandPalette.toggle();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(search->text().isEmpty());
}

TEST_F(CommandPaletteWindowTest, EscapeClosesAndControlKOpensThePanelWhereEscapeGoesBack) {
    press(Qt::Key_Down);  // Work
    press(Qt::Key_K, Qt::ControlModifier);
    auto* panel = window->findChild<QWidget*>("paletteItemActions");
    ASSERT_TRUE(panel->isVisible());
    EXPECT_TRUE(window->findChild<QLabel*>("paletteHints")->text().contains("back"));
    screenshot("palette-item-actions");
    press(Qt::Key_Escape);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(window->isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(CommandPaletteWindowTest, DeleteAsksFirstAndTheButtonsAnswer) {
    QTest::keyClicks(search, "mail");
    const auto ask = [&] {
        press(Qt::Key_K, Qt::ControlModifier);
        press(Qt::Key_Down);
        press(Qt::Key_Down);
        press(Qt::Key_Return);
    };
    ask();
    auto* confirmation = window->findChild<QWidget*>("paletteDeleteConfirmation");
    ASSERT_TRUE(confirmation->isVisible());
    EXPECT_TRUE(rig->services.workspaceService.workspaceNamed("Mail"));
    screenshot("palette-delete");
    QTest::mouseClick(window->findChild<QPushButton*>("paletteCancelButton"), Qt::LeftButton);
    EXPECT_FALSE(confirmation->isVisible());
    EXPECT_TRUE(rig->services.workspaceService.workspaceNamed("Mail"));
    press(Qt::Key_Escape);
    ask();
    QTest::mouseClick(window->findChild<QPushButton*>("paletteDeleteButton"), Qt::LeftButton);
    EXPECT_FALSE(rig->services.workspaceService.workspaceNamed("Mail"));
    EXPECT_FALSE(window->findChild<QWidget*>("paletteItemActions")->isVisible());
}

TEST_F(CommandPaletteWindowTest, ColoursReachTheSearchField) {
    ViewColors light = ViewColors::fallback();
    light.backgroundWindow = QColor(0xf7, 0xf7, 0xf9);
    light.backgroundCard = QColor(0xff, 0xff, 0xff);
    light.borderCard = QColor(0, 0, 0, 0x14);
    light.borderPanel = QColor(0, 0, 0, 0x1f);
    light.textPrimary = QColor(0x1c, 0x1d, 0x22);
    light.textSecondary = QColor(0x6b, 0x6e, 0x78);
    light.accent = QColor(0x2f, 0x6f, 0xeb);
    light.hotkeyColor = QColor(0x9a, 0x67, 0x00);
    window->setColors(light);
    EXPECT_EQ(search->palette().color(QPalette::Text), light.textPrimary);
    screenshot("palette-light");
}

}  // namespace
}  // namespace corvetta
