#include "platform/linux/portal_appearance.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include "foundation/event_loop.h"
#include "foundation/manual_queue.h"
#include "support/child_process.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

// The portal's side: answers the settings read with a colour scheme, through ReadOne or only
// through the older Read, and announces changes.
struct FakePortal {
    static int answer(sd_bus_message* call, void* userdata, sd_bus_error*) {
        auto* portal = static_cast<FakePortal*>(userdata);
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(call, &reply);
        if (sd_bus_message_is_method_call(call, nullptr, "Read")) {
            sd_bus_message_open_container(reply, 'v', "v");
        }
        sd_bus_message_append(reply, "v", "u", portal->scheme);
        if (sd_bus_message_is_method_call(call, nullptr, "Read")) {
            sd_bus_message_close_container(reply);
        }
        sd_bus_send(nullptr, reply, nullptr);
        sd_bus_message_unref(reply);
        return 1;
    }

    void announce(std::uint32_t newScheme) {
        scheme = newScheme;
        sd_bus_emit_signal(bus, "/org/freedesktop/portal/desktop",
                           "org.freedesktop.portal.Settings", "SettingChanged", "ssv",
                           "org.freedesktop.appearance", "color-scheme", "u", scheme);
        sd_bus_flush(bus);
    }

    std::uint32_t scheme = 1;
    sd_bus* bus = nullptr;
    sd_bus_slot* object = nullptr;
};

const sd_bus_vtable kWithReadOne[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("ReadOne", "ss", "v", FakePortal::answer, 0),
    SD_BUS_METHOD("Read", "ss", "v", FakePortal::answer, 0),
    SD_BUS_VTABLE_END,
};
const sd_bus_vtable kReadOnly[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Read", "ss", "v", FakePortal::answer, 0),
    SD_BUS_VTABLE_END,
};

class PortalAppearanceTest : public ::testing::Test {
protected:
    void TearDown() override { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    testing::TemporaryFolder folder;
    std::vector<std::string> reported;
};

TEST_F(PortalAppearanceTest, FollowsThePortalsColourSchemeThroughEitherReadMethodOrSaysItIsAbsent) {
    if (std::system("command -v dbus-daemon > /dev/null") != 0) {
        GTEST_SKIP() << "dbus-daemon is not installed (Debian package dbus-daemon)";
    }
    testing::RunningProcess daemon({"dbus-daemon", "--session", "--nofork", "--print-address"},
                                   testing::currentEnvironment());
    const auto address = daemon.waitForLine("unix:");
    ASSERT_TRUE(address) << daemon.errors();
    setenv("DBUS_SESSION_BUS_ADDRESS", address->c_str(), 1);

    // No table: nobody owns the portal's name on the bus.
    for (const auto* vtable :
         {kWithReadOne, kReadOnly, static_cast<const sd_bus_vtable*>(nullptr)}) {
        SystemClock clock;
        EventLoop loop(clock);
        FakePortal portal;
        std::vector<SystemAppearance> heard;
        std::optional<PortalAppearanceWatcher> watcher;
        Registration observation;
        FdWatch portalWatch;
        loop.post([&] {
            ASSERT_GE(sd_bus_open_user(&portal.bus), 0);
            ASSERT_TRUE(vtable == nullptr ||
                        sd_bus_add_object_vtable(
                            portal.bus, &portal.object, "/org/freedesktop/portal/desktop",
                            "org.freedesktop.portal.Settings", vtable, &portal) >= 0);
            ASSERT_TRUE(vtable == nullptr ||
                        sd_bus_request_name(portal.bus, "org.freedesktop.portal.Desktop", 0) >= 0);
            portalWatch = loop.watch(sd_bus_get_fd(portal.bus),
                                     static_cast<unsigned>(FdEvent::readable), [&](unsigned) {
                                         while (sd_bus_process(portal.bus, nullptr) > 0) {
                                         }
                                     });
            watcher.emplace(loop, [&](const std::string& line) {
                reported.push_back(line);
                loop.stop();
            });
            observation = watcher->observeAppearance([&](SystemAppearance now) {
                heard.push_back(now);
                if (heard.size() == 1) {
                    portal.announce(2);
                } else {
                    loop.stop();
                }
            });
        });
        const WorkItem deadline = loop.postDelayed(20s, [&] { loop.stop(); });
        loop.run();
        if (vtable == nullptr) {
            EXPECT_TRUE(heard.empty());
            ASSERT_EQ(reported.size(), 1U);
            EXPECT_TRUE(reported[0].starts_with(
                "Light or dark not known from the desktop: no settings portal ("));
        } else {
            EXPECT_EQ(heard, (std::vector{SystemAppearance::dark, SystemAppearance::light}));
            EXPECT_EQ(watcher->currentAppearance(), SystemAppearance::light);
            EXPECT_TRUE(reported.empty());
        }
        watcher.reset();
        portalWatch.reset();
        sd_bus_slot_unref(portal.object);
        sd_bus_flush_close_unref(portal.bus);
    }
}

TEST_F(PortalAppearanceTest, WithoutASessionBusStaysUnknownAndSaysSoOnce) {
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (folder / "no-bus").string()).c_str(), 1);
    ManualClock clock;
    ManualQueue queue(clock);
    PortalAppearanceWatcher watcher(queue,
                                    [&](const std::string& line) { reported.push_back(line); });
    queue.runUntilIdle();
    EXPECT_EQ(watcher.currentAppearance(), SystemAppearance::unknown);
    EXPECT_EQ(reported,
              std::vector<std::string>{
                  "Light or dark not known from the desktop: no session bus (No such file "
                  "or directory); following the toolkit's palette"});
}

}  // namespace
}  // namespace corvetta
