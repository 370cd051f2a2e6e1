// window_action_rows.h: The window action table as records for menus, shortcuts, automation.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "windowing/window_direction.h"

namespace corvetta {

// The menu's groups, in the order the menu and the shortcut list show them.
enum class ActionGroup : std::uint8_t { halves, quarters, thirds, other };

enum class DisplayMove : std::uint8_t { next, previous };

// A default combination: a macOS virtual key code and the event modifier flags.
struct ActionKeys {
    std::int64_t keyCode = 0;
    std::uint64_t modifiers = 0;

    bool operator==(const ActionKeys&) const = default;
};

struct WindowActionRow {
    // The case name: a direction's raw value ("maximize") or a display move's
    // ("moveToNextDisplay").
    std::string_view name;
    // The placement; none for a display move.
    std::optional<WindowDirection::Case> direction;
    std::optional<DisplayMove> displayMove;
    // The name shortcuts, the menu and stored positions use ("fullscreen" for maximize); empty for
    // an action reached only by its case name.
    std::string_view keyName;
    std::optional<PositionType> position;
    // Offered by the socket's "snap_window".
    bool bySocket = false;
    // Where the menu shows it, with a key name only.
    ActionGroup group = ActionGroup::other;
    int slot = 0;
    std::string_view title;
    // The delegate command the menu runs ("snapLeft").
    std::string_view command;
    std::optional<ActionKeys> defaultKeys;
};

namespace window_action_detail {

constexpr WindowActionRow directionRow(std::string_view name, WindowDirection::Case direction) {
    WindowActionRow row;
    row.name = name;
    row.direction = direction;
    return row;
}

// A row the menu shows and a shortcut can bind.
constexpr WindowActionRow keyedRow(WindowActionRow row, std::string_view keyName, ActionGroup group,
                                   int slot, std::string_view title, std::string_view command,
                                   std::int64_t keyCode, std::uint64_t modifiers) {
    row.keyName = keyName;
    row.group = group;
    row.slot = slot;
    row.title = title;
    row.command = command;
    if (keyCode != action_keys::none) {
        row.defaultKeys = ActionKeys{keyCode, modifiers};
    }
    return row;
}

constexpr WindowActionRow storedRow(WindowActionRow row, PositionType position, bool bySocket) {
    row.position = position;
    row.bySocket = bySocket;
    return row;
}

constexpr WindowActionRow displayMoveRow(std::string_view name, DisplayMove move) {
    WindowActionRow row;
    row.name = name;
    row.displayMove = move;
    return row;
}

#define CORVETTA_DIRECTION_ROW(direction_) \
    directionRow(#direction_, WindowDirection::Case::direction_),
#define CORVETTA_STORED_ROW(direction_, position_, rank_, group_, slot_, title_, command_, key_, \
                            modifiers_, bySocket_)                                               \
    storedRow(keyedRow(directionRow(#direction_, WindowDirection::Case::direction_), #position_, \
                       ActionGroup::group_, slot_, title_, command_, action_keys::key_,          \
                       action_keys::modifiers_),                                                 \
              PositionType::position_, bySocket_),
#define CORVETTA_DISPLAY_MOVE_ROW(name_, move_, group_, slot_, title_, command_, key_, modifiers_) \
    keyedRow(displayMoveRow(#name_, DisplayMove::move_), #name_, ActionGroup::group_, slot_,       \
             title_, command_, action_keys::key_, action_keys::modifiers_),

inline constexpr std::array kRows = {CORVETTA_WINDOW_ACTIONS(
    CORVETTA_DIRECTION_ROW, CORVETTA_STORED_ROW, CORVETTA_DISPLAY_MOVE_ROW)};

#undef CORVETTA_DIRECTION_ROW
#undef CORVETTA_STORED_ROW
#undef CORVETTA_DISPLAY_MOVE_ROW

constexpr std::size_t keyedCount() {
    return static_cast<std::size_t>(std::count_if(
        kRows.begin(), kRows.end(), [](const auto& row) { return !row.keyName.empty(); }));
}

constexpr auto keyedInListOrder() {
    std::array<WindowActionRow, keyedCount()> keyed{};
    std::size_t next = 0;
    for (const auto group :
         {ActionGroup::halves, ActionGroup::quarters, ActionGroup::thirds, ActionGroup::other}) {
        for (const auto& row : kRows) {
            if (!row.keyName.empty() && row.group == group) {
                keyed.at(next++) = row;
            }
        }
    }
    return keyed;
}

// Each group's slots number its rows 0, 1, ... without a gap or a repeat.
constexpr bool slotsNumberEachGroup() {
    for (const auto& row : kRows) {
        if (row.keyName.empty()) {
            continue;
        }
        int rows = 0;
        int same = 0;
        for (const auto& other : kRows) {
            rows += !other.keyName.empty() && other.group == row.group;
            same += !other.keyName.empty() && other.group == row.group && other.slot == row.slot;
        }
        if (same != 1 || row.slot < 0 || row.slot >= rows) {
            return false;
        }
    }
    return true;
}
static_assert(slotsNumberEachGroup(), "a menu slot is repeated or out of range in its group");

}  // namespace window_action_detail

// Every row: the directions in declaration order (`custom` aside), then the display moves.
inline constexpr const auto& kWindowActionRows = window_action_detail::kRows;
// The rows with a key name, group by group and in row order within a group: the order of the
// shortcut list.
inline constexpr auto kKeyedWindowActionRows = window_action_detail::keyedInListOrder();

// The row with that key name; none for a name no menu, shortcut or stored position uses.
const WindowActionRow* findWindowActionByKeyName(std::string_view keyName);
// The row whose menu command that is.
const WindowActionRow* findWindowActionByCommand(std::string_view command);

}  // namespace corvetta
