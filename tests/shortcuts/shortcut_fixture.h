// shortcut_fixture.h: The program's services over one user-defaults store, for shortcut tests.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/service_root.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/clock.h"
#include "foundation/manual_queue.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "platform/sim/simulated_desktop.h"
#include "support/test_logging.h"

namespace corvetta::testing_support {

constexpr std::uint64_t kControlOption = ModifierFlag::kControl | ModifierFlag::kOption;

// The services on a one-display simulated desktop; `restart` builds them anew over the same store
// and the same desktop, as a second launch does.
class ShortcutTest : public ::testing::Test {
protected:
    static SimulatedDesktopSetup oneDisplay() {
        SimulatedDesktopSetup setup;
        setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true}};
        return setup;
    }

    ShortcutTest() { restart(); }

    void restart() {
        services.reset();
        services = std::make_unique<ServiceRoot>(
            ProcessPlumbing{desktop, queue, defaults, notifications, logbook, logging});
    }

    std::vector<std::string> logged(const std::string& service = "") const {
        return testLogging.messages(service);
    }
    bool wasLogged(const std::string& message) const { return testLogging.contains(message); }

    // Names of every notification of that kind posted from now on.
    std::shared_ptr<std::vector<std::string>> record(const std::string& notification,
                                                     std::vector<ObserverToken>& tokens) {
        auto names = std::make_shared<std::vector<std::string>>();
        tokens.push_back(notifications.addObserver(notification, [names](const Notification& n) {
            names->push_back(*n.userInfo.at("name").ifString());
        }));
        return names;
    }

    ServiceRoot& s() { return *services; }
    SimulatedHotKeys& system() { return desktop.hotKeys(); }

    InMemoryPreferences defaults;
    NotificationCenter notifications;
    ManualClock clock;
    ManualQueue queue{clock};
    testing::TestLogging testLogging{notifications, clock};
    Logbook& logbook = testLogging.logbook;
    LoggingService& logging = testLogging.logging;
    SimulatedDesktop desktop{oneDisplay(), queue};
    std::unique_ptr<ServiceRoot> services;
};

}  // namespace corvetta::testing_support
