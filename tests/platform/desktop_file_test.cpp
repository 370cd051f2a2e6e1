#include <gtest/gtest.h>

#include "foundation/json.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "platform/sim/simulated_desktop_file.h"
#include "support/sample_edid.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

constexpr const char* kExample = R"({
  "displays": [{"id": 1, "name": "Built-in", "frame": [0, 0, 1440, 900],
                "visibleFrame": [0, 0, 1440, 875], "scale": 2, "builtin": true}],
  "applications": [{"pid": 101, "bundleIdentifier": "com.example.editor", "name": "Editor",
                    "windows": [{"number": 11, "title": "main.cpp",
                                 "frame": [100, 100, 800, 600], "minSize": [300, 200]}]}],
  "frontmost": 101})";

Json example() {
    return Json::parse(kExample);
}

TEST(DesktopFileTest, TheDocumentedExampleLoadsWithItsDefaults) {
    const auto setup = parseSimulatedDesktop(kExample);
    ASSERT_TRUE(setup.has_value()) << setup.error().message();
    ASSERT_EQ(setup->displays.size(), 1u);
    EXPECT_EQ(setup->displays[0].visibleFrame, Rect(0, 0, 1440, 875));
    EXPECT_EQ(setup->displays[0].scale, 2);
    EXPECT_TRUE(setup->displays[0].builtin);
    ASSERT_EQ(setup->applications.size(), 1u);
    const auto& window = setup->applications[0].windows.at(0);
    EXPECT_EQ(window.frame, Rect(100, 100, 800, 600));
    EXPECT_EQ(window.minSize, (Size{300, 200}));
    EXPECT_TRUE(window.movable && window.resizable && !window.minimized);
    EXPECT_EQ(window.subrole, "AXStandardWindow");
    EXPECT_EQ(setup->frontmost, 101);
    EXPECT_TRUE(setup->accessibilityTrusted);
    EXPECT_FALSE(setup->dock.has_value());
    EXPECT_EQ(setup->self.bundleIdentifier, "com.corvetta.Corvetta");

    auto bare = example();
    bare["displays"][0] = Json{{"id", 4}, {"frame", {0, 0, 800, 600}}};
    const auto defaults = parseSimulatedDesktop(bare.dump());
    ASSERT_TRUE(defaults.has_value()) << defaults.error().message();
    EXPECT_EQ(defaults->displays[0].name, "Display 4");
    EXPECT_EQ(defaults->displays[0].visibleFrame, Rect(0, 0, 800, 600));
    EXPECT_EQ(defaults->displays[0].scale, 1);
}

TEST(DesktopFileTest, DisplayIdentityComesFromTheFileElseFromTheEdid) {
    struct Row {
        std::string keys;
        const char* name;
        DisplayIdentity identity;
    };
    const std::string edid = R"("edid": ")" + testing::kSampleEdidHex + R"(")";
    const auto sample = testing::sampleEdid();
    // clang-format off
    const std::vector<Row> rows = {
        {"{}", "Display 1", {}},
        {"{" + edid + "}", "DELL U2415",
         {"3E032273-F3BF-5457-A5D3-2F2BED4A0A2E", "842550092", sample}},
        {R"({"name": "Left", "uuid": "e621e1f8-c36c-495a-93fc-0c247a3e6e5f", "serial": "S1", )"
         R"("physicalSize": [520, 320], "colorSpace": "sRGB", )" + edid + "}", "Left",
         {"E621E1F8-C36C-495A-93FC-0C247A3E6E5F", "S1", sample, Size{520, 320}, "sRGB"}},
        // Bytes that are no EDID are kept, as a display sends them, and tell nothing.
        {R"({"edid": "00ff"})", "Display 1", {{}, {}, {0x00, 0xff}}},
    };
    // clang-format on
    for (const auto& row : rows) {
        auto document = example();
        document["displays"][0] = Json{{"id", 1}, {"frame", {0, 0, 800, 600}}};
        document["displays"][0].merge_patch(Json::parse(row.keys));
        const auto setup = parseSimulatedDesktop(document.dump());
        ASSERT_TRUE(setup.has_value()) << setup.error().message();
        EXPECT_EQ(setup->displays[0].name, row.name) << row.keys;
        EXPECT_TRUE(setup->displays[0].identity == row.identity) << row.keys;
    }
}

TEST(DesktopFileTest, EveryExtensionIsRead) {
    auto document = example();
    document.merge_patch(Json::parse(R"({
      "dock": {"display": 1, "edge": "left", "size": 60, "intellihide": true},
      "accessibilityTrusted": false, "mouseLocation": [10, 20], "self": {"pid": 7},
      "installed": [{"pid": 202, "bundleIdentifier": "com.example.browser", "name": "Browser",
                     "launchDelayMs": 1500, "windows": [
                       {"number": 21, "frame": [0, 0, 9, 9], "appearsAfterMs": 700}]}],
      "reservedHotKeys": [{"keyCode": 123, "modifiers": 786432}]})"));
    document["applications"][0].merge_patch(
        Json::parse(R"({"activationPolicy": "accessory", "hidden": true, "unresponsive": true})"));
    document["applications"][0]["windows"][0].merge_patch(Json::parse(R"({
      "maxSize": [1000, 900], "resizeIncrements": [7, 14], "applyDelayMs": 250, "movable": false,
      "resizable": false, "minimized": true, "layer": 3, "subrole": "AXDialog"})"));

    const auto setup = parseSimulatedDesktop(document.dump());
    ASSERT_TRUE(setup.has_value()) << setup.error().message();
    const auto& w = setup->applications[0].windows[0];
    EXPECT_EQ(w.maxSize, (Size{1000, 900}));
    EXPECT_EQ(w.resizeIncrements, (Size{7, 14}));
    EXPECT_EQ(w.applyDelay, 250ms);
    EXPECT_TRUE(!w.movable && !w.resizable && w.minimized && w.layer == 3);
    EXPECT_EQ(w.subrole, "AXDialog");
    const auto& a = setup->applications[0];
    EXPECT_TRUE(a.activationPolicy == ActivationPolicy::accessory && a.hidden && a.unresponsive);
    ASSERT_TRUE(setup->dock.has_value());
    EXPECT_TRUE(setup->dock->edge == DockEdge::left && setup->dock->size == 60 &&
                setup->dock->intellihide && !setup->dock->hidden);
    EXPECT_FALSE(setup->accessibilityTrusted);
    EXPECT_EQ(setup->mouseLocation, (Point{10, 20}));
    EXPECT_EQ(setup->installed.at(0).name, "Browser");
    EXPECT_EQ(setup->installed[0].launchDelay, 1500ms);
    EXPECT_EQ(setup->installed[0].windows.at(0).appearsAfter, 700ms);
    // This program's entry keeps what the file leaves out.
    EXPECT_EQ(setup->self.pid, 7);
    EXPECT_EQ(setup->self.name, "Corvetta");
    EXPECT_EQ(setup->self.activationPolicy, ActivationPolicy::accessory);
    // Event flags in the file, the hot-key service's mask in the setup.
    EXPECT_EQ(setup->reservedHotKeys, (std::vector<HotKeyCombination>{{123, 0x1800}}));
}

TEST(DesktopFileTest, EveryRefusalNamesItsPlace) {
    // The example with one member set (or, without a value, removed), where the file goes wrong,
    // and how the problem's text starts.
    struct Row {
        const char* member;
        const char* value;
        const char* place;
        const char* problem;
    };
    const std::vector<Row> rows = {
        {"/displays", nullptr, "displays", "expected at least one display"},
        {"/displays", "[]", "displays", "expected at least one display"},
        {"/displays/0/frame", "[0, 0, 0, 900]", "displays[0].frame",
         "width and height must be positive"},
        {"/displays/0", R"({"id": 1, "frame": [10, 0, 1440, 900]})", "displays[0].frame",
         "the first display is the primary and must start at [0, 0]"},
        {"/displays/0/visibleFrame", "[0, 0, 1440, 901]", "displays[0].visibleFrame",
         "must lie inside the frame"},
        {"/displays/-", R"({"id": 1, "frame": [1440, 0, 800, 600]})", "displays[1].id",
         "duplicate display id 1"},
        {"/displays/0/uuid", R"("E621E1F8")", "displays[0].uuid", "expected a UUID"},
        {"/displays/0/edid", R"("00fg")", "displays[0].edid", "expected hexadecimal bytes"},
        {"/displays/0/edid", R"("00f")", "displays[0].edid", "expected hexadecimal bytes"},
        {"/displays/0/physicalSize", "[0, 300]", "displays[0].physicalSize",
         "width and height must be positive"},
        {"/displays/0/colorSpace", "1", "displays[0].colorSpace", "expected a string"},
        {"/applications/-", R"({"pid": 101, "name": "Terminal"})", "applications[1].pid",
         "duplicate pid 101"},
        {"/applications/-",
         R"({"pid": 202, "name": "Terminal", "windows": [{"number": 11, "frame": [0, 0, 9, 9]}]})",
         "applications[1].windows[0].number", "duplicate window number 11"},
        {"/applications/0/pid", R"("101")", "applications[0].pid", "expected a positive integer"},
        {"/applications/0/pid", "1.5", "applications[0].pid", "expected a positive integer"},
        {"/applications/0/activationPolicy", R"("background")", "applications[0].activationPolicy",
         "expected one of"},
        {"/applications/0/hidden", "1", "applications[0].hidden", "expected true or false"},
        {"/applications/0/name", nullptr, "applications[0].name", "required"},
        {"/applications/0/windows/0/frame", "[1, 2, 3]", "applications[0].windows[0].frame",
         "expected [x, y, width, height]"},
        {"/applications/0/windows/0/frame", nullptr, "applications[0].windows[0].frame",
         "required"},
        {"/applications/0/windows/0/titel", R"("x")", "applications[0].windows[0].titel",
         "unknown key (known keys: "},
        {"/applications/0/windows/0/maxSize", "[200, 900]", "applications[0].windows[0].maxSize",
         "smaller than minSize"},
        {"/applications/0/windows/0/resizeIncrements", "[7]",
         "applications[0].windows[0].resizeIncrements", "expected [width, height]"},
        {"/applications/0/windows/0/applyDelayMs", "-1", "applications[0].windows[0].applyDelayMs",
         "expected milliseconds"},
        {"/applications/0/launchDelayMs", "10", "applications[0].launchDelayMs",
         "only for installed applications"},
        {"/applications/0/windows/0/appearsAfterMs", "10",
         "applications[0].windows[0].appearsAfterMs", "only for windows of installed applications"},
        {"/installed", R"([{"pid": 5, "bundleIdentifier": "b", "name": "T", "launchDelayMs": -1}])",
         "installed[0].launchDelayMs", "expected milliseconds from 0 to 86400000"},
        {"/installed", R"([{"pid": 5, "bundleIdentifier": "b", "name": "T", "windows": [
           {"number": 5, "frame": [0, 0, 9, 9], "appearsAfterMs": 86400001}]}])",
         "installed[0].windows[0].appearsAfterMs", "expected milliseconds from 0 to 86400000"},
        {"/frontmost", "7", "frontmost", "no application with pid 7"},
        {"/dock", R"({"display": 3, "size": 50})", "dock.display", "no display with id 3"},
        {"/dock", R"({"display": 1, "edge": "top", "size": 50})", "dock.edge",
         R"(expected one of "bottom", "left", "right")"},
        {"/display", "[]", "display", "unknown key"},
        {"/installed", R"([{"pid": 5, "name": "Tool"}])", "installed[0].bundleIdentifier",
         "required to launch the application"},
        {"/self", R"({"pid": 101})", "applications[0].pid", "duplicate pid 101"},
        {"/mouseLocation", "[1, 2, 3]", "mouseLocation", "expected [x, y]"},
        {"/reservedHotKeys", R"([{"keyCode": 123}])", "reservedHotKeys[0].modifiers", "required"},
        {"/reservedHotKeys", R"([{"keyCode": 123, "modifiers": 786688}])",
         "reservedHotKeys[0].modifiers", "expected Shift (131072), Control (262144)"},
        {"/reservedHotKeys", R"([{"keyCode": 65536, "modifiers": 0}])",
         "reservedHotKeys[0].keyCode", "expected an integer"},
        {"", "[]", "", "expected an object"},
    };
    for (const auto& row : rows) {
        auto document = example();
        const Json::json_pointer member(row.member);
        if (row.value) {
            document[member] = Json::parse(row.value);
        } else {
            document[member.parent_pointer()].erase(member.back());
        }
        SCOPED_TRACE(document.dump());
        const auto setup = parseSimulatedDesktop(document.dump());
        ASSERT_FALSE(setup.has_value());
        EXPECT_EQ(setup.error().place, row.place);
        EXPECT_EQ(setup.error().problem.rfind(row.problem, 0), 0u) << setup.error().problem;
    }
}

TEST(DesktopFileTest, TextThatIsNotJsonOrAFileThatIsMissing) {
    const auto broken = parseSimulatedDesktop("{\"displays\": [\n  {\"id\": 1,,}]}");
    ASSERT_FALSE(broken.has_value());
    EXPECT_EQ(broken.error().place, "");
    EXPECT_NE(broken.error().message().find("line 2, column 12"), std::string::npos)
        << broken.error().message();

    testing::TemporaryFolder folder;
    const auto missing = loadSimulatedDesktop(folder / "absent.json");
    ASSERT_FALSE(missing.has_value());
    EXPECT_EQ(missing.error().message().rfind(
                  "cannot read " + (folder / "absent.json").string() + ": ", 0),
              0u);
    EXPECT_EQ(DesktopFileError({"frontmost", "no application with pid 7"}).message(),
              "frontmost: no application with pid 7");
}

TEST(DesktopFileTest, TheDemoDesktopLoadsAndRuns) {
    const auto setup = loadSimulatedDesktop(std::filesystem::path(CORVETTA_SOURCE_DIR) /
                                            "examples" / "desktops" / "two-displays.json");
    ASSERT_TRUE(setup.has_value()) << setup.error().message();
    ManualClock clock;
    ManualQueue queue(clock);
    SimulatedDesktop desktop(*setup, queue);
    EXPECT_EQ(desktop.screenPort().screens().size(), 2u);
    EXPECT_EQ(desktop.windowListPort().onScreenWindows().front().number, 11u);
    EXPECT_TRUE(desktop.applicationsPort().canLaunchApplication("com.example.browser"));
}

}  // namespace
}  // namespace corvetta
