#include "automation_methods_fixture.h"

namespace corvetta {
namespace {

using testing_support::AutomationMethodsTest;

class SimulateMethodTest : public AutomationMethodsTest {
protected:
    SimulatedDesktop& sim() { return rig->sim; }

    // Every event the global monitors see.
    Registration recordEvents() {
        return sim().eventMonitorPort().addGlobalMonitor(
            ~EventTypeMask{0}, [this](const InputEvent& event) { events.push_back(event); });
    }

    std::vector<InputEvent> events;
};

TEST_F(SimulateMethodTest, AnyMalformedParamIsRefusedByNameAndNothingIsApplied) {
    struct Row {
        const char* params;
        const char* error;
    };
    const std::vector<Row> rows = {
        {R"({"slep": true})",
         "Invalid param slep: unknown (known params: displays, launch, modifiers, mouse, quit, "
         "sleep, userFrame)"},
        {R"({"displays": []})", "Invalid param displays: expected at least one display"},
        {R"({"displays": [{"id": 1, "frame": [10, 0, 100, 100]}]})",
         "Invalid param displays[0].frame: the first display is the primary and must start at "
         "[0, 0]"},
        {R"({"displays": [{"id": 1, "frame": [0, 0, 9, 9]}, {"id": 1, "frame": [9, 0, 9, 9]}]})",
         "Invalid param displays[1].id: duplicate display id 1"},
        {R"({"sleep": "yes"})", "Invalid param sleep: expected true or false"},
        {R"({"userFrame": [11]})",
         "Invalid param userFrame: expected an object with frame, window"},
        {R"({"userFrame": {"window": 11, "frame": [0, 0, 10, 10], "x": 1}})",
         "Invalid param userFrame.x: unknown key (known keys: frame, window)"},
        {R"({"userFrame": {"window": 0, "frame": [0, 0, 10, 10]}})",
         "Invalid param userFrame.window: expected a window number"},
        {R"({"userFrame": {"window": 11, "frame": [0, 0, 0, 10]}})",
         "Invalid param userFrame.frame: expected [x, y, width, height] with a positive width and "
         "height"},
        {R"({"userFrame": {"window": 99, "frame": [0, 0, 10, 10]}})", "Not found: window 99"},
        {R"({"mouse": {"event": "click", "location": [1, 2]}})",
         R"(Invalid param mouse.event: expected one of "down", "drag", "up")"},
        {R"({"mouse": {"event": "down"}})", "Invalid param mouse.location: expected [x, y]"},
        {R"({"modifiers": 1})",
         "Invalid param modifiers: expected event modifier flags of Shift (131072), Control "
         "(262144), Option (524288) and Command (1048576) only"},
        {R"({"modifiers": "shift"})",
         "Invalid param modifiers: expected event modifier flags of Shift (131072), Control "
         "(262144), Option (524288) and Command (1048576) only"},
        {R"({"launch": 5})", "Invalid param launch: expected a bundle identifier"},
        {R"({"launch": "com.example.none"})", "Not found: app 'com.example.none'"},
        {R"({"quit": "editor"})", "Invalid param quit: expected a pid"},
        {R"({"quit": 999})", "Not found: running app with pid 999"},
        {R"({"quit": 1})", "Invalid param quit: pid 1 is Corvetta itself"},
    };
    const auto recorder = recordEvents();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.params);
        // Good params beside the bad one, applied first were anything applied.
        Json params = Json::parse(R"({"displays": [{"id": 7, "frame": [0, 0, 800, 600]}],
            "sleep": true, "userFrame": {"window": 11, "frame": [0, 0, 500, 400]},
            "mouse": {"event": "down", "location": [5, 5]}, "modifiers": 131072,
            "launch": "com.example.browser", "quit": 200})");
        params.update(Json::parse(row.params));
        EXPECT_EQ(error("simulate", params), row.error);
    }
    EXPECT_EQ(sim().screenPort().screens().size(), 2u);
    EXPECT_EQ(frameOf(kMain), Rect(100, 100, 800, 600));
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(sim().runningApplications().size(), 5u);
}

TEST_F(SimulateMethodTest, NewDisplaysAreAnnouncedAsAReconfiguration) {
    int announced = 0;
    const auto observer = sim().screenPort().observeScreenParameters([&announced] { ++announced; });
    EXPECT_EQ(result("simulate", Json::parse(R"({"displays": [{"id": 9, "name": "Projector",
                                                "frame": [0, 0, 1024, 768]}]})")),
              Json::object());
    EXPECT_EQ(announced, 1);
    const Json displays = result("list_displays");
    EXPECT_EQ(displays["displayCount"], 1);
    EXPECT_EQ(displays["displays"][0]["name"], "Projector");
}

TEST_F(SimulateMethodTest, SleepAnnouncesTheSleepAndThenTheWake) {
    std::vector<std::string> heard;
    auto& power = sim().sleepWakePort();
    const auto sleeping = power.observeWillSleep([&heard] { heard.push_back("sleep"); });
    const auto waking = power.observeDidWake([&heard] { heard.push_back("wake"); });
    EXPECT_EQ(result("simulate", {{"sleep", false}}), Json::object());
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(result("simulate", {{"sleep", true}}), Json::object());
    EXPECT_EQ(heard, (std::vector<std::string>{"sleep", "wake"}));
}

TEST_F(SimulateMethodTest, AUserFrameIsTakenAsADragWithinTheWindowsLimits) {
    sim().setWindowBehaviour(21, [](SimulatedWindow& w) { w.minSize = Size{300, 200}; });
    struct Row {
        WindowNumber window;
        Rect asked, taken;
    };
    const std::vector<Row> rows = {
        {kMain, {10, 30, 500, 400}, {10, 30, 500, 400}},
        {21, {20, 40, 100, 100}, {20, 40, 300, 200}},
        // A minimized window is not on screen to be dragged.
        {12, {20, 40, 100, 100}, {0, 25, 300, 200}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.window);
        const Rect& f = row.asked;
        EXPECT_EQ(result("simulate", {{"userFrame",
                                       {{"window", row.window},
                                        {"frame", {f.minX(), f.minY(), f.width(), f.height()}}}}}),
                  Json::object());
        EXPECT_EQ(frameOf(row.window), row.taken);
        // The user moved it, not a program.
        EXPECT_EQ(sim().frameWriteCount(row.window), 0);
    }
}

TEST_F(SimulateMethodTest, MouseAndModifierEventsReachTheMonitorsAndMoveThePointer) {
    const auto recorder = recordEvents();
    const auto shiftCommand = ModifierFlag::kShift | ModifierFlag::kCommand;
    EXPECT_EQ(result("simulate", {{"modifiers", shiftCommand}}), Json::object());
    EXPECT_EQ(sim().modifierFlags(), shiftCommand);
    const std::pair<const char*, EventType> kinds[] = {{"down", EventType::leftMouseDown},
                                                       {"drag", EventType::leftMouseDragged},
                                                       {"up", EventType::leftMouseUp}};
    for (const auto& [name, type] : kinds) {
        EXPECT_EQ(result("simulate", {{"mouse", {{"event", name}, {"location", {40, 60}}}}}),
                  Json::object());
        EXPECT_EQ(events.back(), (InputEvent{type, {40, 60}, shiftCommand}));
    }
    EXPECT_EQ(sim().mouseLocation(), (Point{40, 60}));
    // The modifiers change after the mouse event of the same request, at the pointer.
    EXPECT_EQ(result("simulate", Json::parse(R"({"modifiers": 0,
                                   "mouse": {"event": "down", "location": [1, 2]}})")),
              Json::object());
    EXPECT_EQ(events.at(events.size() - 2),
              (InputEvent{EventType::leftMouseDown, {1, 2}, shiftCommand}));
    EXPECT_EQ(events.back(), (InputEvent{EventType::flagsChanged, {1, 2}, 0}));
    EXPECT_EQ(events.front(), (InputEvent{EventType::flagsChanged, {0, 0}, shiftCommand}));
}

TEST_F(SimulateMethodTest, LaunchAnswersOnceTheApplicationRunsAndQuitFollowsIt) {
    std::vector<std::string> activated;
    const auto observer = sim().observeDidActivateApplication(
        [&activated](const RunningApplication& app) { activated.push_back(app.localizedName); });
    const auto replies = send("simulate", {{"launch", "com.example.browser"}, {"quit", kEditor}});
    EXPECT_TRUE(replies->empty());
    queue.runUntilIdle();
    ASSERT_EQ(replies->size(), 1u);
    EXPECT_EQ(replies->front().value_or(nullptr), Json::object());
    EXPECT_EQ(activated, std::vector<std::string>{"browser"});
    EXPECT_TRUE(sim().runningApplication(500));
    EXPECT_FALSE(sim().runningApplication(kEditor));
    EXPECT_EQ(sim().frontmostApplication()->localizedName, "browser");
}

TEST_F(SimulateMethodTest, OnAnyOtherDesktopTheMethodIsUnknown) {
    AutomationMethods elsewhere(AutomationContext{
        .desktop = sim(),
        .queue = queue,
        .screenDetection = rig->services.screenDetection,
        .snappingService = rig->services.windowSnappingService,
        .windowMover = rig->services.windowMover,
        .logbook = logbook,
        .logging = logging,
    });
    std::optional<MethodOutcome> outcome;
    elsewhere.dispatch("simulate", {{"sleep", true}},
                       [&outcome](MethodOutcome answer) { outcome = answer; });
    ASSERT_TRUE(outcome && !*outcome);
    EXPECT_EQ(outcome->error(), "Unknown method: simulate");
}

}  // namespace
}  // namespace corvetta
