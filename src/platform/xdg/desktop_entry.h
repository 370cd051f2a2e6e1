// desktop_entry.h: Reads a freedesktop desktop entry (a ".desktop" file) and its actions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/expected.h"

namespace corvetta {

// A "[Desktop Action <id>]" group the entry lists in its "Actions" key: something the application
// offers beside starting, such as "new-window".
struct DesktopAction {
    std::string identifier;
    std::string name;
    std::string exec;
};

// The keys of the "[Desktop Entry]" group a launcher needs, unlocalized, escapes resolved.
struct DesktopEntry {
    std::string type;
    std::string name;
    std::string icon;
    std::string exec;
    std::string tryExec;
    std::string startupWMClass;
    // "Hidden=true": the entry counts as deleted.
    bool hidden = false;
    // Listed in "Actions" and defined by a group, in the order listed.
    std::vector<DesktopAction> actions;
};

// The largest file read as a desktop entry; real ones are a few kilobytes.
inline constexpr std::size_t kMaxDesktopEntrySize = 256 * 1024;

// Lines are comments (#), blank, group headers ("[Name]") or "Key=Value" (spaces around "=" are
// allowed); localized keys ("Name[de]") are skipped, and a key repeated in a group keeps its first
// value. Fails, naming the line, when the text is larger than kMaxDesktopEntrySize, when anything
// but comments comes before the "[Desktop Entry]" group, or when a line is none of these.
Expected<DesktopEntry, std::string> parseDesktopEntry(std::string_view text);

// What an Exec key's field codes expand to.
struct ExecContext {
    std::string icon;
    // The entry's name (%c).
    std::string name;
    // The entry's file (%k).
    std::string location;
    // What to open: links, or absolute paths. %u is the first as given, %U all of them; %f the
    // first as a path and %F all, a "file://" link turned into its path.
    std::vector<std::string> targets{};
};

// An Exec value split into the program and its arguments, as freedesktop.org desktop entries
// quote them: arguments are separated by spaces; a double-quoted argument may hold spaces and
// escapes ", `, $ and \ with a backslash. Field codes: %f %F %u %U take the context's targets,
// and are dropped without any (an argument made of one alone vanishes); %i becomes "--icon" and
// the icon (nothing without one), %c the name, %k the location, %% a percent sign; the deprecated
// %d %D %n %N %v %m are dropped. Fails on an unterminated quote, an unknown field code, no
// program, targets where the Exec takes none, and a link that is not a file where it takes files.
Expected<std::vector<std::string>, std::string> parseExecLine(std::string_view exec,
                                                              const ExecContext& context);

}  // namespace corvetta
