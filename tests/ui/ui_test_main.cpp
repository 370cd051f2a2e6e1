// ui_test_main.cpp: Runs the view tests inside one QApplication on the offscreen platform.
#include <QApplication>
#include <cstdlib>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Views are tested without an X server; a caller may still pick another platform on purpose.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
