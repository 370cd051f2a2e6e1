#include "windowing/window_action.h"

#include <algorithm>

#include "windowing/window_action_rows.h"

namespace corvetta {

std::optional<WindowAction> WindowAction::fromShortcutName(std::string_view name) {
    const WindowActionRow* row = findWindowActionByKeyName(name);
    if (row == nullptr) {
        // The placements without a shortcut name answer to their case name. A custom placement
        // needs a rectangle no name can carry.
        const auto type = directionTypeFromRawValue(name);
        if (!type || *type == DirectionType::custom) {
            return std::nullopt;
        }
        return snap(WindowDirection(*type));
    }
    if (row->direction) {
        return snap(*row->direction);
    }
    return *row->displayMove == DisplayMove::next ? moveToNextDisplay() : moveToPreviousDisplay();
}

std::string_view WindowAction::name() const {
    if (kind_ == Kind::snap) {
        return direction_.name();
    }
    const DisplayMove move =
        kind_ == Kind::moveToNextDisplay ? DisplayMove::next : DisplayMove::previous;
    const auto row = std::find_if(kWindowActionRows.begin(), kWindowActionRows.end(),
                                  [&](const WindowActionRow& r) { return r.displayMove == move; });
    return row->name;
}

void WindowAction::perform(WindowSnappingService& snapping, SnapCompletion completion) const {
    switch (kind_) {
        case Kind::snap:
            snapping.snapFrontmostWindow(direction_, std::move(completion));
            return;
        case Kind::moveToNextDisplay:
            snapping.moveFrontmostWindowToNextDisplay(std::move(completion));
            return;
        case Kind::moveToPreviousDisplay:
            snapping.moveFrontmostWindowToPreviousDisplay(std::move(completion));
            return;
    }
}

}  // namespace corvetta
