// window_calculation.h: The interface of every frame calculator, its inputs and results.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "platform/screen.h"
#include "windowing/window_direction.h"

namespace corvetta {

// The window being placed, as far as the calculations care: its current frame in screen space.
struct TargetWindow {
    Rect frame;
};

// Input of one rectangle step: the window and the screen it is computed on.
struct RectCalculationParameters {
    TargetWindow window;
    Rect visibleFrameOfScreen;
    WindowDirection action;
    Rect frameOfScreen;
};

// What a rectangle step yields. The null rectangle means the step does not handle the action.
struct RectResult {
    Rect rect = Rect::null();
    std::optional<WindowDirection> subAction;
};

// Input of a calculation. Views: the caller keeps the screens alive for the call and the result.
struct WindowCalculationParameters {
    TargetWindow window;
    // Every usable screen in reading order.
    std::span<const Screen> screens;
    const Screen& currentScreen;
    WindowDirection action;
    // Whether the press repeats the last snap of this window with this action: the half actions
    // apply "subsequentExecutionSpace" only then, and place the window plainly on a first press.
    // Callers that do not track presses leave it set and get the mode on every half action.
    bool isRepeatedPress = true;
    // On a repeated press, the action the previous press gave the window, where a size cycle
    // goes on from; the requested action when absent.
    std::optional<WindowDirection> lastResultingAction{};
};

struct WindowCalculationResult {
    Rect rect;
    // The current screen, or the display a repeated press moved the window to; points into the
    // parameters the result was computed from.
    const Screen* screen;
    // Differs from the requested action when a size cycle advanced it.
    WindowDirection resultingAction;
    // Set only on the size-cycling path of the half calculations.
    std::optional<WindowDirection> resultingSubAction;
};

// One way of computing a frame. Subclasses override the rectangle step, and the half actions also
// the calculation, since a repeated press may move them to another display.
class WindowCalculation {
public:
    virtual ~WindowCalculation() = default;

    // No result when the rectangle step yields the null rectangle.
    virtual std::optional<WindowCalculationResult> calculate(
        const WindowCalculationParameters& parameters) const;
    virtual RectResult calculateRect(const RectCalculationParameters& parameters) const = 0;

protected:
    // The rectangle step on a given screen, packed as a result on that screen.
    std::optional<WindowCalculationResult> calculateOn(
        const WindowCalculationParameters& parameters, const Screen& screen) const;
};

}  // namespace corvetta
