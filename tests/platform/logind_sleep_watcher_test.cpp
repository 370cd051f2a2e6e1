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

// Points the system bus somewhere else for as long as it lives.
class SystemBusAddress {
public:
    explicit SystemBusAddress(const std::string& address) {
        if (const char* old = std::getenv(kName)) {
            previous_ = old;
        }
        setenv(kName, address.c_str(), 1);
    }
    ~SystemBusAddress() { previous_ ? setenv(kName, previous_->c_str(), 1) : unsetenv(kName); }

private:
    static constexpr const char* kName = "DBUS_SYSTEM_BUS_ADDRESS";
    std::optional<std::string> previous_;
};

bool onPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::string folders = path ? path : "";
    for (std::size_t start = 0, end = 0; start <= folders.size(); start = end + 1) {
        end = std::min(folders.find(':', start), folders.size());
        if (access((folders.substr(start, end - start) + "/" + program).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

TEST(LogindSleepWatcherTest, HearsLogindAnnounceSleepAndWakeUntilTheBusGoes) {
    if (!onPath("dbus-daemon")) {
        GTEST_SKIP() << "dbus-daemon is not installed (Debian package dbus-daemon)";
    }
    testing::TemporaryFolder folder;
    testing::writeTestFile(folder / "bus.conf", R"(<busconfig><type>system</type>
        <listen>unix:path=)" + (folder / "bus").string() +
                                                    R"(</listen><auth>EXTERNAL</auth>
        <policy context="default"><allow user="*"/><allow own="*"/>
        <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/></policy>
        </busconfig>)");
    testing::RunningProcess daemon(
        {"dbus-daemon", "--config-file=" + (folder / "bus.conf").string(), "--nofork",
         "--print-address"},
        testing::currentEnvironment());
    const auto address = daemon.waitForLine("unix:");
    ASSERT_TRUE(address) << daemon.errors();
    const SystemBusAddress systemBus(*address);

    SystemClock clock;
    EventLoop loop(clock);
    std::vector<std::string> heard, reported;
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
    EXPECT_TRUE(reported.empty()) << reported.front();

    sd_bus_flush_close_unref(logind);
    daemon.signal(SIGTERM);
    loop.run();
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_TRUE(
        reported.front().starts_with("Stopped listening for sleep and wake: lost the system bus"))
        << reported.front();
}

TEST(LogindSleepWatcherTest, WithoutASystemBusSaysSoOnceAndAnnouncesNothing) {
    testing::TemporaryFolder folder;
    const SystemBusAddress systemBus("unix:path=" + (folder / "no-bus").string());
    ManualClock clock;
    ManualQueue queue(clock);
    std::vector<std::string> reported;
    LogindSleepWatcher watcher(queue, [&](const std::string& line) { reported.push_back(line); });
    EXPECT_FALSE(watcher.isListening());
    EXPECT_EQ(reported, std::vector<std::string>{
                            "Not listening for sleep and wake: no system bus (No such file or "
                            "directory); workspaces are restored automatically after display "
                            "changes only"});
}

}  // namespace
}  // namespace corvetta
