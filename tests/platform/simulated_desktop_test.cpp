#include "platform/sim/simulated_desktop.h"

#include <gtest/gtest.h>

#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop_file.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

// Two displays side by side; the Dock takes 50 points at the bottom of the first. Editor (101) is
// in front with windows 11 and 12; Terminal (202) has one window per display; Browser is installed.
SimulatedDesktopSetup twoDisplays() {
    return parseSimulatedDesktop(R"({
      "displays": [{"id": 1, "name": "Built-in", "frame": [0, 0, 1440, 900],
                    "visibleFrame": [0, 50, 1440, 825], "scale": 2, "builtin": true},
                   {"id": 2, "name": "Wide", "frame": [1440, 0, 1920, 1080],
                    "visibleFrame": [1440, 0, 1920, 1055]}],
      "applications": [
        {"pid": 101, "bundleIdentifier": "com.example.editor", "name": "Editor", "windows": [
          {"number": 11, "title": "main.cpp", "frame": [100, 100, 800, 600], "minSize": [300, 200]},
          {"number": 12, "title": "notes", "frame": [200, 150, 600, 400]}]},
        {"pid": 202, "bundleIdentifier": "com.example.terminal", "name": "Terminal", "windows": [
          {"number": 21, "title": "zsh", "frame": [50, 500, 400, 200]},
          {"number": 22, "title": "logs", "frame": [1600, 100, 600, 400]}]},
        {"pid": 303, "bundleIdentifier": "com.example.agent", "name": "Agent",
         "activationPolicy": "prohibited"}],
      "installed": [{"pid": 404, "bundleIdentifier": "com.example.browser", "name": "Browser",
                     "windows": [{"number": 41, "title": "Start", "frame": [0, 30, 1000, 700]}]}],
      "frontmost": 101,
      "dock": {"display": 1, "edge": "bottom", "size": 50}})")
        .value();
}

class SimulatedDesktopTest : public ::testing::Test {
protected:
    SimulatedDesktopTest() { start(twoDisplays()); }

    void start(SimulatedDesktopSetup setup) {
        desktop = std::make_unique<SimulatedDesktop>(std::move(setup), queue);
        screenChanges =
            desktop->screenPort().observeScreenParameters([this] { ++screenChangeCount; });
        activations = desktop->applicationsPort().observeDidActivateApplication(
            [this](const RunningApplication& app) { activated.push_back(app.localizedName); });
    }

    AccessibilityPort& ax() { return desktop->accessibilityPort(); }
    static AXElement element(WindowNumber number, ProcessId pid) { return {pid, number}; }

    AXValue read(const AXElement& element, std::string_view attribute) {
        const auto value = ax().copyAttributeValue(element, attribute);
        EXPECT_TRUE(value.has_value()) << attribute << ": " << describe(value.error());
        return value ? *value : AXValue{};
    }
    Rect axFrame(WindowNumber number, ProcessId pid = 101) {
        return {std::get<Point>(read(element(number, pid), AXAttribute::kPosition)),
                std::get<Size>(read(element(number, pid), AXAttribute::kSize))};
    }
    AXErrorCode write(WindowNumber number, std::string_view attribute, AXValue value,
                      ProcessId pid = 101) {
        return ax().setAttributeValue(element(number, pid), attribute, value);
    }
    std::vector<WindowNumber> listed() const {
        std::vector<WindowNumber> numbers;
        for (const auto& entry : desktop->windowListPort().onScreenWindows()) {
            numbers.push_back(entry.number);
        }
        return numbers;
    }
    Rect visibleFrame(std::size_t index) const {
        return desktop->screenPort().screens().at(index).visibleFrame;
    }

    ManualClock clock;
    ManualQueue queue{clock};
    std::unique_ptr<SimulatedDesktop> desktop;
    Registration screenChanges;
    Registration activations;
    int screenChangeCount = 0;
    std::vector<std::string> activated;
};

TEST_F(SimulatedDesktopTest, SizeWritesFollowTheWindowsRules) {
    struct Row {
        SimulatedWindow rules;  // only the size rules are used
        Size requested;
        Size taken;
    };
    const Size min{300, 200};
    // Plain minimum and maximum sizes are held by the mover's tests, which need them to fail.
    const std::vector<Row> rows = {
        // Whole steps above the minimum, rounded down, never below it; from zero without one.
        {{.minSize = min, .resizeIncrements = Size{7, 13}}, {500, 500}, {496, 499}},
        {{.minSize = min, .resizeIncrements = Size{7, 13}}, {302, 205}, {300, 200}},
        {{.resizeIncrements = Size{10, 20}}, {455, 455}, {450, 440}},
        {{.minSize = min, .resizable = false}, {500, 400}, {800, 600}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.requested);
        start(twoDisplays());
        desktop->setWindowBehaviour(11, [&](SimulatedWindow& w) {
            w.minSize = row.rules.minSize;
            w.maxSize = row.rules.maxSize;
            w.resizeIncrements = row.rules.resizeIncrements;
            w.resizable = row.rules.resizable;
        });
        EXPECT_EQ(write(11, AXAttribute::kSize, row.requested), AXErrorCode::success);
        EXPECT_EQ(axFrame(11), Rect({100, 100}, row.taken));
        EXPECT_EQ(desktop->frameWriteCount(11), 1);
    }
}

// A user's resize that the window refuses in part keeps the edge the user did not hold.
TEST_F(SimulatedDesktopTest, UserResizeBelowTheMinimumKeepsTheUnheldEdge) {
    struct Row {
        Rect dragged;
        Rect taken;
    };
    const std::vector<Row> rows = {
        {{750, 100, 150, 600}, {600, 100, 300, 600}},  // left edge held
        {{100, 100, 150, 600}, {100, 100, 300, 600}},  // right edge held
        {{100, 650, 800, 50}, {100, 500, 800, 200}},   // top edge held
        {{300, 300, 100, 100}, {300, 300, 300, 200}},  // moved and resized: the origin is kept
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.dragged);
        start(twoDisplays());
        desktop->dragWindow(11, row.dragged);
        EXPECT_EQ(axFrame(11), row.taken);
    }
}

// An immovable window's refusal shows in the mover's table, which then fails to verify.
TEST_F(SimulatedDesktopTest, FullScreenWindowsFillTheirDisplayAndRefuseFrameWrites) {
    ASSERT_EQ(write(11, AXAttribute::kFullScreen, true), AXErrorCode::success);
    EXPECT_EQ(axFrame(11), Rect(0, 0, 1440, 900));
    EXPECT_EQ(write(11, AXAttribute::kSize, Size{400, 300}), AXErrorCode::success);
    EXPECT_EQ(axFrame(11), Rect(0, 0, 1440, 900));
    EXPECT_EQ(desktop->frameWriteCount(11), 1);
    ASSERT_EQ(write(11, AXAttribute::kFullScreen, false), AXErrorCode::success);
    EXPECT_EQ(axFrame(11), Rect(100, 100, 800, 600));

    // On the second display, whose top lies 180 points above the primary's in accessibility space.
    ASSERT_EQ(write(22, AXAttribute::kFullScreen, true, 202), AXErrorCode::success);
    EXPECT_EQ(desktop->windowFrame(22), Rect(1440, -180, 1920, 1080));
    EXPECT_EQ(std::get<bool>(read(element(22, 202), AXAttribute::kFullScreen)), true);
}

TEST_F(SimulatedDesktopTest, SlowWindowTakesItsWritesLateAndInOrder) {
    desktop->setWindowBehaviour(11, [](SimulatedWindow& w) { w.applyDelay = 100ms; });
    write(11, AXAttribute::kPosition, Point{10, 40});
    write(11, AXAttribute::kSize, Size{500, 400});
    write(11, AXAttribute::kPosition, Point{30, 50});
    queue.advance(99ms);
    EXPECT_EQ(axFrame(11), Rect(100, 100, 800, 600));
    queue.advance(1ms);
    EXPECT_EQ(axFrame(11), Rect(30, 50, 500, 400));
    EXPECT_EQ(desktop->frameWriteCount(11), 3);

    // A write still pending when the desktop goes away is dropped.
    write(11, AXAttribute::kPosition, Point{0, 0});
    desktop.reset();
    queue.advance(1s);
}

TEST_F(SimulatedDesktopTest, MinimizedWindowsStayWithTheirApplicationButLeaveTheScreen) {
    const auto app = ax().applicationElement(101);
    ASSERT_EQ(write(11, AXAttribute::kMinimized, true), AXErrorCode::success);
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{12, 21, 22}));
    EXPECT_EQ(std::get<std::vector<AXElement>>(read(app, AXAttribute::kWindows)).size(), 2u);
    EXPECT_EQ(std::get<AXElement>(read(app, AXAttribute::kFocusedWindow)), element(12, 101));

    ASSERT_EQ(write(12, AXAttribute::kMinimized, true), AXErrorCode::success);
    EXPECT_EQ(ax().copyAttributeValue(app, AXAttribute::kFocusedWindow).error(),
              AXErrorCode::noValue);

    ASSERT_EQ(write(12, AXAttribute::kMinimized, false), AXErrorCode::success);
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{12, 21, 22}));
}

TEST_F(SimulatedDesktopTest, AccessibilityFailuresCarryThePlatformsCodes) {
    using Call = std::function<AXErrorCode(AccessibilityPort&)>;
    const auto copy = [](AXElement e, std::string_view attribute) -> Call {
        return [=](AccessibilityPort& port) {
            const auto value = port.copyAttributeValue(e, attribute);
            return value ? AXErrorCode::success : value.error();
        };
    };
    const auto set = [](AXElement e, std::string_view attribute, AXValue value) -> Call {
        return [=](AccessibilityPort& port) { return port.setAttributeValue(e, attribute, value); };
    };
    const auto perform = [](AXElement e, std::string_view action) -> Call {
        return [=](AccessibilityPort& port) { return port.performAction(e, action); };
    };
    const auto pidOf = [](AXElement e) -> Call {
        return [=](AccessibilityPort& port) {
            const auto pid = port.processOf(e);
            return pid ? AXErrorCode::success : pid.error();
        };
    };
    const auto untrusted = [](SimulatedDesktop& d) { d.setAccessibilityTrusted(false); };
    const auto hanging = [](SimulatedDesktop& d) { d.setApplicationUnresponsive(202, true); };
    const auto nothing = [](SimulatedDesktop&) {};
    struct Row {
        const char* name;
        std::function<void(SimulatedDesktop&)> setup;
        Call call;
        AXErrorCode expected;
    };
    const AXElement window11(101, 11);
    // Closed windows, lost permission, hanging applications and unknown minimum sizes on window
    // frames are read through the accessibility element's failure table.
    const std::vector<Row> rows = {
        {"window of a quit application", [](auto& d) { d.quitApplication(101); },
         copy(window11, "AXSize"), AXErrorCode::invalidUIElement},
        {"quit application", [](auto& d) { d.quitApplication(101); },
         copy(AXElement(101, 0), "AXWindows"), AXErrorCode::invalidUIElement},
        {"window claimed by another process", nothing, copy(AXElement(202, 11), "AXSize"),
         AXErrorCode::invalidUIElement},
        {"untrusted action", untrusted, perform(window11, "AXRaise"), AXErrorCode::apiDisabled},
        {"untrusted process lookup", untrusted, pidOf(window11), AXErrorCode::apiDisabled},
        {"unresponsive application", hanging, copy(AXElement(202, 0), "AXFocusedWindow"),
         AXErrorCode::cannotComplete},
        {"unknown attribute", nothing, copy(window11, "AXBogus"),
         AXErrorCode::attributeUnsupported},
        {"read-only attribute", nothing, set(window11, "AXTitle", std::string("x")),
         AXErrorCode::attributeUnsupported},
        {"value of the wrong kind", nothing, set(window11, "AXPosition", Size{1, 1}),
         AXErrorCode::illegalArgument},
        {"flag of the wrong kind", nothing, set(window11, "AXFullScreen", std::int64_t{1}),
         AXErrorCode::illegalArgument},
        {"unknown action", nothing, perform(window11, "AXZoom"), AXErrorCode::actionUnsupported},
        {"no element", nothing, copy(AXElement(), "AXPosition"), AXErrorCode::illegalArgument},
        {"application without windows", nothing, copy(AXElement(1, 0), "AXFocusedWindow"),
         AXErrorCode::noValue},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        start(twoDisplays());
        row.setup(*desktop);
        EXPECT_EQ(row.call(ax()), row.expected);
    }
}

TEST_F(SimulatedDesktopTest, WindowAttributesAndActions) {
    const auto app = ax().applicationElement(101);
    EXPECT_EQ(std::get<std::vector<AXElement>>(read(app, AXAttribute::kWindows)),
              (std::vector<AXElement>{element(11, 101), element(12, 101)}));
    EXPECT_EQ(std::get<std::string>(read(app, AXAttribute::kTitle)), "Editor");
    EXPECT_EQ(std::get<std::int64_t>(read(element(11, 101), AXAttribute::kWindowId)), 11);
    EXPECT_EQ(std::get<std::string>(read(element(11, 101), AXAttribute::kTitle)), "main.cpp");
    EXPECT_EQ(std::get<std::string>(read(element(11, 101), AXAttribute::kSubrole)),
              kStandardWindowSubrole);
    EXPECT_EQ(ax().processOf(element(12, 101)).value(), 101);

    ASSERT_EQ(ax().performAction(element(12, 101), AXAction::kRaise), AXErrorCode::success);
    EXPECT_EQ(std::get<AXElement>(read(app, AXAttribute::kFocusedWindow)), element(12, 101));
    EXPECT_EQ(listed().front(), 12u);

    const auto closeButton = std::get<AXElement>(read(element(12, 101), AXAttribute::kCloseButton));
    ASSERT_EQ(ax().performAction(closeButton, AXAction::kPress), AXErrorCode::success);
    EXPECT_FALSE(desktop->window(12).has_value());
    EXPECT_EQ(ax().performAction(closeButton, AXAction::kPress), AXErrorCode::invalidUIElement);
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{11, 21, 22}));
}

TEST_F(SimulatedDesktopTest, WindowListFollowsActivationAndHiding) {
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{11, 12, 21, 22}));
    const auto entries = desktop->windowListPort().onScreenWindows();
    EXPECT_EQ(entries[2], (WindowListEntry{21, 0, 202, {50, 500, 400, 200}, "Terminal", "zsh"}));

    EXPECT_TRUE(desktop->applicationsPort().activate(202));
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{21, 22, 11, 12}));
    desktop->focusWindow(12);
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{12, 11, 21, 22}));

    // Hiding the front application fronts the one whose window is next in line.
    EXPECT_TRUE(desktop->applicationsPort().hide(101));
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{21, 22}));
    EXPECT_EQ(desktop->applicationsPort().frontmostApplication()->processIdentifier, 202);
    EXPECT_EQ(activated, (std::vector<std::string>{"Terminal", "Editor", "Terminal"}));

    desktop->addWindow(101, {.number = 13, .frame = {0, 30, 200, 200}});
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{21, 22}));
    EXPECT_TRUE(desktop->applicationsPort().activate(101));
    EXPECT_EQ(listed(), (std::vector<WindowNumber>{13, 12, 11, 21, 22}));
}

TEST_F(SimulatedDesktopTest, ActivationIsAnnouncedOnlyWhenTheFrontApplicationChanges) {
    auto& apps = desktop->applicationsPort();
    EXPECT_EQ(apps.currentApplication().activationPolicy, ActivationPolicy::accessory);
    EXPECT_EQ(apps.runningApplications().size(), 4u);
    EXPECT_TRUE(apps.runningApplication(1).has_value());

    EXPECT_TRUE(apps.activate(101));
    desktop->activateThisApplication();
    EXPECT_FALSE(apps.activate(303));
    EXPECT_FALSE(apps.activate(999));
    desktop->focusWindow(22);
    EXPECT_EQ(activated, (std::vector<std::string>{"Corvetta", "Terminal"}));
    // The main display is the one with the key window.
    EXPECT_EQ(desktop->screenPort().mainScreen()->number, 2u);
}

TEST_F(SimulatedDesktopTest, LaunchingFrontsRunningOrStartsInstalledApplications) {
    struct Row {
        const char* bundleIdentifier;
        std::optional<ProcessId> launched;
        std::string failure;
    };
    const std::vector<Row> rows = {
        {"com.example.terminal", 202, ""},
        {"com.example.browser", 404, ""},
        {"com.example.missing", std::nullopt,
         "No application with bundle identifier com.example.missing"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bundleIdentifier);
        start(twoDisplays());
        auto& apps = desktop->applicationsPort();
        EXPECT_EQ(apps.canLaunchApplication(row.bundleIdentifier), row.launched.has_value());
        std::optional<Expected<RunningApplication, LaunchError>> result;
        apps.launchApplication(row.bundleIdentifier, [&](const auto& r) { result = r; });
        EXPECT_FALSE(result.has_value());
        queue.runUntilIdle();
        ASSERT_TRUE(result.has_value());
        if (row.launched) {
            ASSERT_TRUE(result->has_value());
            EXPECT_EQ((*result)->processIdentifier, *row.launched);
            EXPECT_EQ(apps.frontmostApplication()->processIdentifier, *row.launched);
            EXPECT_EQ(desktop->windowListPort().onScreenWindows().front().ownerPid, *row.launched);
        } else {
            EXPECT_EQ(result->error().kind, LaunchError::Kind::notFound);
            EXPECT_EQ(result->error().message, row.failure);
        }
    }
}

// The browser takes 2 s to start; its second and third windows follow 1 s and 3 s after it
// started. Asked twice, it starts once and both asks complete then. Quit before its late windows
// appear, it never shows them: the next run shows only its own, each once.
TEST_F(SimulatedDesktopTest, SlowApplicationStartsAfterItsDelayAndItsWindowsFollowInTurn) {
    auto setup = twoDisplays();
    setup.installed[0].launchDelay = 2s;
    setup.installed[0].windows.push_back(
        {.number = 42, .frame = {0, 30, 500, 400}, .appearsAfter = 1s});
    setup.installed[0].windows.push_back(
        {.number = 43, .frame = {0, 30, 500, 400}, .appearsAfter = 3s});
    start(std::move(setup));
    auto& apps = desktop->applicationsPort();
    int completions = 0;
    const auto launch = [&] {
        apps.launchApplication("com.example.browser", [&](const auto& result) {
            EXPECT_EQ(result.value().processIdentifier, 404);
            ++completions;
        });
    };
    const auto relaunch = [&] {
        desktop->quitApplication(404);
        launch();
    };
    launch();
    launch();
    const struct {
        const char* moment;
        Duration advance;
        std::function<void()> then;
        int completions;
        std::vector<WindowNumber> windows;  // front to back; none: not running
    } timeline[] = {
        {"just before the delay", 1999ms, {}, 0, {}},
        {"started", 1ms, {}, 2, {41}},
        {"first late window", 1s, {}, 2, {42, 41}},
        {"second late window", 2s, {}, 2, {43, 42, 41}},
        {"quit and launched again", 0s, relaunch, 2, {}},
        {"started again", 2s, {}, 3, {41}},
        {"quit before its late windows, launched again", 0s, relaunch, 3, {}},
        {"started a third time", 2s, {}, 4, {41}},
        {"only this run's windows appear", 1s, {}, 4, {42, 41}},
        {"long after", 1h, {}, 4, {43, 42, 41}},
    };
    for (const auto& step : timeline) {
        queue.advance(step.advance);
        if (step.then) {
            step.then();
        }
        EXPECT_EQ(completions, step.completions) << step.moment;
        std::vector<WindowNumber> windows;
        if (apps.runningApplication(404)) {
            const auto elements = read(ax().applicationElement(404), AXAttribute::kWindows);
            for (const auto& window : std::get<std::vector<AXElement>>(elements)) {
                windows.push_back(static_cast<WindowNumber>(window.token()));
            }
        }
        EXPECT_EQ(windows, step.windows) << step.moment;
    }
}

TEST_F(SimulatedDesktopTest, RemovingADisplayBringsItsWindowsToThePrimary) {
    auto displays = twoDisplays().displays;
    displays.pop_back();
    desktop->setDisplays(displays);
    EXPECT_EQ(screenChangeCount, 1);
    EXPECT_EQ(desktop->screenPort().screens().size(), 1u);
    // The primary's visible frame starts 25 points down, below the menu bar.
    EXPECT_EQ(desktop->windowFrame(22), Rect(0, 25, 600, 400));
    EXPECT_EQ(desktop->windowFrame(21), Rect(50, 500, 400, 200));
}

TEST_F(SimulatedDesktopTest, HiddenDockGivesItsEdgeToTheVisibleFrame) {
    struct Row {
        DockEdge edge;
        double size;
        Rect shown;
        Rect hidden;
    };
    const std::vector<Row> rows = {
        {DockEdge::bottom, 50, {0, 50, 1440, 825}, {0, 0, 1440, 875}},
        {DockEdge::left, 60, {60, 0, 1380, 875}, {0, 0, 1440, 875}},
        {DockEdge::right, 60, {0, 0, 1380, 875}, {0, 0, 1440, 875}},
    };
    for (const auto& row : rows) {
        auto setup = twoDisplays();
        setup.displays[0].visibleFrame = row.shown;
        setup.dock = SimulatedDock{1, row.edge, row.size};
        start(std::move(setup));
        screenChangeCount = 0;
        desktop->setDockHidden(true);
        desktop->setDockHidden(true);
        EXPECT_EQ(visibleFrame(0), row.hidden);
        EXPECT_EQ(visibleFrame(1), Rect(1440, 0, 1920, 1055));
        desktop->setDockHidden(false);
        EXPECT_EQ(visibleFrame(0), row.shown);
        EXPECT_EQ(screenChangeCount, 2);
    }
}

TEST_F(SimulatedDesktopTest, IntelligentDockHidesWhileAWindowCoversIt) {
    auto setup = twoDisplays();
    setup.dock->intellihide = true;
    start(std::move(setup));
    // The Dock's strip is y 850 to 900 in accessibility space; touching it is not covering it.
    ASSERT_EQ(write(21, AXAttribute::kPosition, Point{50, 650}, 202), AXErrorCode::success);
    EXPECT_FALSE(desktop->dockHidden());
    write(21, AXAttribute::kPosition, Point{50, 660}, 202);
    EXPECT_TRUE(desktop->dockHidden());
    EXPECT_EQ(visibleFrame(0), Rect(0, 0, 1440, 875));
    write(21, AXAttribute::kSize, Size{500, 210}, 202);
    EXPECT_EQ(screenChangeCount, 1);
    write(21, AXAttribute::kMinimized, true, 202);
    EXPECT_FALSE(desktop->dockHidden());
    EXPECT_EQ(screenChangeCount, 2);
    // A window on the other display never counts.
    write(22, AXAttribute::kPosition, Point{1600, 700}, 202);
    EXPECT_FALSE(desktop->dockHidden());
}

// Which monitor an event reaches, by mask and by application, shows in the event monitor's test.
TEST_F(SimulatedDesktopTest, PostedEventsMoveThePointerAndMonitorsMayOutliveTheDesktop) {
    int seen = 0;
    auto local = desktop->eventMonitorPort().addLocalMonitor(eventMask(EventType::keyDown),
                                                             [&](const InputEvent&) { ++seen; });
    desktop->postEvent({EventType::leftMouseUp, {300, 200}});
    EXPECT_EQ(desktop->pointerPort().mouseLocation(), (Point{300, 200}));
    desktop->postEvent({EventType::keyDown, {}}, true);
    EXPECT_EQ(seen, 1);
    desktop.reset();
    local.reset();
}

TEST_F(SimulatedDesktopTest, HotKeysTakeFreeCombinationsAndDeliverPressThenRelease) {
    constexpr std::uint32_t kControlOption = CarbonModifier::kControl | CarbonModifier::kOption;
    auto setup = twoDisplays();
    setup.reservedHotKeys = {{123, kControlOption}};
    start(std::move(setup));
    auto& port = desktop->hotKeyPort();
    std::vector<HotKeyEvent> events;
    auto handler = port.installHotKeyHandler([&](const HotKeyEvent& e) { events.push_back(e); });

    EXPECT_EQ(port.registerHotKey(1, {123, kControlOption}).error(),
              HotKeyRegistrationError::combinationTaken);
    EXPECT_TRUE(port.registerHotKey(7, {124, kControlOption}).has_value());
    EXPECT_EQ(port.registerHotKey(7, {125, kControlOption}).error(),
              HotKeyRegistrationError::idInUse);
    EXPECT_EQ(port.registerHotKey(8, {124, kControlOption}).error(),
              HotKeyRegistrationError::combinationTaken);
    EXPECT_TRUE(
        desktop->hotKeys().pressHotKey(124, ModifierFlag::kControl | ModifierFlag::kOption));
    EXPECT_EQ(events, (std::vector<HotKeyEvent>{{HotKeyEventKind::pressed, 7},
                                                {HotKeyEventKind::released, 7}}));
    // The handler's registration may outlive the desktop.
    desktop.reset();
    handler.reset();
}

}  // namespace
}  // namespace corvetta
