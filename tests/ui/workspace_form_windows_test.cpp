#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <filesystem>

#include "overlay_fixture.h"
#include "ui/add_space_window.h"
#include "ui/save_workspace_window.h"

namespace corvetta::testing {
namespace {

class WorkspaceFormWindowsTest : public OverlayTest {
protected:
    void SetUp() override {
        root.workspaceService.add({.id = Uuid::random(), .name = "Mail", .windowInfos = {{}}});
        work = root.spaceManager.addSpace("Work").value();
        for (FormWindow* window :
             {static_cast<FormWindow*>(&saveWindow), static_cast<FormWindow*>(&spaceWindow)}) {
            window->setClosedHandler([this] { ++closed; });
        }
    }

    WorkspaceSpace work;
    int closed = 0;
    SaveWorkspaceWindow saveWindow{root.saveWorkspaceForm, plumbing.notifications, light()};
    AddSpaceWindow spaceWindow{root.addSpaceForm, plumbing.notifications, light()};
};

TEST_F(WorkspaceFormWindowsTest, SaveWorkspaceTypedChosenAndSavedWithReturn) {
    saveWindow.presentOn(kArea);
    ASSERT_TRUE(saveWindow.isVisible());
    EXPECT_EQ(saveWindow.palette().color(QPalette::Window), light().backgroundWindow);
    // Within the window manager's frame, which the offscreen platform draws 2 points wide.
    EXPECT_LE((saveWindow.geometry().center() - kArea.center()).manhattanLength(), 4);
    ASSERT_EQ(saveWindow.windowList()->topLevelItemCount(), 2);
    EXPECT_EQ(saveWindow.windowList()->topLevelItem(0)->text(0), "Editor");
    EXPECT_EQ(saveWindow.windowList()->topLevelItem(0)->text(1), "main.cpp");
    EXPECT_FALSE(saveWindow.saveButton()->isEnabled());
    EXPECT_EQ(saveWindow.nameMessage()->text(), "");

    QTest::keyClicks(saveWindow.nameField(), "mail");
    EXPECT_EQ(saveWindow.nameMessage()->text(), WorkspaceService::kNameTaken);
    EXPECT_FALSE(saveWindow.saveButton()->isEnabled());
    QTest::keyClick(saveWindow.nameField(), Qt::Key_Return);
    EXPECT_TRUE(saveWindow.isVisible()) << "Return does nothing while the name is refused";
    QTest::keyClicks(saveWindow.nameField(), " room");
    EXPECT_EQ(saveWindow.nameMessage()->text(), "");
    EXPECT_TRUE(saveWindow.saveButton()->isEnabled());
    QTest::mouseClick(saveWindow.skipLaunchBox(), Qt::LeftButton);
    saveWindow.spaceChooser()->setCurrentIndex(1);
    emit saveWindow.spaceChooser()->activated(1);
    EXPECT_EQ(root.saveWorkspaceForm.spaceId(), work.id);

    QTest::keyClick(saveWindow.nameField(), Qt::Key_Return);
    EXPECT_FALSE(saveWindow.isVisible());
    EXPECT_EQ(closed, 1) << "the keyboard is handed back";
    const auto& saved = root.workspaceService.workspaces().back();
    EXPECT_EQ(saved.name, "mail room");
    EXPECT_EQ(saved.skipLaunchMissingApps, true);
    EXPECT_EQ(saved.spaceId, work.id);
    EXPECT_EQ(saved.windowInfos.size(), 2u);
}

TEST_F(WorkspaceFormWindowsTest, AddSpaceCancelledSavedAndItsFailedWriteShown) {
    spaceWindow.presentOn(kArea);
    QTest::keyClicks(spaceWindow.nameField(), "Draft");
    QTest::keyClick(spaceWindow.nameField(), Qt::Key_Escape);
    EXPECT_FALSE(spaceWindow.isVisible());
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(root.spaceManager.spaces().size(), 1u);

    spaceWindow.presentOn(kArea);
    EXPECT_EQ(spaceWindow.nameField()->text(), "") << "a new showing starts empty";
    QTest::keyClicks(spaceWindow.nameField(), "WORK");
    EXPECT_EQ(spaceWindow.nameMessage()->text(), SpaceManager::kNameTaken);
    EXPECT_FALSE(spaceWindow.saveButton()->isEnabled());
    spaceWindow.nameField()->clear();
    QTest::keyClicks(spaceWindow.nameField(), "Home");
    EXPECT_TRUE(spaceWindow.saveButton()->isEnabled());

    // A folder where the file should be makes the write fail.
    std::filesystem::remove(root.spaceManager.spacesFile());
    std::filesystem::create_directory(root.spaceManager.spacesFile());
    QTest::keyClick(spaceWindow.nameField(), Qt::Key_Return);
    EXPECT_TRUE(spaceWindow.isVisible());
    EXPECT_TRUE(spaceWindow.failureMessage()->text().startsWith(NameForm::kNotWrittenPrefix));
    EXPECT_EQ(spaceWindow.saveButton()->text(), "Try Again");
    EXPECT_TRUE(spaceWindow.nameField()->isReadOnly());

    std::filesystem::remove(root.spaceManager.spacesFile());
    QTest::mouseClick(spaceWindow.saveButton(), Qt::LeftButton);
    EXPECT_FALSE(spaceWindow.isVisible());
    EXPECT_TRUE(std::filesystem::is_regular_file(root.spaceManager.spacesFile()));
    EXPECT_EQ(root.spaceManager.spaces().size(), 2u);
    EXPECT_EQ(root.workspaceService.activeSpaceId(), std::nullopt) << "adding does not switch";
}

}  // namespace
}  // namespace corvetta::testing
