#include "platform/linux/logind_sleep_watcher.h"

#include <systemd/sd-bus.h>

namespace corvetta {

namespace {

constexpr const char* kLogind = "org.freedesktop.login1";
constexpr const char* kManagerPath = "/org/freedesktop/login1";
constexpr const char* kManagerInterface = "org.freedesktop.login1.Manager";
// Asking the bus to route the signal is the only call made; a bus that does not answer at once
// must not hold up the program's start for sd-bus's default 25 seconds.
constexpr std::chrono::microseconds kSubscribeTimeout = std::chrono::seconds(2);

}  // namespace

LogindSleepWatcher::LogindSleepWatcher(MainQueue& queue, Report report)
    : report_(std::move(report)) {
    std::string whyNot;
    bus_ = MainQueueBus::open(
        queue, MainQueueBus::Which::system, kSubscribeTimeout,
        {kLogind, kManagerPath, kManagerInterface, "PrepareForSleep"},
        [this](sd_bus_message* message) {
            int goingToSleep = 0;
            if (sd_bus_message_read(message, "b", &goingToSleep) >= 0) {
                announce(goingToSleep != 0);
            }
        },
        [this](const std::string& why) {
            report_("Stopped listening for sleep and wake: lost the system bus (" + why + ")");
        },
        whyNot);
    if (!bus_) {
        report_("Not listening for sleep and wake: no system bus (" + whyNot +
                "); workspaces are restored automatically after display changes only");
    }
}

LogindSleepWatcher::~LogindSleepWatcher() = default;

Registration LogindSleepWatcher::add(Handlers handlers, std::function<void()> handler) {
    const auto key = observers_->nextKey++;
    ((*observers_).*handlers).emplace(key, std::move(handler));
    return Registration([weak = std::weak_ptr<Observers>(observers_), handlers, key] {
        if (const auto observers = weak.lock()) {
            ((*observers).*handlers).erase(key);
        }
    });
}

Registration LogindSleepWatcher::observeWillSleep(std::function<void()> handler) {
    return add(&Observers::willSleep, std::move(handler));
}

Registration LogindSleepWatcher::observeDidWake(std::function<void()> handler) {
    return add(&Observers::didWake, std::move(handler));
}

void LogindSleepWatcher::announce(bool goingToSleep) {
    const Handlers handlers = goingToSleep ? &Observers::willSleep : &Observers::didWake;
    // From a copy: a handler may drop its own registration or another's.
    const auto snapshot = (*observers_).*handlers;
    for (const auto& [key, handler] : snapshot) {
        if (((*observers_).*handlers).count(key) > 0) {
            handler();
        }
    }
}

}  // namespace corvetta
