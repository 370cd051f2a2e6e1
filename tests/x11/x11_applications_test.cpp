#include "platform/x11/x11_applications.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/x11/x11_screens.h"
#include "platform/x11/x11_window_list.h"
#include "support/temporary_folder.h"
#include "x11_test_support.h"

namespace corvetta {
namespace {

constexpr ProcessId kSelf = 1;
constexpr std::uint32_t kEditor = 501;
constexpr std::uint32_t kTerminal = 502;

testing::VirtualDisplayOptions managedTwoMonitors() {
    testing::VirtualDisplayOptions options;
    options.monitors = {{0, 0, 1280, 800}, {1280, 0, 1024, 768}};
    options.windowManager = testing::WindowManager::openboxForTests;
    return options;
}

// Two applications under openbox: an editor with two windows and a terminal with one.
class X11ApplicationsTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto& client = fixture.client();
        editorMain = client.createClientWindow(100, 100, 400, 300, kEditor, "Editor", "main.cpp");
        editorSide = client.createClientWindow(1400, 50, 300, 200, kEditor, "Editor", "notes");
        terminal = client.createClientWindow(200, 200, 500, 350, kTerminal, "XTerm", "shell");
        client.setText(terminal, "_GTK_APPLICATION_ID", "org.example.Terminal",
                       client.atom("UTF8_STRING"));
        client.setText(editorMain, "_NET_WM_NAME", "main.cpp — Editor", client.atom("UTF8_STRING"));
        client.sync();
        ASSERT_TRUE(fixture.runUntil([&] { return windowList.onScreenWindows().size() == 3; }));
    }

    testing::X11Fixture fixture{managedTwoMonitors()};
    testing::TemporaryFolder dataDirectory;
    X11Screens screens{fixture.connection()};
    X11WindowList windowList{fixture.connection(), screens};
    X11Applications applications{
        fixture.connection(),
        {kSelf, "com.corvetta.Corvetta", "Corvetta", ActivationPolicy::accessory, false},
        {[this] { return std::vector{dataDirectory / "applications"}; },
         fixture.display().environment()}};
    xcb_window_t editorMain = 0, editorSide = 0, terminal = 0;
};

TEST_F(X11ApplicationsTest, WindowListGoesFrontToBackWithFramesInAccessibilitySpace) {
    const auto entries = windowList.onScreenWindows();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].number, terminal) << "the last mapped window is in front";
    for (const auto& entry : entries) {
        EXPECT_EQ(entry.layer, 0);
        // Decorations included: the frame is larger than the client's area.
        EXPECT_GT(entry.bounds.size.height, entry.number == terminal ? 350 : 0);
    }
    const auto main = std::ranges::find(entries, editorMain, &WindowListEntry::number);
    ASSERT_NE(main, entries.end());
    EXPECT_EQ(main->ownerPid, static_cast<ProcessId>(kEditor));
    EXPECT_EQ(main->ownerName, "Editor");
    EXPECT_EQ(main->title, "main.cpp — Editor");
    const auto terminalEntry = std::ranges::find(entries, terminal, &WindowListEntry::number);
    EXPECT_EQ(terminalEntry->title, "shell") << "WM_NAME when there is no _NET_WM_NAME";
    std::vector<WindowNumber> numbers;
    for (const auto& entry : entries) {
        numbers.push_back(entry.number);
    }
    EXPECT_EQ(windowList.windowNumbersFrontToBack(), numbers);

    // Minimized windows are not on screen, and their application is hidden once the window
    // announces it.
    EXPECT_FALSE(applications.runningApplication(kTerminal)->isHidden);
    ASSERT_TRUE(applications.hide(static_cast<ProcessId>(kTerminal)));
    ASSERT_TRUE(fixture.runUntil([&] { return windowList.onScreenWindows().size() == 2; }));
    EXPECT_EQ(windowList.windowNumbersFrontToBack().size(), 3u) << "the stacking list keeps it";
    EXPECT_TRUE(
        fixture.runUntil([&] { return applications.runningApplication(kTerminal)->isHidden; }));
}

TEST_F(X11ApplicationsTest, GroupsWindowsByProcessWithBundleIdentifiers) {
    const auto running = applications.runningApplications();
    ASSERT_EQ(running.size(), 3u);
    EXPECT_EQ(running[0].processIdentifier, kSelf);
    auto find = [&](ProcessId pid) {
        return *std::ranges::find(running, pid, &RunningApplication::processIdentifier);
    };
    EXPECT_EQ(find(kEditor).bundleIdentifier, "Editor") << "the WM_CLASS class";
    EXPECT_EQ(find(kEditor).localizedName, "Editor");
    EXPECT_EQ(find(kTerminal).bundleIdentifier, "org.example.Terminal") << "the desktop entry";
    EXPECT_EQ(applications.windowsOf(kEditor).size(), 2u);
    // The client list is read again only once the window manager announces a change of it.
    const auto before = fixture.connection().roundTrips();
    EXPECT_EQ(applications.windowsOf(kEditor).size(), 2u);
    EXPECT_EQ(fixture.connection().roundTrips(), before);
    fixture.client().createClientWindow(600, 100, 300, 200, kEditor, "Editor", "third");
    fixture.client().sync();
    EXPECT_TRUE(fixture.runUntil([&] { return applications.windowsOf(kEditor).size() == 3; }));
    EXPECT_FALSE(applications.runningApplication(999).has_value());
    EXPECT_FALSE(applications.activate(999));
    EXPECT_FALSE(applications.hide(999));
}

TEST_F(X11ApplicationsTest, ActivationRequestsAreAnnouncedOncePerApplication) {
    // Openbox focuses the window mapped last; that activation is over before the test starts.
    ASSERT_TRUE(fixture.runUntil([&] {
        auto front = applications.frontmostApplication();
        return front && front->processIdentifier == kTerminal;
    }));
    fixture.catchUp();
    std::vector<ProcessId> activated;
    auto registration =
        applications.observeDidActivateApplication([&](const RunningApplication& application) {
            activated.push_back(application.processIdentifier);
        });
    ASSERT_TRUE(applications.activate(kEditor));
    ASSERT_TRUE(fixture.runUntil([&] { return !activated.empty(); }));
    EXPECT_EQ(applications.frontmostApplication()->processIdentifier, kEditor);

    ASSERT_TRUE(applications.activate(kTerminal));
    ASSERT_TRUE(fixture.runUntil([&] { return activated.size() == 2; }));
    EXPECT_EQ(activated, (std::vector<ProcessId>{kEditor, kTerminal}));
    EXPECT_EQ(applications.frontmostApplication()->processIdentifier, kTerminal);
    EXPECT_EQ(windowList.onScreenWindows().front().number, terminal);
}

// Launches run the Exec lines of the installed entries, without a shell, on this display; desktop
// actions are found through the entry the window's WM_CLASS names (StartupWMClass). That an action
// runs is the end-to-end tests' "open_new_window".
TEST_F(X11ApplicationsTest, LaunchesAndDesktopActionsRunTheInstalledEntries) {
    const std::string client = CORVETTA_TEST_CLIENT_BINARY;
    testing::writeTestFile(dataDirectory / "applications/editor.desktop",
                           "[Desktop Entry]\nType=Application\nName=Editor\nExec=editor %F\n"
                           "StartupWMClass=Editor\nActions=new-window;broken;\n"
                           "[Desktop Action new-window]\nName=New Window\nExec=editor\n"
                           "[Desktop Action broken]\nName=Broken\nExec=editor \"\n");
    testing::writeTestFile(dataDirectory / "applications/org.example.Probe.desktop",
                           "[Desktop Entry]\nType=Application\nName=Probe\nExec=" + client +
                               " --title \"Launched; not by a shell\"\n");
    std::vector<Expected<RunningApplication, LaunchError>> launches;
    for (const char* identifier : {"org.example.Missing", "org.example.Probe"}) {
        applications.launchApplication(identifier,
                                       [&](const auto& outcome) { launches.push_back(outcome); });
    }
    EXPECT_TRUE(launches.empty()) << "never before the call returns";
    fixture.queue().runUntilIdle();
    ASSERT_EQ(launches.size(), 2u);
    EXPECT_EQ(launches[0].error().kind, LaunchError::Kind::notFound);
    ASSERT_TRUE(launches[1]);
    EXPECT_EQ(launches[1]->localizedName, "Probe");
    EXPECT_FALSE(applications.canLaunchApplication("org.example.Missing"));

    EXPECT_EQ(applications.applicationActions(kEditor),
              (std::vector<ApplicationAction>{{"new-window", "New Window"}, {"broken", "Broken"}}));
    EXPECT_TRUE(applications.applicationActions(kTerminal).empty()) << "no entry of its own";
    EXPECT_FALSE(applications.performApplicationAction(kEditor, "missing"));
    EXPECT_FALSE(applications.performApplicationAction(kEditor, "broken"));
    EXPECT_FALSE(applications.performApplicationAction(kTerminal, "new-window"));
    EXPECT_TRUE(fixture.runUntil([&] {
        return std::ranges::any_of(windowList.onScreenWindows(), [](const WindowListEntry& entry) {
            return entry.title == "Launched; not by a shell";
        });
    }));
}

}  // namespace
}  // namespace corvetta
