#include "platform/linux/portal_appearance.h"

#include <cstring>

#include <systemd/sd-bus.h>

namespace corvetta {

namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kSettings = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";
// The only blocking call is asking the bus to route the signal; a bus that does not answer at
// once must not hold up the start for sd-bus's default 25 seconds.
constexpr std::uint64_t kCallTimeoutMicroseconds = 2'000'000;
constexpr const char* kNoPreference = "the desktop states no light or dark preference";

std::string errorText(int negativeErrno) {
    return std::strerror(-negativeErrno);
}

// The colour scheme inside however many variants wrap it: ReadOne gives v(u), the older Read
// v(v(u)). Anything but a number is no preference.
SystemAppearance readColorScheme(sd_bus_message* message) {
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(message, &type, &contents) > 0 && type == SD_BUS_TYPE_VARIANT) {
        if (sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents) < 0) {
            return SystemAppearance::unknown;
        }
    }
    std::uint32_t scheme = 0;
    if (type != SD_BUS_TYPE_UINT32 || sd_bus_message_read_basic(message, 'u', &scheme) < 0) {
        return SystemAppearance::unknown;
    }
    return scheme == 1   ? SystemAppearance::dark
           : scheme == 2 ? SystemAppearance::light
                         : SystemAppearance::unknown;
}

}  // namespace

struct PortalAppearanceWatcher::Bus {
    ~Bus() {
        watch.reset();
        sd_bus_slot_unref(call);
        sd_bus_slot_unref(match);
        sd_bus_flush_close_unref(bus);
    }

    static int onSettingChanged(sd_bus_message* message, void* userdata, sd_bus_error*) {
        const char* settingNamespace = nullptr;
        const char* key = nullptr;
        if (sd_bus_message_read(message, "ss", &settingNamespace, &key) >= 0 &&
            std::strcmp(settingNamespace, kNamespace) == 0 && std::strcmp(key, kKey) == 0) {
            static_cast<PortalAppearanceWatcher*>(userdata)->update(readColorScheme(message));
        }
        return 0;
    }

    static int onReply(sd_bus_message* message, void* userdata, sd_bus_error*) {
        auto* watcher = static_cast<PortalAppearanceWatcher*>(userdata);
        if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
            // Portals before version 2 of the interface have only Read.
            if (sd_bus_error_has_name(error, SD_BUS_ERROR_UNKNOWN_METHOD) &&
                !watcher->bus_->triedRead) {
                watcher->bus_->triedRead = true;
                watcher->bus_->ask("Read");
                return 0;
            }
            watcher->giveUp(std::string("no settings portal (") +
                            (error->message ? error->message : error->name) + ")");
            return 0;
        }
        const auto appearance = readColorScheme(message);
        if (appearance == SystemAppearance::unknown) {
            watcher->giveUp(kNoPreference);
        }
        watcher->update(appearance);
        return 0;
    }

    void ask(const char* method) {
        sd_bus_slot_unref(call);
        call = nullptr;
        const int result =
            sd_bus_call_method_async(bus, &call, kPortal, kPortalPath, kSettings, method,
                                     &Bus::onReply, owner, "ss", kNamespace, kKey);
        if (result < 0) {
            owner->giveUp("the portal could not be asked (" + errorText(result) + ")");
        }
    }

    PortalAppearanceWatcher* owner = nullptr;
    sd_bus* bus = nullptr;
    sd_bus_slot* match = nullptr;
    sd_bus_slot* call = nullptr;
    FdWatch watch;
    bool triedRead = false;
    bool lost = false;
};

PortalAppearanceWatcher::PortalAppearanceWatcher(MainQueue& queue, Report report)
    : queue_(queue), report_(std::move(report)) {
    auto bus = std::make_unique<Bus>();
    bus->owner = this;
    int result = sd_bus_open_user(&bus->bus);
    if (result >= 0) {
        sd_bus_set_method_call_timeout(bus->bus, kCallTimeoutMicroseconds);
        result = sd_bus_match_signal(bus->bus, &bus->match, kPortal, kPortalPath, kSettings,
                                     "SettingChanged", &Bus::onSettingChanged, this);
    }
    if (result < 0) {
        giveUp("no session bus (" + errorText(result) + ")");
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
                                  if (processed < 0 || hasEvent(events, FdEvent::hangup)) {
                                      bus_->lost = true;
                                      giveUp("lost the session bus");
                                      update(SystemAppearance::unknown);
                                      // Not from inside the watch's own callback.
                                      queue_.post([this] { bus_.reset(); });
                                  }
                              });
    bus_ = std::move(bus);
    bus_->ask("ReadOne");
}

PortalAppearanceWatcher::~PortalAppearanceWatcher() = default;

void PortalAppearanceWatcher::update(SystemAppearance appearance) {
    if (appearance != appearance_) {
        appearance_ = appearance;
        observers_.notify(appearance);
    }
}

void PortalAppearanceWatcher::giveUp(const std::string& why) {
    if (!reported_) {
        reported_ = true;
        report_("Light or dark not known from the desktop: " + why +
                "; following the toolkit's palette");
    }
}

}  // namespace corvetta
