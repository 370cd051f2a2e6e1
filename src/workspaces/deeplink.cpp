#include "workspaces/deeplink.h"

#include <charconv>

#include "foundation/names.h"
#include "workspaces/deeplink_profiles.h"

namespace corvetta {

namespace {

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

constexpr std::string_view kKindNames[] = {"browserURL", "appURL", "terminalCwd", "terminalCommand",
                                           "filePath"};

}  // namespace

std::string_view deeplinkKindName(DeeplinkKind kind) {
    return kKindNames[static_cast<std::size_t>(kind)];
}

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

DeeplinkKind classifyDeeplink(std::string_view bundleID, std::string_view raw) {
    const std::string text = trimmedName(raw);
    if (const auto* profile = deeplinkProfile(bundleID)) {
        for (const auto& prefix : profile->extraPrefixes) {
            if (startsWith(text, prefix)) {
                return DeeplinkKind::appURL;
            }
        }
    }
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
