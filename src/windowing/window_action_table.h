// window_action_table.h: The window actions, one row each, from which every list of them comes.
#pragma once

#include <cstdint>

#include "platform/input_events.h"

namespace corvetta::action_keys {

// macOS virtual key codes (ANSI layout), on every desktop.
inline constexpr std::int64_t none = -1, d = 2, f = 3, g = 5, e = 14, r = 15, t = 17, u = 32,
                              i = 34, returnKey = 36, j = 38, k = 40, leftArrow = 123,
                              rightArrow = 124, downArrow = 125, upArrow = 126;
inline constexpr std::uint64_t noModifiers = 0;
inline constexpr std::uint64_t controlOption = ModifierFlag::kControl | ModifierFlag::kOption;
inline constexpr std::uint64_t controlOptionCommand = controlOption | ModifierFlag::kCommand;

}  // namespace corvetta::action_keys

// The window actions, one row each. Every enumeration of them (WindowDirection::Case,
// DirectionType, SnapPosition::Case, PositionType), their names, the menu's titles and commands,
// the shortcut names and their default keys are derived from these rows, so adding an action is
// adding a row. Names are written once, as the case identifiers, and spelled from them: the row
// leftTwoThirds is stored, bound and offered to the socket as "leftTwoThirds".
//
// Directions come first, in WindowDirection's declaration order (the calculators follow it), then
// the moves to a neighbouring display, which are actions but no directions. A row is one of:
//
//   DIRECTION(case)
//       a placement reached only from snap areas, the palette and automation by its case name;
//   STORED(case, position, rank, group, slot, title, command, key, modifiers, bySocket)
//       a placement that is also the stored SnapPosition `position`, at `rank` in PositionType's
//       own order; `position` is also its shortcut and menu name. The menu shows it in `group` at
//       `slot` under `title` and runs the delegate `command`; the shortcut defaults to `key` with
//       `modifiers` (none: no default); `bySocket` offers it to the socket's "snap_window";
//   DISPLAY_MOVE(name, move, group, slot, title, command, key, modifiers)
//       a move to the `next` or `previous` display, shown and bound like a stored placement.
//
// The shortcut list names the actions group by group in row order; the menu orders each group by
// slot, which differs only for the display moves (previous before next).
//
// clang-format off
#define CORVETTA_WINDOW_ACTIONS(DIRECTION, STORED, DISPLAY_MOVE)                                                                                   \
    STORED(leftHalf,            leftHalf,            0,  halves,   0, "Left Half",             "snapLeft",                    leftArrow,  controlOption, true)  \
    STORED(rightHalf,           rightHalf,           1,  halves,   1, "Right Half",            "snapRight",                   rightArrow, controlOption, true)  \
    STORED(topHalf,             topHalf,             2,  halves,   2, "Top Half",              "snapTopHalf",                 upArrow,    controlOption, true)  \
    STORED(bottomHalf,          bottomHalf,          3,  halves,   3, "Bottom Half",           "snapBottomHalf",              downArrow,  controlOption, true)  \
    DIRECTION(topLeft)                                                                                                                             \
    DIRECTION(topRight)                                                                                                                            \
    DIRECTION(bottomLeft)                                                                                                                          \
    DIRECTION(bottomRight)                                                                                                                         \
    STORED(maximize,            fullscreen,          4,  other,    0, "Fullscreen",            "snapFullscreen",              returnKey,  controlOption, true)  \
    STORED(center,              center,              5,  other,    1, "Center",                "snapCenter",                  none,       noModifiers,   true)  \
    STORED(leftThird,           leftThird,           6,  thirds,   0, "Left Third",            "snapLeftThird",               d,          controlOption, true)  \
    STORED(centerThird,         centerThird,         7,  thirds,   1, "Center Third",          "snapCenterThird",             f,          controlOption, true)  \
    STORED(rightThird,          rightThird,          8,  thirds,   2, "Right Third",           "snapRightThird",              g,          controlOption, true)  \
    STORED(leftTwoThirds,       leftTwoThirds,       13, thirds,   3, "Left Two Thirds",       "snapLeftTwoThirds",           e,          controlOption, true)  \
    STORED(centerTwoThirds,     centerTwoThirds,     14, thirds,   4, "Center Two Thirds",     "snapCenterTwoThirds",         r,          controlOption, true)  \
    STORED(rightTwoThirds,      rightTwoThirds,      15, thirds,   5, "Right Two Thirds",      "snapRightTwoThirds",          t,          controlOption, true)  \
    STORED(topThird,            topThird,            16, thirds,   6, "Top Third",             "snapTopThird",                none,       noModifiers,   false) \
    STORED(centerVerticalThird, centerVerticalThird, 17, thirds,   7, "Center Vertical Third", "snapCenterVerticalThird",     none,       noModifiers,   false) \
    STORED(bottomThird,         bottomThird,         18, thirds,   8, "Bottom Third",          "snapBottomThird",             none,       noModifiers,   false) \
    STORED(topLeftQuarter,      topLeftQuarter,      9,  quarters, 0, "Top Left Quarter",      "snapTopLeftQuarter",          u,          controlOption, true)  \
    STORED(topRightQuarter,     topRightQuarter,     10, quarters, 1, "Top Right Quarter",     "snapTopRightQuarter",         i,          controlOption, true)  \
    STORED(bottomLeftQuarter,   bottomLeftQuarter,   11, quarters, 2, "Bottom Left Quarter",   "snapBottomLeftQuarter",       j,          controlOption, true)  \
    STORED(bottomRightQuarter,  bottomRightQuarter,  12, quarters, 3, "Bottom Right Quarter",  "snapBottomRightQuarter",      k,          controlOption, true)  \
    DIRECTION(larger)                                                                                                                              \
    DIRECTION(smaller)                                                                                                                             \
    DIRECTION(largerWidth)                                                                                                                         \
    DIRECTION(smallerWidth)                                                                                                                        \
    DIRECTION(almostMaximize)                                                                                                                      \
    DIRECTION(specified)                                                                                                                           \
    DISPLAY_MOVE(moveToNextDisplay,     next,                other,    3, "Next Display",          "moveWindowToNextDisplay",     rightArrow, controlOptionCommand) \
    DISPLAY_MOVE(moveToPreviousDisplay, previous,            other,    2, "Previous Display",      "moveWindowToPreviousDisplay", leftArrow,  controlOptionCommand)
// clang-format on

// Expansion helpers for the rows.
#define CORVETTA_ACTION_IGNORE(...)
#define CORVETTA_ACTION_CASE(name, ...) name,
