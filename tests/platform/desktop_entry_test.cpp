// Desktop entries: the decoder, the Exec line's quoting and field codes (with links and files to
// open), terminals' directory options, and which installed entry a running application is
// matched to.

#include "platform/xdg/desktop_entry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/xdg/desktop_entries.h"
#include "platform/xdg/terminal_launch.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(DesktopEntry, ReadsTheMainGroupAndTheListedActions) {
    const auto entry = parseDesktopEntry(
        "# comment\n"
        "[Desktop Entry]\r\n"
        "Type=Application\n"
        "Name = Text\\sEditor\n"
        "Name[de]=Texteditor\n"
        "Name=Second name is ignored\n"
        "Icon=editor\n"
        "Exec=editor %U\n"
        "StartupWMClass=Editor\n"
        "Actions=new-window;unlisted-group;private\\;odd;\n"
        "\n"
        "[Desktop Action new-window]\n"
        "Name=New Window\n"
        "Exec=editor --new-window\n"
        "[Desktop Action not-listed]\n"
        "Name=Never\n"
        "[Desktop Action private;odd]\n"
        "Name=Odd\n");
    ASSERT_TRUE(entry) << entry.error();
    EXPECT_EQ(entry->type, "Application");
    EXPECT_EQ(entry->name, "Text Editor");
    EXPECT_EQ(entry->exec, "editor %U");
    EXPECT_EQ(entry->startupWMClass, "Editor");
    EXPECT_FALSE(entry->hidden);
    ASSERT_EQ(entry->actions.size(), 2u);
    EXPECT_EQ(entry->actions[0].identifier, "new-window");
    EXPECT_EQ(entry->actions[0].name, "New Window");
    EXPECT_EQ(entry->actions[0].exec, "editor --new-window");
    EXPECT_EQ(entry->actions[1].identifier, "private;odd");
}

TEST(DesktopEntry, RefusesWhatIsNoDesktopEntryNamingTheLine) {
    const struct {
        std::string text;
        const char* refusal;
    } cases[] = {
        {"[Other]\nName=x\n", "line 1: the first group must be [Desktop Entry]"},
        {"Name=x\n[Desktop Entry]\n", "line 1: a key before the [Desktop Entry] group"},
        {"[Desktop Entry]\nName x\n", "line 2: expected Key=Value"},
        {"[Desktop Entry]\n=x\n", "line 2: expected Key=Value"},
        {"[Desktop Entry\n", "line 1: a group header must be [Name]"},
        {"# only a comment\n", "no [Desktop Entry] group"},
        {"[Desktop Entry]\n" + std::string(kMaxDesktopEntrySize, '#'), "larger than"},
    };
    for (const auto& c : cases) {
        const auto entry = parseDesktopEntry(c.text);
        ASSERT_FALSE(entry) << c.refusal;
        EXPECT_THAT(entry.error(), HasSubstr(c.refusal));
    }
}

TEST(DesktopEntry, ExecLinesSplitQuoteAndExpandTheirFieldCodes) {
    const ExecContext context{"editor-icon", "Editor", "/apps/editor.desktop"};
    const struct {
        const char* exec;
        std::vector<std::string> arguments;
    } cases[] = {
        {"editor", {"editor"}},
        {"editor  --new-window   %U", {"editor", "--new-window"}},
        {"editor %f %F %u --x=%u %d %D %n %N %v %m", {"editor", "--x="}},
        {"editor %i %c %k 100%%",
         {"editor", "--icon", "editor-icon", "Editor", "/apps/editor.desktop", "100%"}},
        {R"("/opt/My Editor/run" "a \"quoted\" \$word" "" x)",
         {"/opt/My Editor/run", "a \"quoted\" $word", "", "x"}},
        // The string escape comes first: \\\\ in the file is one backslash in the argument.
        {R"(sh -c "echo \\\\ done")", {"sh", "-c", "echo \\ done"}},
    };
    for (const auto& c : cases) {
        const auto arguments = parseExecLine(c.exec, context);
        ASSERT_TRUE(arguments) << c.exec << ": " << arguments.error();
        EXPECT_EQ(*arguments, c.arguments) << c.exec;
    }
    EXPECT_THAT(*parseExecLine("editor %i", {}), ElementsAre("editor")) << "no icon, no --icon";
    for (const char* bad : {"editor \"open", "editor %z", "editor %", "%U", "", "\"\" x"}) {
        EXPECT_FALSE(parseExecLine(bad, context)) << bad;
    }
}

TEST(DesktopEntry, ExecLinesTakeLinksAndFilesAsTheirFieldCodesSay) {
    const std::vector<std::string> both = {"file:///home/me/My%20Notes/a.md", "/srv/b.txt"};
    const std::string filesOnly = "' is not a file, and the application takes files only";
    const struct {
        const char* exec;
        std::vector<std::string> targets;
        std::vector<std::string> arguments;
        std::string error;
    } cases[] = {
        {"editor %u", {"https://example.com/?q=1"}, {"editor", "https://example.com/?q=1"}, ""},
        {"editor --open=%f", both, {"editor", "--open=/home/me/My Notes/a.md"}, ""},
        {"editor %F --wait",
         both,
         {"editor", "/home/me/My Notes/a.md", "/srv/b.txt", "--wait"},
         ""},
        {"editor %U", both, {"editor", both[0], both[1]}, ""},
        {"editor %f", {"file://localhost/etc/hosts"}, {"editor", "/etc/hosts"}, ""},
        {"editor %f", {"https://example.com"}, {}, "'https://example.com" + filesOnly},
        {"editor %f", {"file://server/share"}, {}, "'file://server/share" + filesOnly},
        {"editor --new-window", {"/srv"}, {}, "Exec takes no files or links"},
    };
    for (const auto& c : cases) {
        const auto arguments = parseExecLine(c.exec, {"", "", "", c.targets});
        if (c.error.empty()) {
            ASSERT_TRUE(arguments) << c.exec << ": " << arguments.error();
            EXPECT_EQ(*arguments, c.arguments) << c.exec;
        } else {
            ASSERT_FALSE(arguments) << c.exec;
            EXPECT_EQ(arguments.error(), c.error) << c.exec;
        }
    }
}

TEST(TerminalLaunch, EachTerminalOpensInTheDirectoryThroughItsOwnOption) {
    const struct {
        std::vector<std::string> exec;
        TerminalLaunch launch;
    } cases[] = {
        {{"gnome-terminal"}, {{"gnome-terminal", "--working-directory=/a b"}, ""}},
        {{"/usr/bin/konsole"}, {{"/usr/bin/konsole", "--workdir", "/a b"}, ""}},
        {{"kitty"}, {{"kitty", "--directory", "/a b"}, ""}},
        {{"wezterm", "start", "--cwd", "."}, {{"wezterm", "start", "--cwd", "/a b"}, ""}},
        {{"alacritty"}, {{"alacritty", "--working-directory", "/a b"}, ""}},
        {{"xterm", "-ls"}, {{"xterm", "-ls"}, "/a b"}},
        {{"flatpak", "run", "org.example.Term"}, {{"flatpak", "run", "org.example.Term"}, "/a b"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(terminalLaunchInDirectory(c.exec, "/a b"), c.launch) << c.exec.front();
    }
}

TEST(DesktopEntries, ARunningApplicationIsMatchedByTheFirstRuleThatFindsAnEntry) {
    testing::TemporaryFolder root;
    const auto user = root / "home/applications";
    const auto system = root / "system/applications";
    auto write = [](const std::filesystem::path& path, const std::string& keys) {
        testing::writeTestFile(path, "[Desktop Entry]\nType=Application\n" + keys);
    };
    write(system / "org.example.Editor.desktop", "Name=Editor\nExec=editor\n");
    write(system / "classy.desktop", "Name=By class\nExec=other\nStartupWMClass=Gimp-2.10\n");
    write(system / "xterm.desktop", "Name=XTerm\nExec=xterm\n");
    write(system / "kde/run-it.desktop", "Name=By program\nTryExec=/usr/bin/runner\nExec=x\n");
    write(system / "broken.desktop", "Name=Broken\nExec=broken \"\n");
    // The user's own entry hides the installed one, and a hidden one deletes it.
    write(user / "xterm.desktop", "Name=My XTerm\nExec=xterm -ls\n");
    write(user / "classy.desktop", "Hidden=true\n");
    testing::writeTestFile(system / "link.desktop", "[Desktop Entry]\nType=Link\nName=Link\n");

    const DesktopEntries entries({user, system});
    const struct {
        const char* name;
        ApplicationTraits traits;
        const char* id;  // nullptr: none
    } cases[] = {
        {"application id", {"org.example.Editor", "", "", {}}, "org.example.Editor"},
        {"id by class, any case", {"", "xterm-256", "XTERM", {}}, "xterm"},
        {"hidden entry", {"", "gimp", "Gimp-2.10", {}}, nullptr},
        {"program of TryExec", {"", "", "", {"python3", "runner"}}, "kde-run-it"},
        {"program of Exec", {"", "", "", {"editor"}}, "org.example.Editor"},
        {"nothing matches", {"org.example.Other", "other", "Other", {"ls"}}, nullptr},
    };
    for (const auto& c : cases) {
        const auto found = entries.forApplication(c.traits);
        if (!c.id) {
            EXPECT_FALSE(found) << c.name;
            continue;
        }
        ASSERT_TRUE(found) << c.name;
        EXPECT_EQ(found->id, c.id) << c.name;
    }
    EXPECT_EQ(entries.byId("xterm")->entry.name, "My XTerm");
    EXPECT_FALSE(entries.byId("classy"));
    EXPECT_FALSE(entries.byId("link"));
    EXPECT_FALSE(DesktopEntries({root / "missing"}).byId("xterm"));

    // StartupWMClass goes before an ID that is the class name.
    write(system / "Terminal.desktop", "Name=By id\nExec=t\n");
    write(system / "zz.desktop", "Name=By startup class\nExec=t\nStartupWMClass=Terminal\n");
    EXPECT_EQ(entries.forApplication({"", "", "Terminal", {}})->id, "zz");
}

// Each change comes after a lookup that may keep what it read: the stamps are set back first, to
// times no write can share.
TEST(DesktopEntries, ChangesMadeAfterALookupAreSeenByTheNext) {
    testing::TemporaryFolder root;
    const auto user = root / "user/applications";
    const auto system = root / "system/applications";
    std::vector<std::filesystem::path> folders = {user, system};
    const DesktopEntries entries([&] { return folders; });
    auto write = [](const std::filesystem::path& path, const std::string& exec) {
        testing::writeTestFile(path, "[Desktop Entry]\nType=Application\nName=N\nExec=" + exec);
    };
    int hoursAgo = 100;
    auto settle = [&] {
        const auto then =
            std::filesystem::file_time_type::clock::now() - std::chrono::hours(hoursAgo--);
        for (const auto& item : std::filesystem::recursive_directory_iterator(root.path())) {
            std::filesystem::last_write_time(item.path(), then);
        }
    };
    write(system / "editor.desktop", "editor -a");
    write(system / "kde/term.desktop", "term");
    const struct {
        const char* change;
        std::function<void()> make;
        const char* id;
        const char* exec;  // nullptr: not found
    } steps[] = {
        {"added", [&] { write(system / "viewer.desktop", "viewer"); }, "viewer", "viewer"},
        {"added to a subfolder", [&] { write(system / "kde/konsole.desktop", "konsole"); },
         "kde-konsole", "konsole"},
        {"edited in place, same size", [&] { write(system / "editor.desktop", "editor -b"); },
         "editor", "editor -b"},
        {"removed", [&] { std::filesystem::remove(system / "viewer.desktop"); }, "viewer", nullptr},
        {"a folder that was missing appears", [&] { write(user / "editor.desktop", "my-editor"); },
         "editor", "my-editor"},
        {"the environment names other folders", [&] { folders = {system}; }, "editor", "editor -b"},
    };
    for (const auto& step : steps) {
        settle();
        ASSERT_TRUE(entries.byId("kde-term")) << step.change;
        step.make();
        const auto found = entries.byId(step.id);
        ASSERT_EQ(found.has_value(), step.exec != nullptr) << step.change;
        if (found) {
            EXPECT_EQ(found->entry.exec, step.exec) << step.change;
        }
    }
}

}  // namespace
}  // namespace corvetta
