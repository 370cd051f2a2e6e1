// shortcut_fixture.h: The shortcut layers over one defaults store, for their tests.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "platform/sim/simulated_hot_keys.h"
#include "shortcuts/shortcut_services.h"
#include "support/test_logging.h"

namespace corvetta::testing_support {

constexpr std::uint64_t kControlOption = ModifierFlag::kControl | ModifierFlag::kOption;

// The shortcut layers over one user-defaults store; `restart` builds them anew over the same
// store, as a second launch does.
class ShortcutTest : public ::testing::Test {
protected:
    ShortcutTest() { restart(); }

    void restart() {
        services.reset();
        services = std::make_unique<ShortcutServices>(hotKeys, defaults, notifications, logging);
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

    ShortcutServices& s() { return *services; }

    InMemoryPreferences defaults;
    NotificationCenter notifications;
    ManualClock clock;
    testing::TestLogging testLogging{notifications, clock};
    Logbook& logbook = testLogging.logbook;
    LoggingService& logging = testLogging.logging;
    SimulatedHotKeys hotKeys;
    std::unique_ptr<ShortcutServices> services;
};

}  // namespace corvetta::testing_support
