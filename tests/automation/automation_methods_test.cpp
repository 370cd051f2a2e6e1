#include "automation_methods_fixture.h"
#include "foundation/date.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;
using testing_support::AutomationMethodsTest;

Json frame(double x, double y, double width, double height) {
    return Json{{"x", x}, {"y", y}, {"width", width}, {"height", height}};
}

TEST_F(AutomationMethodsTest, ReadingMethodsDescribeTheDesktop) {
    // Regular applications only, frames in accessibility space, minimized windows flagged.
    EXPECT_EQ(result("list_windows"), Json::parse(R"({"windows": [
        {"title": "main.cpp", "minimized": false,
         "frame": {"x": 100, "y": 100, "width": 800, "height": 600},
         "appName": "editor", "bundleIdentifier": "com.example.editor"},
        {"title": "old.txt", "minimized": true,
         "frame": {"x": 0, "y": 25, "width": 300, "height": 200},
         "appName": "editor", "bundleIdentifier": "com.example.editor"},
        {"title": "zsh", "minimized": false,
         "frame": {"x": 0, "y": 25, "width": 400, "height": 300},
         "appName": "terminal", "bundleIdentifier": "com.example.terminal"}]})"));

    const Json displays = result("list_displays");
    EXPECT_EQ(displays["displayCount"], 2);
    EXPECT_EQ(displays["displays"][0]["mainDisplay"], true);
    EXPECT_EQ(displays["displays"][0]["isBuiltIn"], true);
    EXPECT_EQ(displays["displays"][0]["visibleFrame"], frame(0, 25, 1440, 875));
    // Display keys: the panel reports no identity, so its place names it.
    EXPECT_EQ(displays["displays"][0]["stableID"],
              "1440x900_2.0_builtin_built-in_smart_1440x900_0_0");
    const Json& external = displays["displays"][1];
    EXPECT_EQ(external["stableID"], "1920x1080_1.0_external_external_uuid_E621E1F8");
    EXPECT_EQ(external["name"], "External");
    EXPECT_EQ(external["mainDisplay"], false);
    EXPECT_EQ(external["isBuiltIn"], false);
    EXPECT_EQ(external["resolution"], Json::parse(R"({"width": 1920, "height": 1080})"));
    EXPECT_EQ(external["scaleFactor"], 1);
    // 180 points higher than the primary display, so above its top edge.
    EXPECT_EQ(external["frame"], frame(1440, -180, 1920, 1080));

    EXPECT_EQ(result("get_frontmost_window"), Json::parse(R"({"title": "main.cpp",
                              "frame": {"x": 100, "y": 100, "width": 800, "height": 600},
                              "appName": "editor", "bundleIdentifier": "com.example.editor"})"));
    EXPECT_EQ(result("get_status"),
              Json::parse(R"({"statusMessage": "Ready", "version": "Corvetta 0.1.0",
                              "desktop": "simulated desktop test.json",
                              "shortcutsNotRegistered": [{"name": "leftHalf",
                                                          "combination": "⌃⌥←"}],
                              "isRestoring": false, "restorationStatusMessage": ""})"));

    const Json inspected = result("inspect_app_windows", {{"bundle_id", "com.example.editor"}});
    EXPECT_EQ(inspected["appName"], "editor");
    EXPECT_EQ(inspected["rawWindowCount"], 2);
    EXPECT_EQ(inspected["standardSubroleCount"], 2);
    EXPECT_EQ(inspected["closeButtonCount"], 2);
    EXPECT_EQ(inspected["windows"][1],
              Json::parse(R"({"title": "old.txt", "titleQuerySuccess": true,
                              "subrole": "AXStandardWindow", "hasCloseButton": true,
                              "minimized": true,
                              "frame": {"x": 0, "y": 25, "width": 300, "height": 200}})"));
}

TEST_F(AutomationMethodsTest, BadRequestsAreAnsweredWithTheirError) {
    struct Row {
        const char* method;
        const char* params;
        const char* error;
    };
    const std::vector<Row> rows = {
        {"no_such_method", "{}", "Unknown method: no_such_method"},
        {"snap_window", "{}", "Missing required param: position"},
        {"snap_window", R"({"position": null})", "Missing required param: position"},
        {"snap_window", R"({"position": "topThird"})", "Invalid position: topThird"},
        {"perform_action", R"({"action": 3})", "Invalid param action: expected a string"},
        {"perform_action", R"({"action": "sideways"})", "Unknown action: sideways"},
        {"perform_action", R"({"action": "custom"})", "Missing required param: rect"},
        {"perform_action", R"({"action": "custom", "rect": [0, 0, 0, 10]})",
         "Invalid param rect: expected [x, y, width, height] with a positive width and height"},
        {"get_logs", R"({"level": "verbose"})",
         "Invalid level: verbose (expected debug, info, warning or error)"},
        {"get_logs", R"({"limit": -1})", "Invalid param limit: expected a whole number from 0"},
        {"get_logs", R"({"limit": 2.5})", "Invalid param limit: expected a whole number from 0"},
        {"open_app", "{}", "Missing required param: bundle_id"},
        {"open_app", R"({"bundle_id": "com.example.none"})", "Not found: app 'com.example.none'"},
        {"activate_app", R"({"bundle_id": "com.example.browser"})",
         "Not found: running app 'com.example.browser'"},
        {"inspect_app_windows", R"({"bundle_id": "com.example.none"})",
         "Not found: running app 'com.example.none'"},
        {"close_app_windows", R"({"bundle_id": "com.example.none"})",
         "Not found: running app 'com.example.none'"},
        {"open_new_window", R"({"bundle_id": "com.example.terminal"})",
         "Not found: new window menu item of 'com.example.terminal'"},
        {"discover_new_window_shortcut", R"({"bundle_id": "com.example.terminal"})",
         "Not found: new window menu item of 'com.example.terminal'"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.method) + " " + row.params);
        EXPECT_EQ(error(row.method, Json::parse(row.params)), row.error);
    }
    // Nothing moved or closed on the way.
    EXPECT_EQ(result("list_windows")["windows"].size(), 3u);
}

// Where each action lands is the calculations' to pin; here, that both methods reach them.
TEST_F(AutomationMethodsTest, ActionsMoveTheWindowAsTheShortcutWould) {
    struct Row {
        const char* method;
        Json params;
        Json frame;
    };
    const std::vector<Row> rows = {
        {"perform_action", {{"action", "leftHalf"}}, frame(0, 25, 720, 875)},
        {"snap_window", {{"position", "fullscreen"}}, frame(0, 25, 1440, 875)},
        // Screen space in, accessibility space out.
        {"perform_action",
         {{"action", "custom"}, {"rect", {100, 75, 500, 400}}},
         frame(100, 425, 500, 400)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.params.dump());
        Json answer = row.params;
        answer.erase("rect");
        EXPECT_EQ(result(row.method, row.params), answer);
        EXPECT_EQ(result("list_windows")["windows"][0]["frame"], row.frame);
    }
}

// A window that cannot be read or moved is answered with the accessibility error.
TEST_F(AutomationMethodsTest, AWindowThatCannotBeReadOrMovedAnswersWithItsError) {
    rig->sim.setApplicationUnresponsive(kTerminal, true);
    EXPECT_EQ(error("inspect_app_windows", {{"bundle_id", "com.example.terminal"}}),
              "Cannot read the windows of terminal: kAXErrorCannotComplete (-25204)");
    EXPECT_EQ(result("list_windows")["windows"].size(), 2u);
    rig->sim.setApplicationUnresponsive(kEditor, true);
    EXPECT_EQ(error("perform_action", {{"action", "rightHalf"}}), "No frontmost window found");
    rig->sim.setApplicationUnresponsive(kEditor, false);
    rig->sim.setWindowBehaviour(kMain, [](SimulatedWindow& w) { w.movable = false; });
    EXPECT_EQ(error("snap_window", {{"position", "rightHalf"}}),
              "Failed to verify window position after move");
}

TEST_F(AutomationMethodsTest, SyncAnswersOnceALaggingWindowHasSettled) {
    rig->sim.setWindowBehaviour(kMain, [](SimulatedWindow& w) { w.applyDelay = 80ms; });
    const auto moved = send("perform_action", {{"action", "leftHalf"}});
    const auto synced = send("sync");
    queue.runUntilIdle();
    ASSERT_TRUE(synced->empty());
    while (synced->empty()) {
        queue.advance(10ms);
    }
    // The move's answer left first, and the window is where it was sent.
    ASSERT_EQ(moved->size(), 1u);
    EXPECT_EQ(*synced->front(), Json::object());
    EXPECT_EQ(rig->sim.windowFrame(kMain), Rect(0, 25, 720, 875));

    // With nothing under way it answers on the next queue turns.
    const auto idle = send("sync");
    EXPECT_TRUE(idle->empty());
    queue.runUntilIdle();
    EXPECT_EQ(idle->size(), 1u);
}

TEST_F(AutomationMethodsTest, GetLogsFiltersTheLogBook) {
    logbook.clear();
    const auto loggedAt = clock.now();
    const Logger one(logging, "One", LogCategory::workspace());
    const Logger two(logging, "Two", LogCategory::toast());
    one.debug("first detail");
    one.warning("Disk almost full");
    two.info("second note");
    two.error("Disk gone");
    struct Row {
        Json params;
        std::vector<std::string> messages;
    };
    // How the log book filters is its own test's; here, that each parameter reaches it.
    const std::vector<Row> rows = {
        {Json::object(), {"first detail", "Disk almost full", "second note", "Disk gone"}},
        {{{"level", "warning"}, {"service", "Two"}}, {"Disk gone"}},
        {{{"category", "workspace"}, {"limit", 1}}, {"Disk almost full"}},
        {{{"search", "disk"}}, {"Disk almost full", "Disk gone"}},
        {{{"limit", 0}}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.params.dump());
        const Json answer = result("get_logs", row.params);
        std::vector<std::string> messages;
        for (const auto& entry : answer["entries"]) {
            messages.push_back(entry["message"]);
        }
        EXPECT_EQ(messages, row.messages);
        EXPECT_EQ(answer["count"], row.messages.size());
    }
    const Json entry = result("get_logs", {{"level", "error"}})["entries"][0];
    EXPECT_EQ(entry, (Json{{"timestamp", formatIso8601(loggedAt)},
                           {"level", "error"},
                           {"service", "Two"},
                           {"category", "toast"},
                           {"message", "Disk gone"}}));
}

}  // namespace
}  // namespace corvetta
