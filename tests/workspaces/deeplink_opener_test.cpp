#include "workspaces/deeplink_opener.h"

#include <gtest/gtest.h>

#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/test_logging.h"

namespace corvetta::testing {
namespace {

using Kind = SimulatedOpeningRequest::Kind;
using Links = std::map<std::string, std::string>;
using namespace std::chrono_literals;

// Running: an editor showing "myapp", a terminal with two windows, Firefox and WezTerm; installed
// but not running: Obsidian and kitty. Firefox is in front.
SimulatedDesktopSetup desk() {
    SimulatedDesktopSetup s;
    s.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true}};
    const auto app = [](ProcessId pid, const std::string& id, std::vector<SimulatedWindow> w) {
        return SimulatedApplication{
            .pid = pid, .bundleIdentifier = id, .name = id, .windows = std::move(w)};
    };
    s.applications = {
        app(100, "com.microsoft.VSCode", {{.number = 11, .title = "main.cpp — myapp — Code"}}),
        app(200, "com.apple.Terminal",
            {{.number = 21, .title = "me@host: ~/src"}, {.number = 22, .title = "zsh"}}),
        app(300, "firefox-esr", {{.number = 31, .title = "Start"}}),
        app(600, "org.wezfurlong.wezterm", {{.number = 61, .title = "wezterm"}}),
    };
    s.installed = {app(400, "md.obsidian", {{.number = 41, .title = "Vault"}}),
                   app(500, "net.kovidgoyal.kitty", {{.number = 51, .title = "kitty"}})};
    s.frontmost = 300;
    return s;
}

class DeeplinkOpenerTest : public ::testing::Test {
protected:
    // Opens the links and runs the clock until the report arrives.
    DeeplinkReport openAll(Links links, std::vector<WindowInfo> windows = {}) {
        std::optional<DeeplinkReport> report;
        opener.openDeeplinks(Workspace{.name = "Work",
                                       .windowInfos = std::move(windows),
                                       .appDeeplinks = std::move(links)},
                             [&](const DeeplinkReport& r) {
                                 EXPECT_FALSE(report.has_value()) << "reported twice";
                                 report = r;
                             });
        for (int step = 0; step < 200 && !report; ++step) {
            queue.advance(50ms);
        }
        EXPECT_TRUE(report.has_value());
        return report.value_or(DeeplinkReport{});
    }
    std::size_t requestCount() const { return sim.openingRequests().size(); }

    NotificationCenter notifications;
    ManualClock clock;
    ManualQueue queue{clock};
    TestLogging log{notifications, clock};
    SimulatedDesktop sim{desk(), queue};
    DeeplinkOpener opener{sim.accessibilityPort(),
                          sim.applicationsPort(),
                          sim.openingPort(),
                          queue,
                          log.logging,
                          "/home/me"};
};

TEST_F(DeeplinkOpenerTest, GivesEachApplicationItsTurnAndEachKindItsDispatch) {
    std::optional<DeeplinkReport> report;
    opener.openDeeplinks(
        Workspace{.name = "Work",
                  .windowInfos = {{.appBundleIdentifier = "firefox-esr"},
                                  {.appBundleIdentifier = "com.apple.Terminal"}},
                  .appDeeplinks = Links{{"firefox-esr#0", "http://localhost:3000"},
                                        {"com.apple.Terminal#0", "~/work"},
                                        {"com.apple.Terminal#1", "make run"},
                                        {"md.obsidian#0", "obsidian://open?vault=V"},
                                        {"damaged", "x"}}},
        [&](const DeeplinkReport& r) { report = r; });
    // Firefox at once, the terminal 0.5 s later, Obsidian last. The command is typed once its
    // window has the focus back from the terminal's new window: two settles after the turn.
    const std::pair<Duration, std::size_t> timeline[] = {
        {0ms, 1}, {499ms, 1}, {500ms, 2}, {899ms, 2}, {900ms, 3}, {999ms, 3}, {1000ms, 4}};
    Duration now = 0ms;
    for (const auto& [at, count] : timeline) {
        queue.advance(at - now);
        now = at;
        EXPECT_EQ(requestCount(), count) << "at " << at.count();
    }
    queue.runUntilIdle();
    const std::vector<SimulatedOpeningRequest> expected = {
        {Kind::open, "firefox-esr", "http://localhost:3000", {}},
        {Kind::terminal, "com.apple.Terminal", "/home/me/work", {}},
        {Kind::typed, "", "make run\n", 22},
        {Kind::open, "md.obsidian", "obsidian://open?vault=V", {}},
    };
    EXPECT_EQ(sim.openingRequests(), expected);
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(*report, (DeeplinkReport{.opened = 4, .skipped = 1}));
    for (const char* line :
         {"🔗 All deeplinks scheduled (staggered per-app)",
          "🔗 [firefox-esr] Restoring non-https URL 'http://localhost:3000' — verify this is "
          "intentional",
          "🔗 [com.apple.Terminal] CGEvent keystrokes 'make run'",
          "🔗 [md.obsidian] app not running — dispatch will launch it",
          "🔗 Skipping deeplink with unreadable key 'damaged'"}) {
        EXPECT_TRUE(log.contains(line)) << line;
    }
    // Obsidian was started and shows what it opened.
    EXPECT_TRUE(sim.applicationsPort().frontmostApplication().has_value());
}

TEST_F(DeeplinkOpenerTest, RaisesAWindowThatShowsTheTargetAndDispatchesTheRest) {
    struct Case {
        const char* name;
        Links links;
        std::vector<SimulatedOpeningRequest> requests;
        DeeplinkReport report;
        std::optional<WindowNumber> front;
    };
    const Case cases[] = {
        {"folder named in the title",
         {{"com.microsoft.VSCode#0", "~/Projects/myapp"}},
         {},
         {.raised = 1},
         11},
        {"directory as the terminal shows it",
         {{"com.apple.Terminal#0", "~/src"}},
         {},
         {.raised = 1},
         21},
        {"another folder",
         {{"com.microsoft.VSCode#0", "/srv/other"}},
         {{Kind::open, "com.microsoft.VSCode", "/srv/other", {}}},
         {.opened = 1},
         {}},
        {"not installed", {{"com.example.missing#0", "/tmp/x"}}, {}, {.failed = 1}, {}},
        {"command to WezTerm",
         {{"org.wezfurlong.wezterm#0", "htop"}},
         {{Kind::program, "org.wezfurlong.wezterm", "cli send-text --no-paste htop\n", {}}},
         {.opened = 1},
         {}},
        {"command to kitty, started first",
         {{"net.kovidgoyal.kitty#0", "npm test"}},
         {{Kind::typed, "", "npm test\n", 51}},
         {.opened = 1},
         51},
    };
    for (const auto& c : cases) {
        SimulatedDesktop fresh{desk(), queue};
        DeeplinkOpener caseOpener{fresh.accessibilityPort(),
                                  fresh.applicationsPort(),
                                  fresh.openingPort(),
                                  queue,
                                  log.logging,
                                  "/home/me"};
        std::optional<DeeplinkReport> report;
        caseOpener.openDeeplinks(Workspace{.name = c.name, .appDeeplinks = c.links},
                                 [&](const DeeplinkReport& r) { report = r; });
        queue.advance(6s);
        EXPECT_EQ(report, c.report) << c.name;
        EXPECT_EQ(fresh.openingRequests(), c.requests) << c.name;
        if (c.front) {
            EXPECT_EQ(fresh.onScreenWindows().front().number, *c.front) << c.name;
        }
    }
}

TEST_F(DeeplinkOpenerTest, ASecondRestoreRaisesWhatTheFirstOpened) {
    const Links links{{"md.obsidian#0", "obsidian://open?vault=V"}};
    EXPECT_EQ(openAll(links), (DeeplinkReport{.opened = 1}));
    EXPECT_EQ(openAll(links), (DeeplinkReport{.raised = 1}));
    EXPECT_TRUE(log.contains(
        "🔗 [md.obsidian] 'obsidian://open?vault=V' — raised existing window, skipped dispatch"));
    EXPECT_EQ(requestCount(), 1u);
}

TEST_F(DeeplinkOpenerTest, NeverTypesWhenTheFocusMovedToAnotherApplication) {
    std::optional<DeeplinkReport> report;
    opener.openDeeplinks(
        Workspace{.name = "Work", .appDeeplinks = Links{{"com.apple.Terminal#1", "rm -rf build"}}},
        [&](const DeeplinkReport& r) { report = r; });
    queue.advance(100ms);
    sim.focusWindow(31);
    queue.advance(DeeplinkOpener::kFocusSettle);
    queue.runUntilIdle();
    EXPECT_EQ(report, (DeeplinkReport{.failed = 1}));
    EXPECT_EQ(requestCount(), 0u);
    EXPECT_EQ(openAll({}), DeeplinkReport{});
}

}  // namespace
}  // namespace corvetta::testing
