#include "automation_methods_fixture.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;
using testing_support::AutomationMethodsTest;

std::vector<std::string> windowTitles(const Json& listed) {
    std::vector<std::string> titles;
    for (const auto& window : listed["windows"]) {
        titles.push_back(window["title"]);
    }
    return titles;
}

TEST_F(AutomationMethodsTest, ApplicationsLaunchActivateAndClose) {
    const auto launched = send("open_app", {{"bundle_id", "com.example.browser"}});
    EXPECT_TRUE(launched->empty());
    queue.runUntilIdle();
    ASSERT_EQ(launched->size(), 1u);
    EXPECT_EQ(*launched->front(),
              (Json{{"bundleID", "com.example.browser"}, {"appName", "browser"}}));
    EXPECT_EQ(result("get_frontmost_window")["appName"], "browser");

    EXPECT_EQ(result("activate_app", {{"bundle_id", "com.example.terminal"}}),
              (Json{{"bundleID", "com.example.terminal"}, {"appName", "terminal"}}));
    EXPECT_EQ(result("get_frontmost_window")["title"], "zsh");

    EXPECT_EQ(result("close_app_windows", {{"bundle_id", "com.example.editor"}}),
              (Json{{"bundleID", "com.example.editor"},
                    {"appName", "editor"},
                    {"windowCount", 2},
                    {"closedCount", 2}}));
    EXPECT_EQ(windowTitles(result("list_windows")), (std::vector<std::string>{"zsh", ""}));
}

TEST_F(AutomationMethodsTest, DiscoveryPrefersATitleThenCommandNThenANewPrefix) {
    // The editor's "New Window" wins over the earlier "New Tab"; notes has only a disabled
    // "New Window", so its ⌘N item wins over "New Note".
    EXPECT_EQ(result("discover_new_window_shortcut", {{"bundle_id", "com.example.editor"}}),
              (Json{{"bundleID", "com.example.editor"},
                    {"menuName", "File"},
                    {"itemTitle", "New Window"},
                    {"shortcut", "⇧⌘N"}}));
    EXPECT_EQ(result("discover_new_window_shortcut", {{"bundle_id", "com.example.notes"}}),
              (Json{{"bundleID", "com.example.notes"},
                    {"menuName", "File"},
                    {"itemTitle", "Create"},
                    {"shortcut", "⌘N"}}));
}

TEST_F(AutomationMethodsTest, OpenNewWindowPressesTheItemAndWaitsForTheWindow) {
    rig->sim.activate(kTerminal);
    EXPECT_EQ(result("open_new_window", {{"bundle_id", "com.example.editor"}}),
              (Json{{"bundleID", "com.example.editor"}, {"windowCount", 3}}));
    // In front, so the next snap acts on it.
    EXPECT_EQ(result("get_frontmost_window")["title"], "Untitled");

    auto slow = setup();
    slow.applications[0].menus[0].items[1].opensAfter = 1200ms;
    startMethods(std::move(slow));
    const auto replies = send("open_new_window", {{"bundle_id", "com.example.editor"}});
    queue.advance(1100ms);
    EXPECT_TRUE(replies->empty());
    queue.advance(100ms);
    ASSERT_EQ(replies->size(), 1u);
    EXPECT_EQ((*replies->front())["windowCount"], 3);
}

TEST_F(AutomationMethodsTest, OpenNewWindowGivesUpAfterFiveSeconds) {
    const auto replies = send("open_new_window", {{"bundle_id", "com.example.notes"}});
    queue.advance(4900ms);
    EXPECT_TRUE(replies->empty());
    queue.advance(100ms);
    ASSERT_EQ(replies->size(), 1u);
    EXPECT_EQ(replies->front().error(), "window did not appear within 5s");
    EXPECT_EQ(queue.pendingCount(), 0u);
}

}  // namespace
}  // namespace corvetta
