// portal_appearance.h: Hears the desktop's light or dark setting through the settings portal.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "foundation/main_queue.h"
#include "foundation/observer_list.h"
#include "platform/linux/main_queue_bus.h"
#include "platform/system_appearance.h"

namespace corvetta {

// Asks the freedesktop settings portal (org.freedesktop.portal.Settings on the session bus) for
// "org.freedesktop.appearance" "color-scheme" (1 dark, 2 light, 0 no preference) and follows its
// SettingChanged signal, on the main queue (the bus's descriptor is watched; no threads). The
// answer comes on a later turn, so the appearance is unknown at first. Without a session bus or
// a portal it says so once through `report` and stays unknown.
class PortalAppearanceWatcher final : public SystemAppearancePort {
public:
    using Report = std::function<void(const std::string&)>;

    // Connects to the session bus ($DBUS_SESSION_BUS_ADDRESS). Call on the main thread.
    PortalAppearanceWatcher(MainQueue& queue, Report report);
    ~PortalAppearanceWatcher() override;
    PortalAppearanceWatcher(const PortalAppearanceWatcher&) = delete;
    PortalAppearanceWatcher& operator=(const PortalAppearanceWatcher&) = delete;

    SystemAppearance currentAppearance() const override { return appearance_; }
    Registration observeAppearance(std::function<void(SystemAppearance)> handler) override {
        return observers_.add(std::move(handler));
    }

private:
    void ask(const char* method);
    void onReply(sd_bus_message* message);
    void update(SystemAppearance appearance);
    void giveUp(const std::string& why);

    Report report_;
    SystemAppearance appearance_ = SystemAppearance::unknown;
    ObserverList<SystemAppearance> observers_;
    bool reported_ = false;
    bool triedRead_ = false;
    std::unique_ptr<MainQueueBus> bus_;
};

}  // namespace corvetta
