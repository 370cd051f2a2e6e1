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
#include "support/log_messages.h"

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
        LogFilter filter;
        if (!service.empty()) {
            filter.service = service;
        }
        return testing::loggedMessages(logbook, filter);
    }
    bool wasLogged(const std::string& message) const {
        const auto all = logged();
        return std::find(all.begin(), all.end(), message) != all.end();
    }

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
    InMemoryPreferences loggingPreferences;
    NotificationCenter notifications;
    ManualClock clock;
    Logbook logbook{loggingPreferences, notifications, clock, nullptr};
    LoggingService logging{loggingPreferences, logbook};
    SimulatedHotKeys hotKeys;
    std::unique_ptr<ShortcutServices> services;
};

}  // namespace corvetta::testing_support
