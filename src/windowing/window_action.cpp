#include "windowing/window_action.h"

namespace corvetta {

namespace {
constexpr std::string_view kNextDisplay = "moveToNextDisplay";
constexpr std::string_view kPreviousDisplay = "moveToPreviousDisplay";
}  // namespace

std::optional<WindowAction> WindowAction::fromShortcutName(std::string_view name) {
    if (name == kNextDisplay) {
        return moveToNextDisplay();
    }
    if (name == kPreviousDisplay) {
        return moveToPreviousDisplay();
    }
    // The shortcut list names the whole-screen action after what the user sees.
    if (name == "fullscreen") {
        return snap(WindowDirection::Case::maximize);
    }
    const auto type = directionTypeFromRawValue(name);
    // A custom placement needs a rectangle no name can carry.
    if (!type || *type == DirectionType::custom) {
        return std::nullopt;
    }
    return snap(WindowDirection(*type));
}

std::string_view WindowAction::name() const {
    switch (kind_) {
        case Kind::snap:
            return direction_.name();
        case Kind::moveToNextDisplay:
            return kNextDisplay;
        case Kind::moveToPreviousDisplay:
            return kPreviousDisplay;
    }
    return {};
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
