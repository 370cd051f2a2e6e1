// x11_desktop.h: The X11 desktop: every port over one connection to an X server.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "foundation/expected.h"
#include "foundation/main_queue.h"
#include "platform/desktop.h"

namespace corvetta {

// Every port over one connection to an X server, with the EWMH window manager running there.
class X11Desktop final : public Desktop {
public:
    using Report = std::function<void(const std::string&)>;

    // Connects to `display` ($DISPLAY when empty). Fails, saying why, when the display cannot be
    // opened. `report` receives what has no other place to go (alert texts); stderr by default.
    // This program appears among the applications under `ownBundleIdentifier`.
    static Expected<std::unique_ptr<X11Desktop>, std::string> open(
        const std::string& display, MainQueue& queue, Report report = {},
        std::string ownBundleIdentifier = "com.corvetta.Corvetta");
    ~X11Desktop() override;
    X11Desktop(const X11Desktop&) = delete;
    X11Desktop& operator=(const X11Desktop&) = delete;

    std::string kind() const override { return "x11"; }
    ScreenPort& screenPort() override;
    AccessibilityPort& accessibilityPort() override;
    WindowListPort& windowListPort() override;
    ApplicationsPort& applicationsPort() override;
    PointerPort& pointerPort() override;
    EventMonitorPort& eventMonitorPort() override;
    AlertPort& alertPort() override;
    HotKeyPort& hotKeyPort() override;
    SleepWakePort& sleepWakePort() override;
    SystemAppearancePort& systemAppearancePort() override;
    OpeningPort& openingPort() override;
    // How often the program has waited for the X server so far (X11Connection::roundTrips).
    std::uint64_t roundTrips() const;
    // A round trip to the server, then the events it sent until then, then `done`.
    void synchronize(std::function<void()> done) override;

private:
    struct Parts;
    explicit X11Desktop(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

}  // namespace corvetta
