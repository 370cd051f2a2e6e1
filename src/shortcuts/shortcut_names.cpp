#include "shortcuts/shortcut_names.h"

#include <algorithm>
#include <array>

#include "windowing/window_action_rows.h"

namespace corvetta {

namespace {

constexpr std::uint64_t kControlOption = ModifierFlag::kControl | ModifierFlag::kOption;

// macOS virtual key codes (ANSI layout) of the rows that are no window actions.
namespace Key {
constexpr std::int64_t s = 1, q = 12, l = 37, n = 45;
}

constexpr Shortcut controlOption(std::int64_t keyCode) {
    return {keyCode, kControlOption};
}

// A row whose two defaults agree; the bridge addresses it.
constexpr ShortcutNameRow both(std::string_view name, ShortcutRole role,
                               std::optional<Shortcut> shortcut) {
    return {name, role, shortcut, shortcut, true};
}

// A row the bridge does not know: only the library default.
constexpr ShortcutNameRow libraryOnly(std::string_view name, ShortcutRole role,
                                      std::optional<Shortcut> shortcut) {
    return {name, role, shortcut, std::nullopt, false};
}

using enum ShortcutRole;

// Every name after the window actions'.
constexpr std::array kOtherRows = std::to_array<ShortcutNameRow>({
    both("saveWorkspace", command, controlOption(Key::s)),
    // Shift in the library default only: a fresh installation answers Control+Option+Shift+Q,
    // "reset all" gives Control+Option+Q.
    {"quitApp", command, Shortcut{Key::q, kControlOption | ModifierFlag::kShift},
     controlOption(Key::q), true},
    libraryOnly("newLayout", command, controlOption(Key::l)),
    libraryOnly("addSpace", command, controlOption(Key::n)),
    libraryOnly("cycleWorkspaces", cycle, std::nullopt),
    libraryOnly("cycleSpaces", cycle, std::nullopt),
    libraryOnly("commandPalette", command, std::nullopt),
    both("applyLayoutHalves", layoutPreset, std::nullopt),
    both("applyLayoutThirds", layoutPreset, std::nullopt),
    both("applyLayoutFourths", layoutPreset, std::nullopt),
    both("applyLayoutMainLeft", layoutPreset, std::nullopt),
    both("applyLayoutMainRight", layoutPreset, std::nullopt),
    both("applyLayoutFull", layoutPreset, std::nullopt),
    libraryOnly("temp_workspace_shortcut", recorderScratch, std::nullopt),
    libraryOnly("temp_layout_shortcut", recorderScratch, std::nullopt),
});

// The window actions first, named and bound as their table says, in the shortcut list's order.
constexpr auto makeTable() {
    std::array<ShortcutNameRow, kKeyedWindowActionRows.size() + kOtherRows.size()> table{};
    std::size_t next = 0;
    for (const auto& action : kKeyedWindowActionRows) {
        std::optional<Shortcut> keys;
        if (action.defaultKeys) {
            keys = Shortcut{action.defaultKeys->keyCode, action.defaultKeys->modifiers};
        }
        table.at(next++) = both(action.keyName, windowAction, keys);
    }
    for (const auto& row : kOtherRows) {
        table.at(next++) = row;
    }
    return table;
}

constexpr auto kTable = makeTable();

std::string prefixed(std::string_view prefix, std::string_view identifier) {
    std::string name(prefix);
    name += identifier;
    return name;
}

}  // namespace

std::span<const ShortcutNameRow> shortcutNameTable() {
    return kTable;
}

const ShortcutNameRow* findShortcutNameRow(std::string_view name) {
    const auto found = std::find_if(kTable.begin(), kTable.end(),
                                    [&](const ShortcutNameRow& row) { return row.name == name; });
    return found == kTable.end() ? nullptr : &*found;
}

std::vector<std::string> shortcutNames(ShortcutRole role) {
    std::vector<std::string> names;
    for (const auto& row : kTable) {
        if (row.role == role) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

std::string workspaceShortcutName(std::string_view workspaceId) {
    return prefixed(kWorkspaceShortcutPrefix, workspaceId);
}

std::string spaceShortcutName(std::string_view spaceId) {
    return prefixed(kSpaceShortcutPrefix, spaceId);
}

std::string layoutShortcutName(std::string_view templateId) {
    return prefixed(kLayoutShortcutPrefix, templateId);
}

ShortcutName libraryShortcutName(std::string_view name) {
    ShortcutName result{std::string(name), std::nullopt};
    if (const auto* row = findShortcutNameRow(name); row != nullptr && row->libraryDefault) {
        result.defaultShortcut = ShortcutConverter::toHotKeyShortcut(*row->libraryDefault);
    }
    return result;
}

}  // namespace corvetta
