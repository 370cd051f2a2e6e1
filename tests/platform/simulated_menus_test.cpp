#include <gtest/gtest.h>

#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "platform/sim/simulated_desktop_file.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

// An editor with File (New Window ⌘N, a disabled Save, New Tab ⇧⌘T opening a window 300 ms late)
// and Edit menus, a terminal without menus, and an installed browser holding window number 90.
constexpr const char* kDesktop = R"({
  "displays": [{"id": 1, "frame": [0, 0, 1440, 900]}],
  "applications": [
    {"pid": 101, "bundleIdentifier": "com.example.editor", "name": "Editor",
     "windows": [{"number": 11, "frame": [0, 25, 800, 600]}],
     "menus": [{"title": "File", "items": [
                 {"title": "New Window", "key": "N",
                  "opensWindow": {"title": "Untitled", "frame": [40, 60, 700, 500]}},
                 {"title": "Save", "key": "S", "enabled": false},
                 {"title": "New Tab", "key": "T", "modifiers": ["command", "shift"],
                  "opensWindow": {"frame": [0, 25, 300, 200]}, "opensAfterMs": 300}]},
               {"title": "Edit", "items": [{"title": "Undo", "key": "Z"}]}]},
    {"pid": 202, "name": "Terminal", "windows": [{"number": 21, "frame": [0, 25, 400, 300]}]}],
  "installed": [{"pid": 303, "bundleIdentifier": "com.example.browser", "name": "Browser",
                 "windows": [{"number": 90, "frame": [0, 25, 400, 300]}]}],
  "frontmost": 101})";

class SimulatedMenusTest : public ::testing::Test {
protected:
    SimulatedMenusTest() {
        auto setup = parseSimulatedDesktop(kDesktop);
        EXPECT_TRUE(setup.has_value()) << setup.error().message();
        desktop = std::make_unique<SimulatedDesktop>(std::move(*setup), queue);
    }

    AccessibilityPort& ax() { return desktop->accessibilityPort(); }
    template <class T>
    T read(const AXElement& element, std::string_view attribute) {
        const auto value = ax().copyAttributeValue(element, attribute);
        EXPECT_TRUE(value.has_value()) << attribute << ": " << describe(value.error());
        return value ? std::get<T>(*value) : T{};
    }
    std::vector<AXElement> children(const AXElement& element) {
        return read<std::vector<AXElement>>(element, "AXChildren");
    }
    // The items of the n-th menu of the editor.
    std::vector<AXElement> items(std::size_t menu) {
        const auto bar = read<AXElement>(ax().applicationElement(101), "AXMenuBar");
        return children(children(children(bar).at(menu)).at(0));
    }
    std::vector<WindowNumber> editorWindows() {
        std::vector<WindowNumber> numbers;
        for (const auto& w :
             read<std::vector<AXElement>>(ax().applicationElement(101), AXAttribute::kWindows)) {
            numbers.push_back(static_cast<WindowNumber>(w.token()));
        }
        return numbers;
    }

    ManualClock clock;
    ManualQueue queue{clock};
    std::unique_ptr<SimulatedDesktop> desktop;
};

TEST_F(SimulatedMenusTest, TheMenuBarReadsAsTheInterfaceShowsIt) {
    const auto bar = read<AXElement>(ax().applicationElement(101), "AXMenuBar");
    EXPECT_EQ(read<std::string>(bar, "AXRole"), "AXMenuBar");
    const auto menus = children(bar);
    ASSERT_EQ(menus.size(), 2u);
    EXPECT_EQ(read<std::string>(menus[1], AXAttribute::kTitle), "Edit");
    EXPECT_EQ(read<std::string>(children(menus[0]).at(0), "AXRole"), "AXMenu");

    struct Row {
        std::size_t item;
        const char* title;
        bool enabled;
        std::int64_t modifiers;
    };
    // Modifier bits as the interface gives them: 0 is Command alone, 1 adds Shift.
    for (const auto& row : std::vector<Row>{
             {0, "New Window", true, 0}, {1, "Save", false, 0}, {2, "New Tab", true, 1}}) {
        SCOPED_TRACE(row.title);
        const auto item = items(0).at(row.item);
        EXPECT_EQ(read<std::string>(item, "AXRole"), "AXMenuItem");
        EXPECT_EQ(read<std::string>(item, AXAttribute::kTitle), row.title);
        EXPECT_EQ(read<bool>(item, "AXEnabled"), row.enabled);
        EXPECT_EQ(read<std::int64_t>(item, "AXMenuItemCmdModifiers"), row.modifiers);
    }
    EXPECT_EQ(read<std::string>(items(0).at(0), "AXMenuItemCmdChar"), "N");

    EXPECT_EQ(ax().copyAttributeValue(ax().applicationElement(202), "AXMenuBar").error(),
              AXErrorCode::noValue);
    // A handle naming an item the menu does not have is no element.
    const AXElement past(101, items(1).at(0).token() + 5);
    EXPECT_EQ(ax().copyAttributeValue(past, AXAttribute::kTitle).error(),
              AXErrorCode::invalidUIElement);
}

TEST_F(SimulatedMenusTest, PressingAnItemOpensItsWindowUnderTheNextFreeNumber) {
    EXPECT_EQ(ax().performAction(items(0).at(0), AXAction::kPress), AXErrorCode::success);
    // Above the installed browser's 90, so launching it later still works.
    EXPECT_EQ(editorWindows(), (std::vector<WindowNumber>{91, 11}));
    EXPECT_EQ(desktop->windowFrame(91), Rect(40, 60, 700, 500));
    EXPECT_EQ(desktop->window(91)->title, "Untitled");

    EXPECT_EQ(ax().performAction(items(0).at(2), AXAction::kPress), AXErrorCode::success);
    queue.advance(299ms);
    EXPECT_EQ(editorWindows().size(), 2u);
    queue.advance(1ms);
    EXPECT_EQ(editorWindows().front(), 92u);

    // A disabled item stays shut; items take no other action; a menu title only opens its menu.
    EXPECT_EQ(ax().performAction(items(0).at(1), AXAction::kPress), AXErrorCode::cannotComplete);
    EXPECT_EQ(ax().performAction(items(1).at(0), AXAction::kRaise), AXErrorCode::actionUnsupported);
    const auto bar = read<AXElement>(ax().applicationElement(101), "AXMenuBar");
    EXPECT_EQ(ax().performAction(children(bar).at(0), AXAction::kPress), AXErrorCode::success);
    EXPECT_EQ(editorWindows().size(), 3u);

    // A window due after its application quit never opens.
    EXPECT_EQ(ax().performAction(items(0).at(2), AXAction::kPress), AXErrorCode::success);
    desktop->quitApplication(101);
    queue.advance(1s);
    for (const WindowNumber number : {91, 92, 93}) {
        EXPECT_FALSE(desktop->window(number).has_value()) << number;
    }
}

TEST(SimulatedMenusFileTest, MenuMistakesNameTheirPlace) {
    struct Row {
        const char* item;
        const char* place;
        const char* problem;
    };
    const std::vector<Row> rows = {
        {R"({"title": "X", "key": "X", "modifiers": ["hyper"]})", ".modifiers[0]",
         R"(expected one of "command", "shift", "option", "control")"},
        {R"({"title": "X", "modifiers": ["shift"]})", ".modifiers", "needs a key"},
        {R"({"title": "X", "opensAfterMs": 5})", ".opensAfterMs", "needs opensWindow"},
        {R"({"opensWindow": {"number": 5, "frame": [0, 0, 9, 9]}})", ".opensWindow.number",
         "unknown key (known keys: applyDelayMs, frame, fullScreen, layer, maxSize, minSize, "
         "minimized, movable, reportsMinSize, resizable, resizeIncrements, subrole, title)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.item);
        const std::string text =
            R"({"displays": [{"id": 1, "frame": [0, 0, 800, 600]}], "applications": [{"pid": 1)"
            R"(01, "name": "A", "menus": [{"title": "File", "items": [)" +
            std::string(row.item) + "]}]}]}";
        const auto setup = parseSimulatedDesktop(text);
        ASSERT_FALSE(setup.has_value());
        EXPECT_EQ(setup.error().place,
                  std::string("applications[0].menus[0].items[0]") + row.place);
        EXPECT_EQ(setup.error().problem, row.problem);
    }
}

}  // namespace
}  // namespace corvetta
