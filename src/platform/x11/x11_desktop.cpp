#include "platform/x11/x11_desktop.h"

#include <iostream>

#include <unistd.h>

#include "platform/linux/logind_sleep_watcher.h"
#include "platform/linux/portal_appearance.h"
#include "platform/x11/x11_accessibility.h"
#include "platform/x11/x11_alerts.h"
#include "platform/x11/x11_applications.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_event_monitor.h"
#include "platform/x11/x11_hot_keys.h"
#include "platform/x11/x11_opening.h"
#include "platform/x11/x11_pointer.h"
#include "platform/x11/x11_screens.h"
#include "platform/x11/x11_window_list.h"
#include "platform/xdg/desktop_entries.h"

extern char** environ;

namespace corvetta {

namespace {

RunningApplication thisProgram(std::string bundleIdentifier) {
    return {getpid(), std::move(bundleIdentifier), "Corvetta", ActivationPolicy::accessory, false};
}

// What this program launches lands on the display it manages, whatever $DISPLAY says.
X11Launching launchingOn(const std::string& display) {
    X11Launching launching{xdgApplicationFolders, {}};
    for (char** variable = environ; *variable; ++variable) {
        const std::string entry = *variable;
        if (display.empty() || !entry.starts_with("DISPLAY=")) {
            launching.environment.push_back(entry);
        }
    }
    if (!display.empty()) {
        launching.environment.push_back("DISPLAY=" + display);
    }
    return launching;
}

}  // namespace

// In the order they depend on each other; destroyed in reverse, the connection last.
struct X11Desktop::Parts {
    Parts(std::unique_ptr<X11Connection> opened, MainQueue& queue, Report report,
          std::string ownBundleIdentifier, X11Launching launching)
        : connection(std::move(opened)),
          screens(*connection),
          applications(*connection, thisProgram(std::move(ownBundleIdentifier)), launching),
          opening(*connection, std::move(launching)),
          windowList(*connection, screens),
          accessibility(*connection, screens, applications),
          alerts(queue, report),
          hotKeys(connection->raw(), connection->root(), queue, repliesRead()),
          pointer(connection->raw(), connection->root(), primaryInRoot(), repliesRead()),
          eventMonitor(connection->raw(), connection->root(), queue, primaryInRoot(),
                       repliesRead()),
          sleepWake(queue, report),
          appearance(queue, std::move(report)) {
        // Hot keys and raw input take theirs first; the rest see what they leave.
        inputEvents = connection->addEventHandler([this](const xcb_generic_event_t& event) {
            return hotKeys.handleEvent(event) || eventMonitor.handleEvent(event);
        });
    }

    RepliesRead repliesRead() {
        return [this] { connection->countRoundTrip(); };
    }

    PrimaryMonitorInRoot primaryInRoot() {
        return [this] {
            const RootRect primary = screens.coordinates().primary;
            return Rect{static_cast<double>(primary.x), static_cast<double>(primary.y),
                        static_cast<double>(primary.width), static_cast<double>(primary.height)};
        };
    }

    std::unique_ptr<X11Connection> connection;
    X11Screens screens;
    X11Applications applications;
    X11Opening opening;
    X11WindowList windowList;
    X11Accessibility accessibility;
    X11Alerts alerts;
    X11HotKeys hotKeys;
    X11Pointer pointer;
    X11EventMonitor eventMonitor;
    LogindSleepWatcher sleepWake;
    PortalAppearanceWatcher appearance;
    Registration inputEvents;
};

Expected<std::unique_ptr<X11Desktop>, std::string> X11Desktop::open(
    const std::string& display, MainQueue& queue, Report report, std::string ownBundleIdentifier) {
    auto connection = X11Connection::open(display, queue);
    if (!connection) {
        return unexpected(connection.error());
    }
    if (!report) {
        report = [](const std::string& line) { std::cerr << line << '\n'; };
    }
    return std::unique_ptr<X11Desktop>(new X11Desktop(
        std::make_unique<Parts>(std::move(*connection), queue, std::move(report),
                                std::move(ownBundleIdentifier), launchingOn(display))));
}

X11Desktop::X11Desktop(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

X11Desktop::~X11Desktop() = default;

ScreenPort& X11Desktop::screenPort() {
    return parts_->screens;
}
AccessibilityPort& X11Desktop::accessibilityPort() {
    return parts_->accessibility;
}
WindowListPort& X11Desktop::windowListPort() {
    return parts_->windowList;
}
ApplicationsPort& X11Desktop::applicationsPort() {
    return parts_->applications;
}
PointerPort& X11Desktop::pointerPort() {
    return parts_->pointer;
}
EventMonitorPort& X11Desktop::eventMonitorPort() {
    return parts_->eventMonitor;
}
AlertPort& X11Desktop::alertPort() {
    return parts_->alerts;
}
HotKeyPort& X11Desktop::hotKeyPort() {
    return parts_->hotKeys;
}
SystemAppearancePort& X11Desktop::systemAppearancePort() {
    return parts_->appearance;
}

SleepWakePort& X11Desktop::sleepWakePort() {
    return parts_->sleepWake;
}
OpeningPort& X11Desktop::openingPort() {
    return parts_->opening;
}

std::uint64_t X11Desktop::roundTrips() const {
    return parts_->connection->roundTrips();
}

void X11Desktop::synchronize(std::function<void()> done) {
    parts_->connection->synchronize(std::move(done));
}

}  // namespace corvetta
