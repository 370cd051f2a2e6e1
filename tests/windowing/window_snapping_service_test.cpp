#include "windowing/window_snapping_service.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "snapping_fixture.h"
#include "windowing/calculation_settings.h"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;
using Case = WindowDirection::Case;
namespace keys = calculation_settings;

constexpr ProcessId kEditor = 101;
constexpr ProcessId kBrowser = 102;
constexpr ProcessId kIdle = 103;
constexpr WindowNumber kNotes = 11;
constexpr WindowNumber kDocs = 21;

// Window frames are in accessibility space; the primary display is 825 high, so a frame at screen
// y with height h shows at 825 - (y + h).
const Rect kNotesFrame(100, 100, 400, 300);
const Rect kDocsFrame(600, 400, 300, 200);
const SimulatedDisplay kPrimary{1, "Primary", {0, 0, 1000, 825}, {0, 0, 1000, 800}};

// The editor is in front with one window, the browser behind it, and an idle application
// without windows.
SimulatedDesktopSetup desktop(std::vector<SimulatedDisplay> displays = {kPrimary},
                              ProcessId frontmost = kEditor) {
    SimulatedDesktopSetup setup;
    setup.displays = std::move(displays);
    setup.applications = {{.pid = kEditor,
                           .bundleIdentifier = "com.example.editor",
                           .name = "editor",
                           .windows = {{.number = kNotes, .title = "Notes", .frame = kNotesFrame}}},
                          {.pid = kBrowser,
                           .bundleIdentifier = "com.example.browser",
                           .name = "browser",
                           .windows = {{.number = kDocs, .title = "Docs", .frame = kDocsFrame}}},
                          {.pid = kIdle, .bundleIdentifier = "com.example.idle", .name = "idle"}};
    setup.frontmost = frontmost;
    return setup;
}

class WindowSnappingServiceTest : public testing_support::SnappingTest {
protected:
    std::vector<std::string> messages() const { return loggedMessages("WindowSnappingService"); }

    std::string lastMessage(const std::string& service, const std::string& prefix) const {
        const auto all = loggedMessages(service);
        const auto found = std::find_if(
            all.rbegin(), all.rend(), [&](const std::string& m) { return m.starts_with(prefix); });
        return found == all.rend() ? "" : *found;
    }

    RunningApplication app(ProcessId pid) const {
        return *rig->sim.applicationsPort().runningApplication(pid);
    }

    Screen screen(std::size_t index) const { return rig->sim.screenPort().screens().at(index); }

    SnapResult toDisplay(bool next) {
        return run([&](auto& service, auto done) {
            next ? service.moveFrontmostWindowToNextDisplay(done)
                 : service.moveFrontmostWindowToPreviousDisplay(done);
        });
    }
};

// The geometry of each action is the calculations' business; here every action goes through the
// whole path once, with one frame checked for each calculation.
TEST_F(WindowSnappingServiceTest, EveryActionSnapsLessTheGapAndOnlyBottomOnesAreBottomAligned) {
    preferences.set(WindowSnappingService::kLayoutSpacingKey, 10.0);
    preferences.set(keys::kSpecifiedWidth, 600.0);
    preferences.set(keys::kSpecifiedHeight, 400.0);
    const std::set<Case> bottomAligned = {Case::bottomHalf,        Case::bottomLeft,
                                          Case::bottomRight,       Case::bottomThird,
                                          Case::bottomLeftQuarter, Case::bottomRightQuarter};
    // On the visible frame (0, 0, 1000, 800), from the Notes window.
    const std::map<Case, Rect> frames = {
        {Case::bottomRightQuarter, {505, 430, 495, 395}},
        {Case::center, {305, 280, 390, 290}},
        {Case::larger, {90, 90, 420, 320}},
        {Case::specified, {205, 230, 590, 390}},
        {Case::custom, {105, 530, 290, 190}},  // screen space in, accessibility space on the window
    };
    for (const Case c : allWindowDirectionCases()) {
        const auto action =
            c == Case::custom ? WindowDirection::custom({100, 100, 300, 200}) : WindowDirection(c);
        SCOPED_TRACE(action.description());
        start(desktop());
        const auto result = snap(action);
        ASSERT_TRUE(result) << result.error();
        EXPECT_EQ(result->attempts, 1);
        if (const auto frame = frames.find(c); frame != frames.end()) {
            EXPECT_EQ(frameOf(kNotes), frame->second);
        }
        EXPECT_EQ(lastMessage("WindowMover", "Moving window with isBottomAligned: "),
                  std::string("Moving window with isBottomAligned: ") +
                      (bottomAligned.contains(c) ? "true" : "false"));
        EXPECT_EQ(messages().back(), "Snapped \"Notes\" to " + action.description() + " on " +
                                         screen(0).description());
        EXPECT_THAT(messages(), Contains("Snapping frontmost window to " + action.description()));
    }
}

TEST_F(WindowSnappingServiceTest, RepeatedHalfPressFollowsTheMode) {
    preferences.set(WindowSnappingService::kLayoutSpacingKey, 10.0);
    // The second display's bottom lies 100 points higher, so a bottom-aligned move checked against
    // the first display's visible frame would be pulled back there.
    const SimulatedDisplay right{2, "Right", {1000, 100, 800, 600}, {1000, 100, 800, 600}};
    const Rect left(0, 25, 495, 800);
    const Rect leftOnRight(1000, 125, 395, 600);
    // The size cycle's frame, taken as it comes: zero-sized at the display's far corner, where the
    // gap has no edge to move.
    const Rect corner(1000, 0, 0, 0);
    struct Row {
        int mode;
        std::size_t displays;
        Case action;
        // The window's frame after each press.
        std::vector<Rect> frames;
    };
    // Which mode does what on how many displays is the calculation's business; here each path
    // goes through the service once.
    const std::vector<Row> rows = {
        {0, 2, Case::leftHalf, {left, left}},
        {1, 2, Case::leftHalf, {left, leftOnRight, left}},
        {1, 2, Case::bottomHalf, {{0, 430, 1000, 395}, {1000, 430, 800, 295}}},
        {3, 2, Case::leftHalf, {left, corner, corner, corner}},
        // Bottom-aligned, a frame at the top corner reads as a Dock change to the mover, which
        // places the pressed action afresh.
        {3, 1, Case::bottomHalf, {{0, 430, 1000, 395}, {0, 430, 1000, 395}}},
    };
    for (const auto& row : rows) {
        const std::string pressed = WindowDirection(row.action).description();
        SCOPED_TRACE("mode " + std::to_string(row.mode) + " " + pressed + " on " +
                     std::to_string(row.displays));
        preferences.set(keys::kSubsequentExecutionSpace, row.mode);
        std::vector<SimulatedDisplay> displays = {kPrimary, right};
        displays.resize(row.displays);
        logbook.clear();
        start(desktop(displays));
        for (std::size_t press = 0; press < row.frames.size(); ++press) {
            ASSERT_TRUE(snap(row.action)) << "press " << press + 1;
            EXPECT_EQ(frameOf(kNotes), row.frames[press]) << "press " << press + 1;
            // The log and the Dock handling name the action pressed, whatever size it cycled to.
            EXPECT_THAT(messages().back(), StartsWith("Snapped \"Notes\" to " + pressed + " on "));
            EXPECT_EQ(lastMessage("WindowMover", "Moving window with isBottomAligned: "),
                      std::string("Moving window with isBottomAligned: ") +
                          (row.action == Case::bottomHalf ? "true" : "false"));
        }
        const auto logged = messages();
        EXPECT_EQ(std::count(logged.begin(), logged.end(), "Repeated " + pressed + " press"),
                  static_cast<std::ptrdiff_t>(row.frames.size()) - 1);
    }
}

TEST_F(WindowSnappingServiceTest, OnlyTheSameActionOnTheUntouchedWindowIsARepetition) {
    preferences.set(keys::kSubsequentExecutionSpace, 3);
    const SimulatedDisplay twin{2, "Twin", {1000, 0, 1000, 825}, {1000, 0, 1000, 800}};
    const Rect half(0, 25, 500, 800);
    // A repetition cycles the size, which sends the window to the display's far corner.
    const Rect cycled(1000, 0, 0, 0);
    // Screen space, as the user would leave the window.
    const auto setFrame = [&](WindowNumber window, Rect frame) {
        ASSERT_TRUE(
            rig->services.accessibilityElement.setFrame(*rig->sim.windowElement(window), frame));
    };
    struct Row {
        std::string name;
        std::function<void()> between;
        WindowNumber pressedOn;
        Rect expected;
    };
    const std::vector<Row> rows = {
        {"untouched", [] {}, kNotes, cycled},
        {"nudged by 2 points",
         [&] {
             setFrame(kNotes, {2, 2, 498, 798});
         },
         kNotes, cycled},
        {"moved by hand",
         [&] {
             setFrame(kNotes, {3, 0, 500, 800});
         },
         kNotes, half},
        {"another action", [&] { ASSERT_TRUE(snap(Case::rightHalf)); }, kNotes, half},
        {"to the next display and back",
         [&] {
             ASSERT_TRUE(toDisplay(true));
             ASSERT_TRUE(toDisplay(false));
             ASSERT_EQ(frameOf(kNotes), half);
         },
         kNotes, half},
        // The browser's window sits exactly where the editor's was snapped.
        {"another window",
         [&] {
             setFrame(kDocs, {0, 0, 500, 800});
             rig->sim.applicationsPort().activate(kBrowser);
         },
         kDocs, half},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        start(desktop({kPrimary, twin}));
        ASSERT_TRUE(snap(Case::leftHalf));
        row.between();
        ASSERT_TRUE(snap(Case::leftHalf));
        EXPECT_EQ(frameOf(row.pressedOn), row.expected);
    }
}

TEST_F(WindowSnappingServiceTest, NextAndPreviousDisplayScaleTheFrameAndWrapAround) {
    // Left to right: 1000, 500 and 2000 wide, all with the same height.
    const std::vector<SimulatedDisplay> three = {
        kPrimary,
        {2, "Narrow", {1000, 0, 500, 825}, {1000, 0, 500, 800}},
        {3, "Wide", {1500, 0, 2000, 825}, {1500, 0, 2000, 800}},
    };
    const Rect onWide(1700, 100, 800, 300);
    const Rect onNarrow(1050, 100, 200, 300);
    // start, forward, expected
    const std::vector<std::tuple<Rect, bool, Rect>> rows = {
        {kNotesFrame, true, onNarrow},
        {kNotesFrame, false, onWide},  // the first wraps to the last
        {onWide, true, kNotesFrame},   // the last wraps to the first
        {onWide, false, onNarrow},
        // Taller than the visible frame: shrunk to fit it.
        {{100, 0, 400, 825}, true, {1050, 25, 200, 800}},
        // Hanging over the right edge: shifted back inside.
        {{800, 100, 400, 300}, true, {1300, 100, 200, 300}},
    };
    for (const auto& [from, forward, expected] : rows) {
        SCOPED_TRACE(::testing::PrintToString(from) + (forward ? " next" : " previous"));
        auto setup = desktop(three);
        setup.applications[0].windows[0].frame = from;
        start(std::move(setup));
        const auto result = toDisplay(forward);
        ASSERT_TRUE(result) << result.error();
        EXPECT_EQ(frameOf(kNotes), expected);
    }
    EXPECT_THAT(messages(),
                Contains("Moving window from " + Rect(100, 425, 400, 300).description() + " to " +
                         Rect(1050, 425, 200, 300).description()));
}

TEST_F(WindowSnappingServiceTest, TargetIsTheLastOtherApplicationAndNeverThisProgram) {
    start(desktop());
    EXPECT_EQ(rig->service.targetApplication(), app(kEditor));
    ASSERT_TRUE(rig->sim.applicationsPort().activate(kBrowser));
    // Opening the menu or the palette brings this program to the front.
    rig->sim.activateThisApplication();
    EXPECT_EQ(rig->service.targetApplication(), app(kBrowser));
    ASSERT_TRUE(snap(Case::leftHalf));
    EXPECT_EQ(frameOf(kDocs), Rect(0, 25, 500, 800));  // no spacing set, no gap
    EXPECT_EQ(frameOf(kNotes), kNotesFrame);

    // Once the recorded application is gone, the frontmost one takes its place; the spacing is
    // read on every snap.
    rig->sim.quitApplication(kBrowser);
    rig->sim.applicationsPort().activate(kEditor);
    rig->sim.activateThisApplication();
    preferences.set(WindowSnappingService::kLayoutSpacingKey, 10.0);
    ASSERT_TRUE(snap(Case::rightHalf));
    EXPECT_EQ(frameOf(kNotes), Rect(505, 25, 495, 800));

    start(desktop({kPrimary}, rig->sim.applicationsPort().currentApplication().processIdentifier));
    EXPECT_EQ(rig->service.targetApplication(), std::nullopt);
    EXPECT_EQ(snap(Case::maximize).error(), "No frontmost window found");
}

TEST_F(WindowSnappingServiceTest, NothingMovesWithoutAWindowOrAFrame) {
    start(desktop({kPrimary}, kIdle));
    const auto result = snap(Case::leftHalf);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), "No frontmost window found");
    EXPECT_THAT(messages(), Contains(StartsWith("Failed to get focused window: ")));
    EXPECT_EQ(messages().back(), "Error snapping window: No frontmost window found");

    ASSERT_FALSE(toDisplay(true));
    EXPECT_EQ(messages().back(), "Error moving window to next display: No frontmost window found");

    const auto forApp = run(
        [&](auto& service, auto done) { service.snapWindow(app(kIdle), Case::leftHalf, done); });
    ASSERT_FALSE(forApp);
    EXPECT_EQ(messages().back(), "No focused window for " + app(kIdle).description());

    // A custom action without a rectangle has no frame to go to.
    start(desktop());
    EXPECT_FALSE(snap(WindowDirection::custom(Rect::null())));
    EXPECT_EQ(rig->sim.frameWriteCount(kNotes), 0);
}

TEST_F(WindowSnappingServiceTest, GivenApplicationsWindowIsSnappedOrMoved) {
    // The layout lock's hook sees the window before it moves.
    std::vector<std::pair<AXElement, std::optional<Rect>>> seen;
    start(desktop(), [&](const AXElement& element) { seen.emplace_back(element, frameOf(kDocs)); });
    ASSERT_TRUE(run([&](auto& service, auto done) {
        service.snapWindow(app(kBrowser), Case::rightHalf, done);
    }));
    EXPECT_EQ(seen, (decltype(seen){{*rig->sim.windowElement(kDocs), kDocsFrame}}));
    EXPECT_EQ(frameOf(kDocs), Rect(500, 25, 500, 800));
    EXPECT_EQ(frameOf(kNotes), kNotesFrame);

    // Screen space in, accessibility space on the window.
    const auto moved = run([&](auto& service, auto done) {
        service.moveWindow(app(kBrowser), {200, 300, 400, 200}, done);
    });
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->frame, Rect(200, 300, 400, 200));
    EXPECT_EQ(frameOf(kDocs), Rect(200, 325, 400, 200));
}

TEST_F(WindowSnappingServiceTest, MoverFailuresAreLoggedWithTheEntryPointsPrefix) {
    using Call = std::function<void(WindowSnappingService&, SnapCompletion)>;
    const std::vector<std::pair<Call, std::string>> rows = {
        {[](auto& s, auto done) { s.snapFrontmostWindow(Case::leftHalf, done); },
         "Error snapping window: "},
        {[](auto& s, auto done) { s.moveFrontmostWindowToNextDisplay(done); },
         "Error moving window to next display: "},
        {[](auto& s, auto done) { s.moveFrontmostWindowToPreviousDisplay(done); },
         "Error moving window to previous display: "},
        {[&](auto& s, auto done) { s.snapWindow(app(kEditor), Case::leftHalf, done); },
         "Error snapping window for app: "},
        {[&](auto& s, auto done) {
             s.moveWindow(app(kEditor), {0, 0, 300, 300}, done);
         },
         "Error moving window for app: "},
    };
    for (const auto& [call, prefix] : rows) {
        SCOPED_TRACE(prefix);
        auto setup = desktop();
        setup.applications[0].windows[0].fullScreen = true;
        start(std::move(setup));
        const auto result = run(call);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), "Window is in fullscreen mode");
        EXPECT_EQ(messages().back(), prefix + "Window is in fullscreen mode");
    }
}

TEST_F(WindowSnappingServiceTest, ANewerMoveTakesTheWindowFromAnOlderOneStillRetrying) {
    // Like a terminal's character cells, steps of 30 points keep the half 20 points short of its
    // target, so the snap waits to retry when the move to the next display comes.
    const SimulatedDisplay twin{2, "Twin", {1000, 0, 1000, 825}, {1000, 0, 1000, 800}};
    auto setup = desktop({kPrimary, twin});
    setup.applications[0].windows[0].resizeIncrements = Size{30, 1};
    start(std::move(setup));
    std::optional<SnapResult> snapped;
    rig->service.snapFrontmostWindow(Case::leftHalf, [&](const SnapResult& r) { snapped = r; });
    const auto moved = toDisplay(true);
    ASSERT_TRUE(moved) << moved.error();
    EXPECT_EQ(frameOf(kNotes), Rect(1000, 25, 480, 800));
    ASSERT_TRUE(snapped.has_value() && !snapped->has_value());
    EXPECT_EQ(snapped->error(), "Superseded by a newer move of the window");
    EXPECT_THAT(messages(), Not(Contains(StartsWith("Error "))));
}

TEST_F(WindowSnappingServiceTest, StoredPositionsPerformTheSameNamedAction) {
    start(desktop());
    auto& service = rig->service;
    for (const auto position : allSnapPositionCases()) {
        const auto performed = service.direction(position);
        if (position == SnapPosition::Case::fullscreen) {
            EXPECT_EQ(performed, WindowDirection(Case::maximize));
        } else if (position != SnapPosition::Case::custom) {
            EXPECT_EQ(performed.name(), SnapPosition(position).name());
        }
    }
    const Rect rect(10, 20, 300, 400);
    EXPECT_EQ(service.direction(SnapPosition::custom(rect)), WindowDirection::custom(rect));
    EXPECT_EQ(messages().back(),
              "Converting position " + SnapPosition::custom(rect).description() + " to direction");
}

}  // namespace
}  // namespace corvetta
