#include "platform/linux/logind_sleep_watcher.h"

#include <csignal>
#include <cstdlib>
#include <optional>

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

// Each test points the system bus at a bus of its own; what the watcher reports is kept.
class LogindSleepWatcherTest : public ::testing::Test {
protected:
    void pointSystemBusAt(const std::string& address) {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    }
    void TearDown() override { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    testing::TemporaryFolder folder;
    std::vector<std::string> reported;
};

TEST_F(LogindSleepWatcherTest, HearsLogindAnnounceSleepAndWakeUntilTheBusGoes) {
    if (std::system("command -v dbus-daemon > /dev/null") != 0) {
        GTEST_SKIP() << "dbus-daemon is not installed (Debian package dbus-daemon)";
    }
    testing::writeTestFile(
        folder / "bus.conf",
        "<busconfig><type>system</type><listen>unix:path=" + (folder / "bus").string() +
            "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
            "<allow user=\"*\"/><allow own=\"*\"/><allow eavesdrop=\"true\"/>"
            "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
            "</policy></busconfig>");
    testing::RunningProcess daemon(
        {"dbus-daemon", "--config-file=" + (folder / "bus.conf").string(), "--nofork",
         "--print-address"},
        testing::currentEnvironment());
    const auto address = daemon.waitForLine("unix:");
    ASSERT_TRUE(address) << daemon.errors();
    pointSystemBusAt(*address);

    SystemClock clock;
    EventLoop loop(clock);
    std::vector<std::string> heard;
    std::optional<LogindSleepWatcher> watcher;
    Registration sleeping, waking;
    sd_bus* logind = nullptr;
    loop.post([&] {
        watcher.emplace(loop,
                        [&](const std::string& line) { reported.push_back(line), loop.stop(); });
        sleeping = watcher->observeWillSleep([&] { heard.push_back("sleep"); });
        waking = watcher->observeDidWake([&] { heard.push_back("wake"), loop.stop(); });
        // logind's place on the bus, and its two announcements.
        ASSERT_GE(sd_bus_open_system(&logind), 0);
        ASSERT_GE(sd_bus_request_name(logind, "org.freedesktop.login1", 0), 0);
        for (const int goingToSleep : {1, 0}) {
            sd_bus_emit_signal(logind, "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                               "PrepareForSleep", "b", goingToSleep);
        }
        sd_bus_flush(logind);
    });
    const WorkItem deadline = loop.postDelayed(20s, [&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(heard, (std::vector<std::string>{"sleep", "wake"}));
    EXPECT_TRUE(reported.empty());

    sd_bus_flush_close_unref(logind);
    daemon.signal(SIGTERM);
    loop.run();
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_TRUE(
        reported[0].starts_with("Stopped listening for sleep and wake: lost the system bus"));
}

TEST_F(LogindSleepWatcherTest, WithoutASystemBusSaysSoOnceAndAnnouncesNothing) {
    pointSystemBusAt("unix:path=" + (folder / "no-bus").string());
    ManualClock clock;
    ManualQueue queue(clock);
    LogindSleepWatcher watcher(queue, [&](const std::string& line) { reported.push_back(line); });
    EXPECT_FALSE(watcher.isListening());
    EXPECT_EQ(reported, std::vector<std::string>{
                            "Not listening for sleep and wake: no system bus (No such file or "
                            "directory); workspaces are restored automatically after display "
                            "changes only"});
}

}  // namespace
}  // namespace corvetta
