#include "workspaces/deeplink_profiles.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <optional>

namespace corvetta {

namespace {

enum class Role { other, terminal, wezterm };

// One application: its macOS bundle identifier (empty for an application only Linux has), the
// desktop entry ids and window classes it goes by on Linux (Debian packages, Flatpak ids), and
// its profile.
struct ProfileRow {
    std::string_view bundleID;
    std::initializer_list<std::string_view> linuxIDs;
    Role role;
    std::string_view schemePrefix;
    std::string_view placeholder;
    std::initializer_list<std::string_view> extraPrefixes;
};

constexpr std::string_view kTerminalPlaceholder = "~/Projects/myapp (or any shell command)";

// The rows with a bundle identifier come first, in their fixed order; the Linux-only ones follow.
const ProfileRow kRows[] = {
    {"com.microsoft.VSCode",
     {"code", "code-oss", "com.visualstudio.code"},
     Role::other,
     "vscode://file/",
     "vscode://file//Users/me/Projects/myapp",
     {}},
    {"dev.zed.Zed", {"dev.zed.Zed", "zed"}, Role::other, "", "/Users/me/Projects/myapp", {}},
    {"com.todesktop.230313mzl4w4u92",
     {"cursor"},
     Role::other,
     "cursor://file/",
     "cursor://file//Users/me/Projects/myapp",
     {}},
    {"com.sublimetext",
     {"sublime_text", "com.sublimetext.three"},
     Role::other,
     "",
     "/Users/me/Projects/myapp",
     {}},
    {"com.apple.dt.Xcode", {}, Role::other, "", "/Users/me/Projects/MyApp.xcodeproj", {}},
    {"com.apple.Terminal", {}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"com.googlecode.iterm2", {}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"com.github.wez.wezterm",
     {"org.wezfurlong.wezterm", "wezterm"},
     Role::wezterm,
     "",
     kTerminalPlaceholder,
     {}},
    {"net.kovidgoyal.kitty", {"kitty"}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"com.mitchellh.ghostty", {"ghostty"}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"com.apple.finder", {}, Role::other, "file://", "file:///Users/me/Projects/myapp", {}},
    {"com.github.GitHubClient",
     {"io.github.shiftey.Desktop", "github-desktop"},
     Role::other,
     "",
     "~/Projects/myrepo",
     {}},
    {"com.torusknot.SourceTreeNotMAS", {}, Role::other, "", "~/Projects/myrepo", {}},
    {"com.canva.affinity", {}, Role::other, "", "/Users/me/Documents/design.afdesign", {}},
    {"com.tinyspeck.slackmacgap",
     {"slack", "com.slack.Slack"},
     Role::other,
     "slack://",
     "https://myteam.slack.com or slack://channel?team=T0123&id=C0123",
     {}},
    {"com.hnc.Discord",
     {"discord", "com.discordapp.Discord"},
     Role::other,
     "discord://",
     "https://discord.com/channels/123/456 or discord://discord.com/channels/123/456",
     {}},
    {"com.microsoft.teams2",
     {"teams-for-linux", "com.github.IsmaelMartinez.teams_for_linux"},
     Role::other,
     "msteams://",
     "https://teams.microsoft.com/l/meetup-join/... or msteams://...",
     {"https://teams.microsoft.com/", "https://teams.live.com/"}},
    {"us.zoom.xos",
     {"Zoom", "us.zoom.Zoom"},
     Role::other,
     "zoommtg://",
     "https://zoom.us/j/1234567890 or zoommtg://zoom.us/join?confno=1234567890",
     {}},
    {"notion.id",
     {},
     Role::other,
     "notion://",
     "https://www.notion.so/My-Page-0123 or notion://...",
     {"https://notion.so/", "https://www.notion.so/"}},
    {"com.linear",
     {},
     Role::other,
     "linear://",
     "https://linear.app/team/issue/ENG-1 or linear://...",
     {"https://linear.app/"}},
    {"com.figma.Desktop",
     {"figma-linux", "io.github.Figma_Linux.figma_linux"},
     Role::other,
     "figma://",
     "https://www.figma.com/file/abc/Design or figma://...",
     {"https://figma.com/", "https://www.figma.com/"}},
    {"net.shinyfrog.bear",
     {},
     Role::other,
     "bear://",
     "bear://x-callback-url/open-note?id=...",
     {}},
    {"md.obsidian",
     {"obsidian", "md.obsidian.Obsidian"},
     Role::other,
     "obsidian://",
     "obsidian://open?vault=MyVault&file=note",
     {}},
    // Linux only.
    {"",
     {"org.gnome.Terminal", "gnome-terminal", "gnome-terminal-server"},
     Role::terminal,
     "",
     kTerminalPlaceholder,
     {}},
    {"", {"org.kde.konsole", "konsole"}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"", {"Alacritty", "org.alacritty.Alacritty"}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"",
     {"debian-xterm", "xterm", "debian-uxterm", "uxterm"},
     Role::terminal,
     "",
     kTerminalPlaceholder,
     {}},
    {"", {"org.gnome.Console", "kgx"}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"", {"org.xfce.Terminal", "xfce4-terminal"}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"", {"foot", "terminator"}, Role::terminal, "", kTerminalPlaceholder, {}},
    {"",
     {"org.gnome.Nautilus", "nautilus", "org.kde.dolphin", "thunar", "pcmanfm"},
     Role::other,
     "file://",
     "file:///home/me/Projects/myapp",
     {}},
    {"",
     {"firefox", "firefox-esr", "org.mozilla.firefox"},
     Role::other,
     "",
     "https://example.com",
     {}},
    {"",
     {"chromium", "chromium-browser", "org.chromium.Chromium", "google-chrome"},
     Role::other,
     "",
     "https://example.com",
     {}},
};

bool sameIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

AppDeeplinkProfile profileOf(const ProfileRow& row) {
    return {std::string(row.schemePrefix), std::string(row.placeholder),
            std::vector<std::string>(row.extraPrefixes.begin(), row.extraPrefixes.end())};
}

// Built once: the rows' profiles, in the rows' order.
const std::vector<AppDeeplinkProfile>& rowProfiles() {
    static const auto profiles = [] {
        std::vector<AppDeeplinkProfile> built;
        for (const auto& row : kRows) {
            built.push_back(profileOf(row));
        }
        return built;
    }();
    return profiles;
}

// The index of the row naming the application; bundle identifiers match exactly.
std::optional<std::size_t> rowOf(std::string_view applicationID) {
    if (applicationID.empty()) {
        return std::nullopt;
    }
    for (std::size_t index = 0; index < std::size(kRows); ++index) {
        const auto& row = kRows[index];
        if (row.bundleID == applicationID ||
            std::any_of(row.linuxIDs.begin(), row.linuxIDs.end(),
                        [&](std::string_view id) { return sameIgnoringCase(id, applicationID); })) {
            return index;
        }
    }
    return std::nullopt;
}

}  // namespace

const std::vector<std::pair<std::string, AppDeeplinkProfile>>& appDeeplinkProfiles() {
    static const auto profiles = [] {
        std::vector<std::pair<std::string, AppDeeplinkProfile>> built;
        for (std::size_t index = 0; index < std::size(kRows); ++index) {
            if (!kRows[index].bundleID.empty()) {
                built.emplace_back(std::string(kRows[index].bundleID), rowProfiles()[index]);
            }
        }
        return built;
    }();
    return profiles;
}

const AppDeeplinkProfile* deeplinkProfile(std::string_view applicationID) {
    const auto row = rowOf(applicationID);
    return row ? &rowProfiles()[*row] : nullptr;
}

bool isTerminalApplication(std::string_view applicationID) {
    const auto row = rowOf(applicationID);
    return row && kRows[*row].role != Role::other;
}

bool isWezTerm(std::string_view applicationID) {
    const auto row = rowOf(applicationID);
    return row && kRows[*row].role == Role::wezterm;
}

}  // namespace corvetta
