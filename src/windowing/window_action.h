// window_action.h: One action on the current window: a placement or a move to another display.
#pragma once

#include <optional>
#include <string_view>

#include "windowing/window_direction.h"
#include "windowing/window_snapping_service.h"

namespace corvetta {

// What a window-action shortcut, a menu command or an automation request does to the current
// window: a placement, or a move to the neighbouring display.
class WindowAction {
public:
    enum class Kind { snap, moveToNextDisplay, moveToPreviousDisplay };

    static WindowAction snap(WindowDirection direction) {
        return WindowAction(Kind::snap, direction);
    }
    static WindowAction moveToNextDisplay() { return WindowAction(Kind::moveToNextDisplay); }
    static WindowAction moveToPreviousDisplay() {
        return WindowAction(Kind::moveToPreviousDisplay);
    }

    // The action of a window-action shortcut name: a plain direction's case name, "fullscreen"
    // (maximize) or a display move; none for any other name.
    static std::optional<WindowAction> fromShortcutName(std::string_view name);

    Kind kind() const { return kind_; }
    // The placement of a snap; maximize for the display moves, which carry none.
    const WindowDirection& direction() const { return direction_; }
    // "leftHalf", "moveToNextDisplay", ...
    std::string_view name() const;

    // Acts on the window of the last other application, as every surface does.
    void perform(WindowSnappingService& snapping, SnapCompletion completion = {}) const;

    bool operator==(const WindowAction&) const = default;

private:
    explicit WindowAction(Kind kind, WindowDirection direction = WindowDirection::Case::maximize)
        : kind_(kind), direction_(direction) {}

    Kind kind_;
    WindowDirection direction_;
};

}  // namespace corvetta
