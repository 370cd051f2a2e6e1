#include "windowing/accessibility_element.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop_fixture.h"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

class AccessibilityElementTest : public testing_support::DesktopTest {
protected:
    AccessibilityElement& accessibility() { return services->accessibilityElement; }
};

TEST_F(AccessibilityElementTest, FramesCrossBetweenSpacesOnBothDisplays) {
    struct Row {
        WindowNumber number;
        Rect axFrame;
        Rect screenFrame;
        ScreenNumber display;
    };
    const std::vector<Row> rows = {
        {1, {100, 125, 800, 600}, {100, 175, 800, 600}, 1},
        {2, {1500, 300, 1000, 500}, {1500, 100, 1000, 500}, 2},
        // Below the primary display: negative y in screen space.
        {3, {2000, 1000, 400, 70}, {2000, -170, 400, 70}, 2},
    };
    std::vector<SimulatedWindow> windows;
    for (const auto& row : rows) {
        windows.push_back({.number = row.number, .frame = row.axFrame});
    }
    startDesktop(windows);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.number);
        EXPECT_EQ(accessibility().frame(element(row.number)).value(), row.screenFrame);
        EXPECT_EQ(accessibility().convertFrame(accessibility().convertFrame(row.screenFrame)),
                  row.screenFrame);
        EXPECT_EQ(accessibility().screenOf(element(row.number))->number, row.display);

        const Rect moved = row.screenFrame.offsetBy(-40, 30);
        ASSERT_TRUE(accessibility().setFrame(element(row.number), moved));
        EXPECT_EQ(desktop->windowFrame(row.number), row.axFrame.offsetBy(-40, -30));
        EXPECT_EQ(accessibility().frame(element(row.number)).value(), moved);
    }
    EXPECT_THAT(loggedMessages("AccessibilityElement"),
                Contains("Setting window frame from (100, 175, 800, 600) (AX: (60, 95, 800, 600))"
                         " to (60, 205, 800, 600)"));
    EXPECT_THAT(loggedMessages("AccessibilityElement"),
                Contains("After setting frame, window is at: (60, 205, 800, 600)"));
}

TEST_F(AccessibilityElementTest, FailuresCarryTheInterfaceCodeOrThePermission) {
    struct Row {
        const char* name;
        WindowNumber number;
        std::function<void(SimulatedDesktop&)> breakIt;
        std::string readError;
        std::string writeError;
        WindowMoveError moveError;
    };
    const std::vector<Row> rows = {
        {"closed", 1, [](auto& d) { d.closeWindow(1); },
         "Failed to get accessibility attribute: -25202",
         "Failed to set accessibility attribute: -25202", WindowMoveError::invalidWindow},
        {"untrusted", 1, [](auto& d) { d.setAccessibilityTrusted(false); },
         "Accessibility permission denied", "Accessibility permission denied",
         WindowMoveError::failedToGetWindowInfo},
        {"hanging", kFrozenWindow, [](auto&) {}, "Failed to get accessibility attribute: -25204",
         "Failed to set accessibility attribute: -25204", WindowMoveError::failedToGetWindowInfo},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        startDesktop({{.number = 1, .frame = {100, 125, 800, 600}}});
        const AXElement window = element(row.number);
        row.breakIt(*desktop);
        EXPECT_EQ(accessibility().frame(window).error().description(), row.readError);
        EXPECT_EQ(accessibility().setFrame(window, {0, 0, 500, 500}).error().description(),
                  row.writeError);
        EXPECT_FALSE(accessibility().screenOf(window));
        const auto moved = move({.window = window, .targetFrame = {0, 0, 500, 500}});
        EXPECT_EQ(moved.error(), row.moveError);
    }
    EXPECT_EQ(move({.targetFrame = {0, 0, 500, 500}}).error(), WindowMoveError::invalidWindow);
    EXPECT_EQ(AccessibilityError{AccessibilityError::Kind::timeout}.description(),
              "Operation timed out");
}

TEST_F(AccessibilityElementTest, MinimumSizeIsOptional) {
    startDesktop({{.number = 1, .frame = {0, 25, 800, 600}, .minSize = Size{400, 300}},
                  {.number = 2, .frame = {0, 25, 800, 600}}});
    EXPECT_EQ(accessibility().minimumSize(element(1)), (Size{400, 300}));
    EXPECT_EQ(accessibility().minimumSize(element(2)), std::nullopt);
    EXPECT_THAT(loggedMessages("AccessibilityElement"),
                Contains("Failed to get minimum size attribute: Failed to get accessibility "
                         "attribute: -25205"));
}

TEST_F(AccessibilityElementTest, WindowUnderMouseIsTheFrontmostNormalWindowThere) {
    // Front to back: a floating panel, a small window, a large one behind it.
    startDesktop({{.number = 3, .frame = {0, 25, 300, 300}, .layer = 3},
                  {.number = 2, .frame = {500, 300, 400, 300}},
                  {.number = 1, .frame = {100, 125, 800, 600}}});
    const std::vector<std::pair<Point, std::optional<WindowNumber>>> rows = {
        {{600, 500}, 2},  // where both windows are
        {{150, 700}, 1},  // under the panel
        {{150, 200}, 1},
        {{1300, 50}, std::nullopt},
    };
    for (const auto& [pointer, expected] : rows) {
        desktop->setMouseLocation(pointer);
        const auto found = accessibility().windowUnderMouse();
        EXPECT_EQ(found, expected ? desktop->windowElement(*expected) : std::nullopt)
            << pointer.description();
    }
    EXPECT_THAT(loggedMessages("AccessibilityElement"),
                Contains("Looking for window at mouse location: (600, 500)"));
    EXPECT_EQ(accessibility().frontmostWindow().value(), element(3));
}

}  // namespace
}  // namespace corvetta
