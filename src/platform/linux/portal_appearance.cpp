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
constexpr std::chrono::microseconds kCallTimeout = std::chrono::seconds(2);
constexpr const char* kNoPreference = "the desktop states no light or dark preference";

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

PortalAppearanceWatcher::PortalAppearanceWatcher(MainQueue& queue, Report report)
    : report_(std::move(report)) {
    std::string whyNot;
    bus_ = MainQueueBus::open(
        queue, MainQueueBus::Which::session, kCallTimeout,
        {kPortal, kPortalPath, kSettings, "SettingChanged"},
        [this](sd_bus_message* message) {
            const char* settingNamespace = nullptr;
            const char* key = nullptr;
            if (sd_bus_message_read(message, "ss", &settingNamespace, &key) >= 0 &&
                std::strcmp(settingNamespace, kNamespace) == 0 && std::strcmp(key, kKey) == 0) {
                update(readColorScheme(message));
            }
        },
        [this](const std::string&) {
            giveUp("lost the session bus");
            update(SystemAppearance::unknown);
        },
        whyNot);
    if (!bus_) {
        giveUp("no session bus (" + whyNot + ")");
        return;
    }
    ask("ReadOne");
}

void PortalAppearanceWatcher::ask(const char* method) {
    std::string whyNot;
    if (!bus_->callAsync(
            {kPortal, kPortalPath, kSettings, method}, {kNamespace, kKey},
            [this](sd_bus_message* message) { onReply(message); }, whyNot)) {
        giveUp("the portal could not be asked (" + whyNot + ")");
    }
}

void PortalAppearanceWatcher::onReply(sd_bus_message* message) {
    if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
        // Portals before version 2 of the interface have only Read.
        if (sd_bus_error_has_name(error, SD_BUS_ERROR_UNKNOWN_METHOD) && !triedRead_) {
            triedRead_ = true;
            ask("Read");
            return;
        }
        giveUp(std::string("no settings portal (") +
               (error->message ? error->message : error->name) + ")");
        return;
    }
    const auto appearance = readColorScheme(message);
    if (appearance == SystemAppearance::unknown) {
        giveUp(kNoPreference);
    }
    update(appearance);
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
