#include "workspaces/deeplink.h"

#include <gtest/gtest.h>

#include "workspaces/deeplink_profiles.h"

namespace corvetta {
namespace {

TEST(Deeplink, KeysSplitBackIntoApplicationAndWindow) {
    const auto key = deeplinkKey("com.microsoft.VSCode", 2);
    EXPECT_EQ(key, "com.microsoft.VSCode#2");
    const auto entry = deeplinkEntry(key, "vscode://file//src");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->bundleID, "com.microsoft.VSCode");
    EXPECT_EQ(entry->windowIndex, 2);
    for (const char* damaged : {"", "#1", "app#", "app#-1", "app#1x", "app"}) {
        EXPECT_FALSE(deeplinkEntry(damaged, "x").has_value()) << damaged;
    }
}

TEST(Deeplink, ClassifiesByTextAndApplication) {
    struct Case {
        const char* bundle;
        const char* raw;
        DeeplinkKind kind;
    };
    const Case cases[] = {
        {"com.google.Chrome", "https://example.com", DeeplinkKind::browserURL},
        {"com.apple.Terminal", "http://localhost:3000", DeeplinkKind::browserURL},
        {"notion.id", "notion://page/1", DeeplinkKind::appURL},
        {"com.apple.finder", "file:///Users/me", DeeplinkKind::filePath},
        {"dev.zed.Zed", "~/Projects/app", DeeplinkKind::filePath},
        {"com.apple.Terminal", " ~/Projects/app ", DeeplinkKind::terminalCwd},
        {"org.gnome.Terminal", "/srv", DeeplinkKind::terminalCwd},
        {"com.apple.Terminal", "npm run dev", DeeplinkKind::terminalCommand},
        {"XTerm", "ssh host://x", DeeplinkKind::terminalCommand},
        // A service's web address belongs to its app; other web addresses stay browser links.
        {"notion.id", "https://www.notion.so/Page-1", DeeplinkKind::appURL},
        {"notion.id", "https://notion.so/Page-1", DeeplinkKind::appURL},
        {"com.figma.Desktop", "https://figma.com/file/x", DeeplinkKind::appURL},
        {"com.linear", "https://linear.app/team/issue/ENG-1", DeeplinkKind::appURL},
        {"com.microsoft.teams2", "https://teams.microsoft.com/l/meetup", DeeplinkKind::appURL},
        {"notion.id", "https://example.com/notion.so/", DeeplinkKind::browserURL},
        {"com.tinyspeck.slackmacgap", "https://myteam.slack.com", DeeplinkKind::browserURL},
        // Linux applications by desktop id or window class.
        {"debian-xterm", "~", DeeplinkKind::terminalCwd},
        {"org.wezfurlong.wezterm", "htop", DeeplinkKind::terminalCommand},
        {"Alacritty", "file:///srv", DeeplinkKind::terminalCwd},
        {"code", "/home/me/app", DeeplinkKind::filePath},
        {"firefox-esr", "notes.txt", DeeplinkKind::filePath},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(classifyDeeplink(c.bundle, c.raw), c.kind) << c.bundle << " " << c.raw;
    }
}

TEST(Deeplink, ProfilesAreTheMacApplicationsInOrderAndFoundByLinuxIdsToo) {
    const auto& profiles = appDeeplinkProfiles();
    ASSERT_EQ(profiles.size(), 23u);
    EXPECT_EQ(profiles.front().first, "com.microsoft.VSCode");
    EXPECT_EQ(profiles[10].first, "com.apple.finder");
    EXPECT_EQ(profiles.back().first, "md.obsidian");
    const struct {
        const char* id;
        const char* sameAs;
    } aliases[] = {{"code", "com.microsoft.VSCode"},
                   {"org.wezfurlong.wezterm", "com.github.wez.wezterm"},
                   {"Slack", "com.tinyspeck.slackmacgap"},
                   {"md.obsidian.Obsidian", "md.obsidian"}};
    for (const auto& alias : aliases) {
        EXPECT_EQ(deeplinkProfile(alias.id), deeplinkProfile(alias.sameAs)) << alias.id;
    }
    EXPECT_EQ(deeplinkProfile("org.gnome.Nautilus")->schemePrefix, "file://");
    EXPECT_EQ(deeplinkProfile("com.example.unknown"), nullptr);
    EXPECT_EQ(deeplinkProfile(""), nullptr);
    for (const char* terminal :
         {"org.gnome.Terminal", "org.kde.konsole", "kitty", "XTerm", "com.mitchellh.ghostty"}) {
        EXPECT_TRUE(isTerminalApplication(terminal)) << terminal;
    }
    EXPECT_FALSE(isTerminalApplication("com.microsoft.VSCode"));
}

}  // namespace
}  // namespace corvetta
