// shortcut_names.h: The static shortcut names, their roles and both defaults of each.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "shortcuts/shortcut.h"

namespace corvetta {

// What pressing a named shortcut does, in broad strokes; the shortcut service picks the handler.
enum class ShortcutRole {
    // Moves the current window: a WindowDirection case name, or a display move.
    windowAction,
    // Opens a window or quits.
    command,
    // Hold-to-cycle through workspaces or spaces.
    cycle,
    // Applies one of the built-in layouts.
    layoutPreset,
    // Used by the record forms' key recorders while the user types a combination.
    recorderScratch,
};

// One static shortcut name. The library default is carried by the name itself and answers while
// the user never set the shortcut; the bridge default is what "reset all" writes back and what a
// lookup falls back to. Where the two differ both are deliberate.
struct ShortcutNameRow {
    std::string_view name;
    ShortcutRole role = ShortcutRole::windowAction;
    std::optional<Shortcut> libraryDefault;
    std::optional<Shortcut> bridgeDefault;
    // Whether the bridge addresses the name (its nameMap); the others are handled directly by the
    // shortcut service and the forms.
    bool inNameMap = false;
};

// Every static name in its fixed order, the window actions' first.
std::span<const ShortcutNameRow> shortcutNameTable();
const ShortcutNameRow* findShortcutNameRow(std::string_view name);
// The static names with that role, in table order.
std::vector<std::string> shortcutNames(ShortcutRole role);

inline constexpr std::string_view kWorkspaceShortcutPrefix = "workspace_";
inline constexpr std::string_view kSpaceShortcutPrefix = "space_";
inline constexpr std::string_view kLayoutShortcutPrefix = "layout_";

// Names of the records' own shortcuts, from the record identifier's text (the upper-case UUID the
// record stores): "workspace_<id>", "space_<id>", "layout_<id>".
std::string workspaceShortcutName(std::string_view workspaceId);
std::string spaceShortcutName(std::string_view spaceId);
std::string layoutShortcutName(std::string_view templateId);

// A name as the hot-key library knows it: the text and the default carried with it.
struct ShortcutName {
    std::string rawValue;
    std::optional<HotKeyShortcut> defaultShortcut;

    bool operator==(const ShortcutName&) const = default;
};

// The library's name for a text: a static name brings its library default, any other text (the
// records' names) has none.
ShortcutName libraryShortcutName(std::string_view name);

}  // namespace corvetta
