// The displays, the Dock and the two coordinate spaces of the simulated desktop.

#include <algorithm>

#include "platform/sim/desktop_model.h"

namespace corvetta::sim {

namespace {

Rect growOnEdge(const Rect& visible, DockEdge edge, double by) {
    switch (edge) {
        case DockEdge::bottom:
            return {visible.minX(), visible.minY() - by, visible.width(), visible.height() + by};
        case DockEdge::left:
            return {visible.minX() - by, visible.minY(), visible.width() + by, visible.height()};
        case DockEdge::right:
            return {visible.minX(), visible.minY(), visible.width() + by, visible.height()};
    }
    return visible;
}

// The band of the display that the Dock covers while it shows.
Rect dockStrip(const Rect& frame, DockEdge edge, double size) {
    switch (edge) {
        case DockEdge::bottom:
            return {frame.minX(), frame.minY(), frame.width(), size};
        case DockEdge::left:
            return {frame.minX(), frame.minY(), size, frame.height()};
        case DockEdge::right:
            return {frame.maxX() - size, frame.minY(), size, frame.height()};
    }
    return Rect::null();
}

}  // namespace

void DesktopModel::setDisplays(std::vector<SimulatedDisplay> displays) {
    displays_ = std::move(displays);
    bringStrandedWindowsBack();
    publishScreens(true);
    windowsChanged();
}

// As the window server does when a display goes away: a window left on no display moves to the
// top-left of the primary display's visible frame, shrunk to fit it.
void DesktopModel::bringStrandedWindowsBack() {
    if (displays_.empty()) {
        return;
    }
    const auto home = toAccessibilitySpace(displays_.front().visibleFrame);
    for (auto& app : applications_) {
        for (auto& window : app.windows) {
            const auto frame = toScreenSpace(window.frame);
            const bool onSomeDisplay =
                std::any_of(displays_.begin(), displays_.end(),
                            [&](const SimulatedDisplay& d) { return d.frame.intersects(frame); });
            if (!onSomeDisplay) {
                window.frame = Rect(home.origin, Size{std::min(frame.width(), home.width()),
                                                      std::min(frame.height(), home.height())});
            }
        }
    }
}

void DesktopModel::setDockHidden(bool hidden) {
    if (!dock_ || dock_->hidden == hidden) {
        return;
    }
    dock_->hidden = hidden;
    publishScreens(false);
}

void DesktopModel::windowsChanged() {
    if (dock_ && dock_->intellihide) {
        const auto display = std::find_if(displays_.begin(), displays_.end(),
                                          [&](const auto& d) { return d.id == dock_->display; });
        if (display != displays_.end()) {
            const auto strip = dockStrip(display->frame, dock_->edge, dock_->size);
            const auto windows = onScreenWindows();
            const bool covered = std::any_of(windows.begin(), windows.end(), [&](const auto* w) {
                return toScreenSpace(w->frame).intersects(strip);
            });
            if (covered != dock_->hidden) {
                dock_->hidden = covered;
                publishScreens(false);
            }
        }
    }
    // The main display is the one with the key window: the front application's focused window.
    if (frontmost_) {
        if (const auto* focused = focusedWindow(*frontmost_)) {
            if (const auto display = displayOf(focused->frame)) {
                screens_.setMainScreen(display->id);
            }
        }
    }
}

void DesktopModel::publishScreens(bool announceEvenIfUnchanged) {
    auto next = currentScreens();
    if (announceEvenIfUnchanged || next != screens_.screens()) {
        screens_.setScreens(std::move(next));
    }
}

std::vector<Screen> DesktopModel::currentScreens() const {
    std::vector<Screen> result;
    for (const auto& display : displays_) {
        Rect visible = display.visibleFrame;
        if (dock_ && dock_->hidden && dock_->display == display.id) {
            visible = growOnEdge(visible, dock_->edge, dock_->size).intersection(display.frame);
        }
        result.push_back(Screen{display.id, display.frame, visible, display.scale, display.name,
                                display.builtin, display.identity});
    }
    return result;
}

std::optional<SimulatedDisplay> DesktopModel::displayOf(const Rect& axFrame) const {
    const auto frame = toScreenSpace(axFrame);
    const Point centre{frame.midX(), frame.midY()};
    for (const auto& display : displays_) {
        if (display.frame.contains(centre)) {
            return display;
        }
    }
    const SimulatedDisplay* best = nullptr;
    double bestArea = 0;
    for (const auto& display : displays_) {
        const auto overlap = display.frame.intersection(frame);
        if (!overlap.isNull() && overlap.area() > bestArea) {
            best = &display;
            bestArea = overlap.area();
        }
    }
    return best == nullptr ? std::nullopt : std::optional(*best);
}

Rect DesktopModel::toScreenSpace(const Rect& axFrame) const {
    const double pivot = displays_.empty() ? 0 : displays_.front().frame.maxY();
    return {axFrame.minX(), pivot - (axFrame.minY() + axFrame.height()), axFrame.width(),
            axFrame.height()};
}

Rect DesktopModel::toAccessibilitySpace(const Rect& screenFrame) const {
    // The conversion is its own inverse.
    return toScreenSpace(screenFrame);
}

}  // namespace corvetta::sim
