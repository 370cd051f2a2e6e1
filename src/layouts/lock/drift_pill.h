// drift_pill.h: What the floating pill of a drifted layout lock shows; the user interface draws it.
#pragma once

#include <span>
#include <string_view>

#include "foundation/geometry.h"

namespace corvetta {

enum class DriftPillCommand { reset, untile };

struct DriftPillButton {
    DriftPillCommand command;
    std::string_view title;
    std::string_view iconName;
    std::string_view helpText;
};

// The pill's buttons, left to right.
std::span<const DriftPillButton> driftPillButtons();

// Opacity of the tint behind each button.
inline constexpr double kDriftPillButtonTintOpacity = 0.14;

// Shown while a lock is active and some tiled window has left its original frame; hidden while
// none of the tiled windows is visible, since it would float over nothing.
struct DriftPill {
    bool visible = false;
    bool pillHiddenWhileAllGone = false;
    // Where the tiled windows stand (accessibility space), so the pill can join their display.
    Rect groupFrame = Rect::null();

    // True when anything the pill shows changed.
    bool update(bool lockActive, bool drifted, bool anyWindowVisible, Rect frame = Rect::null()) {
        const DriftPill before = *this;
        pillHiddenWhileAllGone = lockActive && !anyWindowVisible;
        visible = lockActive && drifted && anyWindowVisible;
        groupFrame = frame;
        return before != *this;
    }
    bool operator==(const DriftPill&) const = default;
};

}  // namespace corvetta
