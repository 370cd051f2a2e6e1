#include "automation_methods_fixture.h"

namespace corvetta {
namespace {

using testing_support::AutomationMethodsTest;

class SimulateMethodTest : public AutomationMethodsTest {
protected:
    SimulatedDesktop& sim() { return rig->sim; }
    Json simulate(const char* params) { return result("simulate", Json::parse(params)); }

    std::vector<std::string> heard;
    std::vector<InputEvent> events;
    std::vector<Registration> observers;

    void listen() {
        const auto note = [this](const char* what) {
            return [this, what] { heard.push_back(what); };
        };
        observers.push_back(sim().screenPort().observeScreenParameters(note("displays")));
        observers.push_back(sim().sleepWakePort().observeWillSleep(note("sleep")));
        observers.push_back(sim().sleepWakePort().observeDidWake(note("wake")));
        observers.push_back(sim().observeDidActivateApplication(
            [this](const RunningApplication& app) { heard.push_back(app.localizedName); }));
        observers.push_back(sim().eventMonitorPort().addGlobalMonitor(
            ~EventTypeMask{0}, [this](const InputEvent& event) { events.push_back(event); }));
    }
};

TEST_F(SimulateMethodTest, AnyMalformedParamIsRefusedByNameAndNothingIsApplied) {
    const std::string modifiers =
        "Invalid param modifiers: expected event modifier flags of Shift (131072), Control "
        "(262144), Option (524288) and Command (1048576) only";
    const std::pair<const char*, std::string> rows[] = {
        {R"({"slep": true})",
         "Invalid param slep: unknown (known params: appearance, displays, launch, "
         "modifiers, mouse, quit, sleep, userFrame)"},
        {R"({"displays": []})", "Invalid param displays: expected at least one display"},
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
        {R"({"modifiers": 1})", modifiers},
        {R"({"modifiers": -131072})", modifiers},
        {R"({"launch": 5})", "Invalid param launch: expected a bundle identifier"},
        {R"({"launch": "com.example.none"})", "Not found: app 'com.example.none'"},
        {R"({"quit": "editor"})", "Invalid param quit: expected a pid"},
        {R"({"quit": 999})", "Not found: running app with pid 999"},
        {R"({"quit": 1})", "Invalid param quit: pid 1 is Corvetta itself"},
        {R"({"appearance": "dim"})",
         R"(Invalid param appearance: expected "light", "dark" or "unknown")"},
    };
    listen();
    for (const auto& [bad, message] : rows) {
        SCOPED_TRACE(bad);
        // Good params beside the bad one, which would show if anything were applied.
        Json params = Json::parse(R"({"displays": [{"id": 7, "frame": [0, 0, 800, 600]}],
            "sleep": true, "userFrame": {"window": 11, "frame": [0, 0, 500, 400]},
            "mouse": {"event": "down", "location": [5, 5]}, "modifiers": 131072,
            "launch": "com.example.browser", "quit": 200})");
        params.update(Json::parse(bad));
        EXPECT_EQ(error("simulate", params), message);
    }
    EXPECT_TRUE(heard.empty());
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(frameOf(kMain), Rect(100, 100, 800, 600));
    EXPECT_EQ(sim().runningApplications().size(), 5u);
}

TEST_F(SimulateMethodTest, DisplaysAndSleepReachTheirObserversInOrder) {
    listen();
    EXPECT_EQ(simulate(R"({"sleep": true, "displays": [{"id": 9, "name": "Projector",
                                                          "frame": [0, 0, 1024, 768]}]})"),
              Json::object());
    EXPECT_EQ(heard, (std::vector<std::string>{"displays", "sleep", "wake"}));
    const Json displays = result("list_displays");
    EXPECT_EQ(displays["displayCount"], 1);
    EXPECT_EQ(displays["displays"][0]["name"], "Projector");
}

TEST_F(SimulateMethodTest, AUserFrameIsTakenAsADragWithinTheWindowsLimits) {
    sim().setWindowBehaviour(21, [](SimulatedWindow& w) { w.minSize = Size{300, 200}; });
    const std::pair<const char*, Rect> rows[] = {
        {R"({"window": 11, "frame": [10, 30, 500, 400]})", {10, 30, 500, 400}},
        {R"({"window": 21, "frame": [20, 40, 100, 100]})", {20, 40, 300, 200}},
        // A minimized window is not on screen to be dragged.
        {R"({"window": 12, "frame": [20, 40, 100, 100]})", {0, 25, 300, 200}},
    };
    for (const auto& [userFrame, taken] : rows) {
        SCOPED_TRACE(userFrame);
        const Json params{{"userFrame", Json::parse(userFrame)}};
        EXPECT_EQ(result("simulate", params), Json::object());
        const WindowNumber window = params["userFrame"]["window"];
        EXPECT_EQ(frameOf(window), taken);
        // The user moved it, not a program.
        EXPECT_EQ(sim().frameWriteCount(window), 0);
    }
}

TEST_F(SimulateMethodTest, MouseEventsCarryTheModifiersHeldAndMoveThePointer) {
    listen();
    const auto held = ModifierFlag::kShift | ModifierFlag::kCommand;
    simulate(R"({"modifiers": 1179648})");
    EXPECT_EQ(sim().modifierFlags(), held);
    for (const auto* event : {"drag", "up"}) {
        result("simulate", {{"mouse", {{"event", event}, {"location", {40, 60}}}}});
    }
    // The modifiers change after the mouse event of the same request, at the pointer.
    simulate(R"({"modifiers": 0, "mouse": {"event": "down", "location": [1, 2]}})");
    EXPECT_EQ(events, (std::vector<InputEvent>{{EventType::flagsChanged, {0, 0}, held},
                                               {EventType::leftMouseDragged, {40, 60}, held},
                                               {EventType::leftMouseUp, {40, 60}, held},
                                               {EventType::leftMouseDown, {1, 2}, held},
                                               {EventType::flagsChanged, {1, 2}, 0}}));
    EXPECT_EQ(sim().mouseLocation(), (Point{1, 2}));
}

TEST_F(SimulateMethodTest, LaunchAnswersOnceTheApplicationRunsAndQuitFollowsIt) {
    for (const auto delay : {Duration{0}, Duration{std::chrono::seconds(3)}}) {
        auto slow = setup();
        slow.installed[0].launchDelay = delay;
        startMethods(std::move(slow));
        heard.clear();
        listen();
        const auto replies =
            send("simulate", {{"launch", "com.example.browser"}, {"quit", kEditor}});
        EXPECT_TRUE(replies->empty());
        queue.runUntilIdle();
        if (delay > Duration::zero()) {
            // The quit waits for the launch, and the answer for both.
            queue.advance(delay - std::chrono::milliseconds(1));
            EXPECT_TRUE(replies->empty());
            EXPECT_TRUE(sim().runningApplication(kEditor));
            queue.advance(std::chrono::milliseconds(1));
        }
        ASSERT_EQ(replies->size(), 1u);
        EXPECT_EQ(replies->front().value_or(nullptr), Json::object());
        EXPECT_EQ(heard, std::vector<std::string>{"browser"});
        EXPECT_FALSE(sim().runningApplication(kEditor));
        EXPECT_EQ(sim().frontmostApplication()->localizedName, "browser");
    }
}

}  // namespace
}  // namespace corvetta
