#include "windowing/window_direction.h"

#include <algorithm>
#include <cstddef>

namespace corvetta {

namespace {

#define CORVETTA_ACTION_NAME(name, ...) #name,
// Raw values in the order of the plain companions.
constexpr std::array<std::string_view, kDirectionTypeCount> kDirectionNames = {
    CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_NAME, CORVETTA_ACTION_NAME,
                            CORVETTA_ACTION_IGNORE) "custom",
};
#undef CORVETTA_ACTION_NAME

// The stored rows' ranks must number PositionType's cases 0, 1, ... without a gap or a repeat.
constexpr std::array<std::string_view, kPositionTypeCount> makePositionNames() {
    std::array<std::string_view, kPositionTypeCount> names{};
#define CORVETTA_POSITION_NAME(direction, position, rank, ...) names.at(rank) = #position;
    CORVETTA_WINDOW_ACTIONS(CORVETTA_ACTION_IGNORE, CORVETTA_POSITION_NAME, CORVETTA_ACTION_IGNORE)
#undef CORVETTA_POSITION_NAME
    names.back() = "custom";
    return names;
}

constexpr auto kPositionNames = makePositionNames();

constexpr bool allNamed(const std::array<std::string_view, kPositionTypeCount>& names) {
    for (const auto name : names) {
        if (name.empty()) {
            return false;
        }
    }
    return true;
}
static_assert(allNamed(kPositionNames), "a stored position's rank is repeated or out of range");

template <class Enum, std::size_t N>
constexpr std::array<Enum, N> enumerate() {
    std::array<Enum, N> all{};
    for (std::size_t i = 0; i < N; ++i) {
        all[i] = static_cast<Enum>(i);
    }
    return all;
}

template <class Enum, std::size_t N>
std::optional<Enum> lookUp(const std::array<std::string_view, N>& names, std::string_view raw) {
    const auto found = std::find(names.begin(), names.end(), raw);
    if (found == names.end()) {
        return std::nullopt;
    }
    return static_cast<Enum>(found - names.begin());
}

// The enumerations put `custom` first, their plain companions put it last; every other case
// keeps its relative order, so the two differ by one place.
template <class Type, class Case, std::size_t N>
Type typeOf(Case c) {
    const auto index = static_cast<std::size_t>(c);
    return index == 0 ? static_cast<Type>(N - 1) : static_cast<Type>(index - 1);
}

template <class Case, class Type, std::size_t N>
Case caseOf(Type t) {
    const auto index = static_cast<std::size_t>(t);
    return index == N - 1 ? static_cast<Case>(0) : static_cast<Case>(index + 1);
}

std::string describe(std::string_view name, bool isCustom, const Rect& rect) {
    std::string text(name);
    if (isCustom) {
        text += rect.description();
    }
    return text;
}

}  // namespace

const std::array<DirectionType, kDirectionTypeCount>& allDirectionTypes() {
    static constexpr auto all = enumerate<DirectionType, kDirectionTypeCount>();
    return all;
}

std::string_view rawValue(DirectionType type) {
    return kDirectionNames[static_cast<std::size_t>(type)];
}

std::optional<DirectionType> directionTypeFromRawValue(std::string_view raw) {
    return lookUp<DirectionType>(kDirectionNames, raw);
}

WindowDirection::WindowDirection(DirectionType type, Rect customRect)
    : case_(caseOf<Case, DirectionType, kDirectionTypeCount>(type)),
      rect_(type == DirectionType::custom ? customRect : Rect::zero()) {}

DirectionType WindowDirection::type() const {
    return typeOf<DirectionType, Case, kDirectionTypeCount>(case_);
}

std::string WindowDirection::description() const {
    return describe(name(), isCustom(), rect_);
}

bool WindowDirection::operator==(const WindowDirection& other) const {
    return case_ == other.case_ && (!isCustom() || rect_ == other.rect_);
}

const std::array<WindowDirection::Case, kWindowDirectionCaseCount>& allWindowDirectionCases() {
    static constexpr auto all = enumerate<WindowDirection::Case, kWindowDirectionCaseCount>();
    return all;
}

const std::array<PositionType, kPositionTypeCount>& allPositionTypes() {
    static constexpr auto all = enumerate<PositionType, kPositionTypeCount>();
    return all;
}

std::string_view rawValue(PositionType type) {
    return kPositionNames[static_cast<std::size_t>(type)];
}

std::optional<PositionType> positionTypeFromRawValue(std::string_view raw) {
    return lookUp<PositionType>(kPositionNames, raw);
}

SnapPosition::SnapPosition(PositionType type, Rect customRect)
    : case_(caseOf<Case, PositionType, kPositionTypeCount>(type)),
      rect_(type == PositionType::custom ? customRect : Rect::zero()) {}

PositionType SnapPosition::type() const {
    return typeOf<PositionType, Case, kPositionTypeCount>(case_);
}

std::string SnapPosition::description() const {
    return describe(name(), isCustom(), rect_);
}

bool SnapPosition::operator==(const SnapPosition& other) const {
    return case_ == other.case_ && (!isCustom() || rect_ == other.rect_);
}

const std::array<SnapPosition::Case, kSnapPositionCaseCount>& allSnapPositionCases() {
    static constexpr auto all = enumerate<SnapPosition::Case, kSnapPositionCaseCount>();
    return all;
}

}  // namespace corvetta
