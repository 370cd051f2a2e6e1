// x11_accessibility.h: Emulates the accessibility port on X11 through the EWMH window manager.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>

#include "platform/accessibility.h"
#include "platform/x11/x11_applications.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_properties.h"
#include "platform/x11/x11_screens.h"
#include "platform/x11/x11_size_hints.h"
#include "platform/x11/x11_window_manager_ping.h"

namespace corvetta {

// The accessibility interface, emulated over the window manager's hints. An application element
// is a process (token 0); a window element's token is its client window's id, its close button the
// same id with the top bit set. Positions and sizes are the outer frame, decorations included,
// read anew on every call. A position or size set is a _NET_MOVERESIZE_WINDOW request (a
// maximized window is restored first), and the call returns once the window manager has handled
// it, which a round trip through it tells (X11WindowManagerPing), or after `kApplyPatience`, so a
// read right after sees the outcome. Without that round trip the window's ConfigureNotify and
// property changes are taken as the answer. X has no permission to grant: every process is
// trusted.
//
// A window's frame, states, size hints, title and type are read together, in one round trip, and
// that reading serves every read of the window until this program asks the window manager for
// anything or an event other than input arrives: a key press reads the window several times (to
// place it, to check it is not full screen, before every set, to verify). The window is watched
// from the reading on, and the window manager announces every change of its frame to it (a real
// ConfigureNotify when it resizes, a synthetic one when it only moves, as ICCCM asks), its
// properties announce themselves; what comes from outside (the socket) synchronizes first.
class X11Accessibility final : public AccessibilityPort {
public:
    // How long a set waits for the window manager; it answers in about a millisecond.
    static constexpr std::chrono::milliseconds kApplyPatience{1000};

    X11Accessibility(X11Connection& connection, const X11Screens& screens,
                     X11Applications& applications);

    bool isProcessTrusted() const override { return true; }
    AXElement applicationElement(ProcessId process) override { return AXElement(process, 0); }
    Expected<AXValue, AXErrorCode> copyAttributeValue(const AXElement& element,
                                                      std::string_view attribute) override;
    // Position, size and the states of one window are read together, in one round trip.
    std::vector<Expected<AXValue, AXErrorCode>> copyMultipleAttributeValues(
        const AXElement& element, const std::vector<std::string_view>& attributes) override;
    AXErrorCode setAttributeValue(const AXElement& element, std::string_view attribute,
                                  const AXValue& value) override;
    AXErrorCode performAction(const AXElement& element, std::string_view action) override;
    Expected<ProcessId, AXErrorCode> processOf(const AXElement& element) override;
    // Inside a batch, requests to the window manager go out without waiting for it; the batch's
    // end waits once, for all of them (one ping answers for every request sent before it).
    void beginWriteBatch() override { ++batchDepth_; }
    void endWriteBatch() override;

private:
    enum class Kind { application, window, closeButton };
    struct Reading {
        xcb_window_t window = XCB_WINDOW_NONE;
        Expected<X11Properties::OuterFrame, X11Error> frame;
        Expected<std::vector<xcb_atom_t>, X11Error> states;
        std::optional<X11SizeHints> hints;
        Expected<std::string, X11Error> title;
        // _NET_WM_WINDOW_TYPE, for "AXSubrole".
        Expected<std::vector<xcb_atom_t>, X11Error> types;
    };
    const Reading& readingOf(xcb_window_t window);
    void forgetReading() { readings_.clear(); }
    struct Resolved {
        Kind kind = Kind::application;
        xcb_window_t window = XCB_WINDOW_NONE;
    };
    Expected<Resolved, AXErrorCode> resolve(const AXElement& element);
    Expected<AXValue, AXErrorCode> applicationAttribute(ProcessId process,
                                                        std::string_view attribute);
    Expected<AXValue, AXErrorCode> windowAttribute(ProcessId process, xcb_window_t window,
                                                   std::string_view attribute);
    AXErrorCode moveResize(xcb_window_t window, std::optional<Point> position,
                           std::optional<Size> size);
    AXErrorCode setState(xcb_window_t window, std::string_view state, bool on);
    static bool isFrameAttribute(std::string_view attribute);
    static bool isStateAttribute(std::string_view attribute);
    Expected<AXValue, AXErrorCode> frameAttribute(
        const Expected<X11Properties::OuterFrame, X11Error>& frame, std::string_view attribute);
    Expected<AXValue, AXErrorCode> stateAttribute(
        const Expected<std::vector<xcb_atom_t>, X11Error>& states, std::string_view attribute);
    Expected<AXValue, AXErrorCode> minimumSize(const Reading& reading);
    bool isMaximized(const std::vector<xcb_atom_t>& states);
    // Takes the window out of both maximized states and waits for the window manager.
    void unmaximize(xcb_window_t window,
                    const Expected<X11Properties::OuterFrame, X11Error>& maximized);
    // WM_NORMAL_HINTS; none when the window sets none or is gone.
    std::optional<X11SizeHints> sizeHintsOf(xcb_get_property_cookie_t cookie);
    void sendToRoot(xcb_window_t window, std::string_view type,
                    const std::array<std::uint32_t, 5>& data);
    // Returns once the window manager has handled what was asked of it: after a ping's answer,
    // or, where it answers none, once `appliedWithoutPing` holds (waitUntil).
    void awaitWindowManager(xcb_window_t window, const std::function<bool()>& appliedWithoutPing);
    int batchDepth_ = 0;
    bool batchAwaitsWindowManager_ = false;
    // Waits for the window manager's answer about the window until `applied` holds, at most
    // kApplyPatience; whether it held in the end.
    bool waitUntil(xcb_window_t window, const std::function<bool()>& applied);

    X11Connection& connection_;
    const X11Screens& screens_;
    X11Applications& applications_;
    X11Properties properties_;
    X11WindowManagerPing ping_;
    // Every window read since the last event or request: a restore reads many windows in a row,
    // and nothing they say changes without an event announcing it.
    std::unordered_map<xcb_window_t, Reading> readings_;
    Registration events_;
};

}  // namespace corvetta
