#include "workspaces/deeplink.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "foundation/names.h"

namespace corvetta {

namespace {

// The macOS terminals first, then the usual Linux ones as their windows name them (desktop
// entry ids, else the WM_CLASS class).
constexpr std::array<std::string_view, 17> kTerminals = {
    "com.apple.Terminal",
    "com.googlecode.iterm2",
    "com.github.wez.wezterm",
    "net.kovidgoyal.kitty",
    "com.mitchellh.ghostty",
    "org.gnome.Terminal",
    "org.gnome.Console",
    "org.kde.konsole",
    "org.xfce.Terminal",
    "xfce4-terminal",
    "org.wezfurlong.wezterm",
    "kitty",
    "Alacritty",
    "XTerm",
    "UXTerm",
    "foot",
    "terminator",
};

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

}  // namespace

std::string deeplinkKey(std::string_view bundleID, int windowIndex) {
    return std::string(bundleID) + "#" + std::to_string(windowIndex);
}

std::optional<DeeplinkEntry> deeplinkEntry(std::string_view key, std::string raw) {
    const auto hash = key.rfind('#');
    if (hash == std::string_view::npos || hash == 0 || hash + 1 == key.size()) {
        return std::nullopt;
    }
    const auto digits = key.substr(hash + 1);
    int index = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    if (error != std::errc() || end != digits.data() + digits.size() || index < 0) {
        return std::nullopt;
    }
    return DeeplinkEntry{std::string(key), std::string(key.substr(0, hash)), index, std::move(raw)};
}

bool isTerminalApplication(std::string_view bundleID) {
    return std::find(kTerminals.begin(), kTerminals.end(), bundleID) != kTerminals.end();
}

DeeplinkKind classifyDeeplink(std::string_view bundleID, std::string_view raw) {
    const std::string text = trimmedName(raw);
    if (startsWith(text, "http://") || startsWith(text, "https://")) {
        return DeeplinkKind::browserURL;
    }
    const bool terminal = isTerminalApplication(bundleID);
    const bool path = startsWith(text, "file://") || startsWith(text, "/") || text == "~" ||
                      startsWith(text, "~/");
    if (path) {
        return terminal ? DeeplinkKind::terminalCwd : DeeplinkKind::filePath;
    }
    if (text.find("://") != std::string_view::npos && !terminal) {
        return DeeplinkKind::appURL;
    }
    return terminal ? DeeplinkKind::terminalCommand : DeeplinkKind::filePath;
}

}  // namespace corvetta
