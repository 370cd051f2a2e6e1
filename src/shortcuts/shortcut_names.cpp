#include "shortcuts/shortcut_names.h"

#include <algorithm>

namespace corvetta {

namespace {

constexpr std::uint64_t kControlOption = ModifierFlag::kControl | ModifierFlag::kOption;

// macOS virtual key codes (ANSI layout).
namespace Key {
constexpr std::int64_t s = 1, d = 2, f = 3, g = 5, q = 12, e = 14, r = 15, t = 17, u = 32, i = 34,
                       returnKey = 36, l = 37, j = 38, k = 40, n = 45, leftArrow = 123,
                       rightArrow = 124, downArrow = 125, upArrow = 126;
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

constexpr std::array<ShortcutNameRow, kStaticShortcutNameCount> kTable{{
    both("leftHalf", windowAction, controlOption(Key::leftArrow)),
    both("rightHalf", windowAction, controlOption(Key::rightArrow)),
    both("topHalf", windowAction, controlOption(Key::upArrow)),
    both("bottomHalf", windowAction, controlOption(Key::downArrow)),
    both("topLeftQuarter", windowAction, controlOption(Key::u)),
    both("topRightQuarter", windowAction, controlOption(Key::i)),
    both("bottomLeftQuarter", windowAction, controlOption(Key::j)),
    both("bottomRightQuarter", windowAction, controlOption(Key::k)),
    both("leftThird", windowAction, controlOption(Key::d)),
    both("centerThird", windowAction, controlOption(Key::f)),
    both("rightThird", windowAction, controlOption(Key::g)),
    both("leftTwoThirds", windowAction, controlOption(Key::e)),
    both("centerTwoThirds", windowAction, controlOption(Key::r)),
    both("rightTwoThirds", windowAction, controlOption(Key::t)),
    both("topThird", windowAction, std::nullopt),
    both("centerVerticalThird", windowAction, std::nullopt),
    both("bottomThird", windowAction, std::nullopt),
    both("fullscreen", windowAction, controlOption(Key::returnKey)),
    both("center", windowAction, std::nullopt),
    both("moveToNextDisplay", windowAction,
         Shortcut{Key::rightArrow, kControlOption | ModifierFlag::kCommand}),
    both("moveToPreviousDisplay", windowAction,
         Shortcut{Key::leftArrow, kControlOption | ModifierFlag::kCommand}),
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
}};

std::string prefixed(std::string_view prefix, std::string_view identifier) {
    std::string name(prefix);
    name += identifier;
    return name;
}

}  // namespace

const std::array<ShortcutNameRow, kStaticShortcutNameCount>& shortcutNameTable() {
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
