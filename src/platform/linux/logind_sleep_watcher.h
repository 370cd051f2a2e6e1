// logind_sleep_watcher.h: Hears systemd-logind announce sleep and wake on the system bus.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "foundation/main_queue.h"
#include "platform/linux/main_queue_bus.h"
#include "platform/sleep_wake.h"

namespace corvetta {

// systemd-logind sends PrepareForSleep(true) before the system sleeps and PrepareForSleep(false)
// once it is awake again. The watcher hears it on the system bus through the main queue (the
// bus's descriptor is watched; no threads): true reaches the will-sleep observers, false the
// did-wake observers. Without a system bus (a container, a CI runner) or when the bus goes away,
// it says so once through `report` and from then on announces nothing.
class LogindSleepWatcher final : public SleepWakePort {
public:
    using Report = std::function<void(const std::string&)>;

    // Connects to the system bus ($DBUS_SYSTEM_BUS_ADDRESS, else the standard socket). Call on
    // the main thread.
    LogindSleepWatcher(MainQueue& queue, Report report);
    ~LogindSleepWatcher() override;
    LogindSleepWatcher(const LogindSleepWatcher&) = delete;
    LogindSleepWatcher& operator=(const LogindSleepWatcher&) = delete;

    bool isListening() const { return bus_ != nullptr && !bus_->isLost(); }

    Registration observeWillSleep(std::function<void()> handler) override;
    Registration observeDidWake(std::function<void()> handler) override;

private:
    struct Observers {
        std::map<std::uint64_t, std::function<void()>> willSleep;
        std::map<std::uint64_t, std::function<void()>> didWake;
        std::uint64_t nextKey = 1;
    };
    using Handlers = std::map<std::uint64_t, std::function<void()>> Observers::*;

    Registration add(Handlers handlers, std::function<void()> handler);
    void announce(bool goingToSleep);

    Report report_;
    std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
    std::unique_ptr<MainQueueBus> bus_;
};

}  // namespace corvetta
