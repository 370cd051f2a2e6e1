// window_direction.h: The window actions and the stored snap positions, with their names.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/geometry.h"
#include "windowing/window_action_table.h"

namespace corvetta {

namespace window_action_detail {
#define CORVETTA_ACTION_ONE(...) +1
inline constexpr std::size_t kDirectionRows =
    0 CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_ONE, CORVETTA_ACTION_ONE, CORVETTA_ACTION_IGNORE);
inline constexpr std::size_t kStoredRows =
    0 CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_IGNORE, CORVETTA_ACTION_ONE, CORVETTA_ACTION_IGNORE);
#undef CORVETTA_ACTION_ONE
}  // namespace window_action_detail

// The plain companion of WindowDirection: the same cases without payload, `custom` last. Its raw
// value (the case name) is the stored "type".
enum class DirectionType : std::uint8_t {
    CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_CASE, CORVETTA_ACTION_CASE, CORVETTA_ACTION_IGNORE)
        custom,
};

inline constexpr std::size_t kDirectionTypeCount = window_action_detail::kDirectionRows + 1;

// Every case in declaration order.
const std::array<DirectionType, kDirectionTypeCount>& allDirectionTypes();
std::string_view rawValue(DirectionType type);
// No value for a text that names no case.
std::optional<DirectionType> directionTypeFromRawValue(std::string_view raw);

// A placement a window can be given: what shortcuts, the palette, snap areas and the calculators
// all speak. Only `custom` carries a rectangle.
class WindowDirection {
public:
    // Declaration order, `custom` first; the calculation tables follow it.
    enum class Case : std::uint8_t {
        custom,
        CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_CASE, CORVETTA_ACTION_CASE, CORVETTA_ACTION_IGNORE)
    };

    // Plain cases convert implicitly; `Case::custom` alone carries the zero rectangle.
    constexpr WindowDirection(Case c) : case_(c) {}
    explicit WindowDirection(DirectionType type, Rect customRect = Rect::zero());
    static WindowDirection custom(Rect rect) { return WindowDirection(Case::custom, rect); }

    Case kind() const { return case_; }
    bool isCustom() const { return case_ == Case::custom; }
    // The carried rectangle of `custom`; the zero rectangle for plain cases.
    const Rect& customRect() const { return rect_; }
    DirectionType type() const;
    // The case name, e.g. "leftHalf".
    std::string_view name() const { return rawValue(type()); }
    // The case name, with the rectangle for `custom`: "custom(0, 0, 100, 100)". Used in log lines.
    std::string description() const;

    bool operator==(const WindowDirection& other) const;

private:
    constexpr WindowDirection(Case c, Rect rect) : case_(c), rect_(rect) {}

    Case case_;
    Rect rect_;
};

inline constexpr std::size_t kWindowDirectionCaseCount = kDirectionTypeCount;
// Every case in declaration order (`custom` with the zero rectangle).
const std::array<WindowDirection::Case, kWindowDirectionCaseCount>& allWindowDirectionCases();

// The plain companion of SnapPosition, `custom` last. Its order is its own, the ranks of the
// table's stored rows, not the directions' order.
#define CORVETTA_POSITION_TYPE(direction, position, rank, ...) position = rank,
enum class PositionType : std::uint8_t {
    CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_IGNORE, CORVETTA_POSITION_TYPE, CORVETTA_ACTION_IGNORE)
        custom = window_action_detail::kStoredRows,
};
#undef CORVETTA_POSITION_TYPE

inline constexpr std::size_t kPositionTypeCount = window_action_detail::kStoredRows + 1;

const std::array<PositionType, kPositionTypeCount>& allPositionTypes();
std::string_view rawValue(PositionType type);
std::optional<PositionType> positionTypeFromRawValue(std::string_view raw);

// A stored position (layout panes, snap areas). Only `custom` carries a rectangle.
class SnapPosition {
public:
    // `custom` first, then PositionType's order.
#define CORVETTA_SNAP_POSITION_CASE(direction, position, rank, ...) position = rank + 1,
    enum class Case : std::uint8_t {
        custom,
        CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_IGNORE, CORVETTA_SNAP_POSITION_CASE,
                                CORVETTA_ACTION_IGNORE)
    };

#undef CORVETTA_SNAP_POSITION_CASE

    constexpr SnapPosition(Case c) : case_(c) {}
    explicit SnapPosition(PositionType type, Rect customRect = Rect::zero());
    static SnapPosition custom(Rect rect) {
        return SnapPosition(Case::custom, rect);
    }

    Case kind() const {
        return case_;
    }
    bool isCustom() const {
        return case_ == Case::custom;
    }
    const Rect& customRect() const {
        return rect_;
    }
    PositionType type() const;
    std::string_view name() const {
        return rawValue(type());
    }
    std::string description() const;

    bool operator==(const SnapPosition& other) const;

private:
    constexpr SnapPosition(Case c, Rect rect) : case_(c), rect_(rect) {}

    Case case_;
    Rect rect_;
};

inline constexpr std::size_t kSnapPositionCaseCount = kPositionTypeCount;
const std::array<SnapPosition::Case, kSnapPositionCaseCount>& allSnapPositionCases();

}  // namespace corvetta
