#include "platform/linux/logind_sleep_watcher.h"

#include <cstring>

#include <systemd/sd-bus.h>

namespace corvetta {

namespace {

constexpr const char* kLogind = "org.freedesktop.login1";
constexpr const char* kManagerPath = "/org/freedesktop/login1";
constexpr const char* kManagerInterface = "org.freedesktop.login1.Manager";
// Asking the bus to route the signal is the only call made; a bus that does not answer at once
// must not hold up the program's start for sd-bus's default 25 seconds.
constexpr std::uint64_t kSubscribeTimeoutMicroseconds = 2'000'000;

std::string errorText(int negativeErrno) {
    return std::strerror(-negativeErrno);
}

}  // namespace

struct LogindSleepWatcher::Bus {
    ~Bus() {
        watch.reset();
        sd_bus_slot_unref(match);
        sd_bus_flush_close_unref(bus);
    }

    static int onPrepareForSleep(sd_bus_message* message, void* userdata, sd_bus_error*) {
        int goingToSleep = 0;
        if (sd_bus_message_read(message, "b", &goingToSleep) >= 0) {
            static_cast<LogindSleepWatcher*>(userdata)->announce(goingToSleep != 0);
        }
        return 0;
    }

    sd_bus* bus = nullptr;
    sd_bus_slot* match = nullptr;
    FdWatch watch;
    bool lost = false;
};

LogindSleepWatcher::LogindSleepWatcher(MainQueue& queue, Report report)
    : queue_(queue), report_(std::move(report)) {
    auto bus = std::make_unique<Bus>();
    int result = sd_bus_open_system(&bus->bus);
    if (result >= 0) {
        sd_bus_set_method_call_timeout(bus->bus, kSubscribeTimeoutMicroseconds);
        result =
            sd_bus_match_signal(bus->bus, &bus->match, kLogind, kManagerPath, kManagerInterface,
                                "PrepareForSleep", &Bus::onPrepareForSleep, this);
    }
    if (result < 0) {
        report_("Not listening for sleep and wake: no system bus (" + errorText(result) +
                "); workspaces are restored automatically after display changes only");
        return;
    }
    bus->watch = queue_.watch(sd_bus_get_fd(bus->bus), static_cast<unsigned>(FdEvent::readable),
                              [this](unsigned events) {
                                  if (bus_->lost) {
                                      return;
                                  }
                                  int processed = 0;
                                  while ((processed = sd_bus_process(bus_->bus, nullptr)) > 0) {
                                  }
                                  if (processed < 0) {
                                      stopListening(errorText(processed));
                                  } else if (hasEvent(events, FdEvent::hangup)) {
                                      stopListening("the bus hung up");
                                  }
                              });
    bus_ = std::move(bus);
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

void LogindSleepWatcher::stopListening(const std::string& why) {
    bus_->lost = true;
    report_("Stopped listening for sleep and wake: lost the system bus (" + why + ")");
    // Not from inside the watch's own callback: the bus goes on the next turn.
    queue_.post([this] { bus_.reset(); });
}

}  // namespace corvetta
