// desktop.h: One backend's ports: all the product's logic needs of the system.
#pragma once

#include <functional>
#include <string>

#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/applications.h"
#include "platform/hot_keys.h"
#include "platform/input_events.h"
#include "platform/opening.h"
#include "platform/pointer.h"
#include "platform/screen.h"
#include "platform/sleep_wake.h"
#include "platform/system_appearance.h"
#include "platform/window_list.h"

namespace corvetta {

// One backend's worth of ports: everything the product's logic needs of the operating system.
// The ports live as long as the desktop.
class Desktop {
public:
    virtual ~Desktop() = default;

    // "sim", "x11", "macos".
    virtual std::string kind() const = 0;
    virtual ScreenPort& screenPort() = 0;
    virtual AccessibilityPort& accessibilityPort() = 0;
    virtual WindowListPort& windowListPort() = 0;
    virtual ApplicationsPort& applicationsPort() = 0;
    virtual PointerPort& pointerPort() = 0;
    virtual EventMonitorPort& eventMonitorPort() = 0;
    virtual AlertPort& alertPort() = 0;
    virtual HotKeyPort& hotKeyPort() = 0;
    virtual SleepWakePort& sleepWakePort() = 0;
    virtual OpeningPort& openingPort() = 0;
    virtual SystemAppearancePort& systemAppearancePort() = 0;

    // Calls `done` on the main queue once the backend has caught up with every request made
    // before this call (an X server has processed them) and the work already queued has run, so
    // what the ports report afterwards reflects everything asked before.
    virtual void synchronize(std::function<void()> done) = 0;
};

}  // namespace corvetta
