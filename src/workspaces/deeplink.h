// deeplink.h: A saved window's deeplink: its key in a workspace and what kind of text it holds.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvetta {

enum class DeeplinkKind { browserURL, appURL, terminalCwd, terminalCommand, filePath };

// The case's name: "browserURL", "terminalCwd"...
std::string_view deeplinkKindName(DeeplinkKind kind);

// One deeplink of a workspace: which window of which application, and the text as entered.
struct DeeplinkEntry {
    std::string key;
    std::string bundleID;
    int windowIndex = 0;
    std::string raw;
};

// "<bundle identifier>#<window index>": bundle identifiers never hold "#", so the key splits
// back unambiguously at its last "#".
std::string deeplinkKey(std::string_view bundleID, int windowIndex);
// No value for a key of another form (a hand-edited or damaged file).
std::optional<DeeplinkEntry> deeplinkEntry(std::string_view key, std::string raw);

// A link that begins with one of the application's extra prefixes (its service's web address) is
// an app link; other web addresses are browser links, other "scheme://" texts app links, paths
// files (directories for a terminal), and anything else a terminal is given is a command to type.
DeeplinkKind classifyDeeplink(std::string_view bundleID, std::string_view raw);

}  // namespace corvetta
