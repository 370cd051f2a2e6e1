#include "diagnostics/logbook.h"

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/log_excerpt.h"
#include "diagnostics/log_text.h"
#include "support/log_messages.h"

// GCC 12 warns about filter parts a designated initializer leaves out, which is their purpose.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
using Strings = std::vector<std::string>;
using namespace std::chrono;

struct RecordingPlatformLog final : PlatformLog {
    void write(const LogEntry& entry) override {
        std::lock_guard lock(mutex);
        entries.push_back(entry);
    }
    std::mutex mutex;
    std::vector<LogEntry> entries;
};

class LogbookTest : public ::testing::Test {
protected:
    void log(LogLevel level, const std::string& message, LogCategory category = {"general"}) {
        book.log(level, "Svc", category, message);
    }
    Strings messages(const LogFilter& filter = {}) const {
        return testing::loggedMessages(book, filter);
    }

    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    RecordingPlatformLog platformLog;
    Logbook book{preferences, notifications, clock, &platformLog};
    // What the book showed at each announcement, to prove the change came first.
    Strings seen;
    ObserverToken token_ = notifications.addObserver(
        Logbook::kSettingsChangedNotification, [this](const Notification&) {
            seen.push_back(std::string(book.isEnabled() ? "on/" : "off/") +
                           std::string(logLevelName(book.minimumLevel())) + "/" +
                           std::to_string(book.disabledCategories().size()));
        });
};

// The defaults themselves show in the other tests: debug entries kept, "on/.../0" announced.
TEST_F(LogbookTest, AnUnknownLevelFallsBackToDebugAndPrefixesNameTheKeys) {
    InMemoryPreferences outOfRange({{"Logbook.minimumLevel", 9}});
    EXPECT_EQ(Logbook(outOfRange, notifications, clock, nullptr).minimumLevel(), LogLevel::debug);

    Logbook(preferences, notifications, clock, nullptr, "Other").setEnabled(false);
    EXPECT_EQ(preferences.boolValue("Other.isEnabled"), false);
    EXPECT_FALSE(preferences.object("Logbook.isEnabled"));
    EXPECT_TRUE(book.isEnabled());
}

TEST_F(LogbookTest, EachSwitchDropsEntriesPersistsThenAnnounces) {
    book.setMinimumLevel(LogLevel::warning);
    book.setCategoryEnabled(LogCategory::toast(), false);
    book.setCategoryEnabled(LogCategory::mcp(), false);
    for (auto level : {LogLevel::debug, LogLevel::info, LogLevel::warning, LogLevel::error}) {
        log(level, std::string(logLevelName(level)));
    }
    log(LogLevel::error, "toast", LogCategory::toast());
    book.setEnabled(false);
    log(LogLevel::error, "while off");
    EXPECT_THAT(messages(), ElementsAre("warning", "error"));
    EXPECT_THAT(seen, ElementsAre("on/warning/0", "on/warning/1", "on/warning/2", "off/warning/2"));
    EXPECT_EQ(preferences.boolValue("Logbook.isEnabled"), false);
    EXPECT_EQ(preferences.integer("Logbook.minimumLevel"), 2);
    EXPECT_THAT(preferences.stringList("Logbook.disabledCategories").value_or(Strings{}),
                UnorderedElementsAre("mcp", "toast"));

    Logbook reopened(preferences, notifications, clock, nullptr);
    EXPECT_FALSE(reopened.isEnabled());
    EXPECT_EQ(reopened.minimumLevel(), LogLevel::warning);
    EXPECT_EQ(reopened.disabledCategories(), (std::set<std::string>{"mcp", "toast"}));
    reopened.log(LogLevel::error, "Svc", LogCategory::general(), "dropped");
    EXPECT_EQ(reopened.entryCount(), 0u);

    book.setEnabled(true);
    book.setCategoryEnabled(LogCategory::toast(), true);
    log(LogLevel::error, "toast again", LogCategory::toast());
    EXPECT_THAT(messages(), ElementsAre("warning", "error", "toast again"));
    EXPECT_THAT(preferences.stringList("Logbook.disabledCategories").value_or(Strings{}),
                ElementsAre("mcp"));
}

TEST_F(LogbookTest, FiltersRecentEntries) {
    book.log(LogLevel::debug, "Alpha", LogCategory::shortcut(), "Pressed key");
    book.log(LogLevel::info, "Beta", LogCategory::workspace(), "Saved WORKSPACE");
    book.log(LogLevel::warning, "Alpha", LogCategory::workspace(), "workspace missing");
    book.log(LogLevel::error, "Beta", LogCategory::shortcut(), "Key conflict");
    book.log(LogLevel::info, "Alpha", LogCategory::shortcut(), "key released");
    const Strings all = messages();
    // clang-format off
    const std::pair<LogFilter, Strings> cases[] = {
        {{.minimumLevel = LogLevel::warning}, {"workspace missing", "Key conflict"}},
        {{.category = "workspace"}, {"Saved WORKSPACE", "workspace missing"}},
        {{.service = "Beta"}, {"Saved WORKSPACE", "Key conflict"}},
        {{.search = "kEy"}, {"Pressed key", "Key conflict", "key released"}},
        {{.limit = 2}, {"Key conflict", "key released"}},  // the most recent, oldest first
        {{.limit = 10}, all},
        {{.minimumLevel = LogLevel::info, .service = "Alpha", .search = "KEY"}, {"key released"}},
        {{.category = "shortcut", .limit = 1}, {"key released"}},
        {{.category = "Shortcut"}, {}}, {{.service = "alpha"}, {}},
        {{.search = "nothing like this"}, {}}, {{.limit = 0}, {}},
    };
    // clang-format on
    ASSERT_EQ(all.size(), 5u);
    for (const auto& [filter, expected] : cases) {
        EXPECT_EQ(messages(filter), expected);
    }
}

TEST_F(LogbookTest, HandlersGetKeptEntriesAtTheirLevelUntilTheTokenGoesAndMayLog) {
    Strings received;
    auto token = book.addHandler({LogLevel::warning, [&](const LogEntry& entry) {
                                      received.push_back(entry.message);
                                      if (entry.message == "warning") {
                                          log(LogLevel::error, "from inside");
                                      }
                                  }});
    book.setCategoryEnabled(LogCategory::toast(), false);
    log(LogLevel::info, "too low");
    log(LogLevel::warning, "warning");
    log(LogLevel::error, "not kept", LogCategory::toast());
    log(LogLevel::error, "error");
    token.reset();
    log(LogLevel::error, "after the token");
    EXPECT_THAT(received, ElementsAre("warning", "from inside", "error"));
    EXPECT_THAT(messages(),
                ElementsAre("too low", "warning", "from inside", "error", "after the token"));
}

TEST_F(LogbookTest, KeptEntriesReachThePlatformLogWithTheClockTime) {
    const Date start = clock.now();
    log(LogLevel::warning, "first", LogCategory::toast());
    clock.advance(seconds(5));
    book.setMinimumLevel(LogLevel::info);
    log(LogLevel::debug, "dropped", LogCategory::toast());
    book.log(LogLevel::info, "Other", LogCategory::mcp(), "second");

    EXPECT_THAT(messages(), ElementsAre("first", "second"));
    ASSERT_EQ(platformLog.entries.size(), 2u);
    EXPECT_EQ(renderLogText(platformLog.entries, TimeZoneChoice::utc),
              renderLogText(book.recentEntries(), TimeZoneChoice::utc));
    EXPECT_EQ(platformLog.entries[0].timestamp, start);
    EXPECT_EQ(platformLog.entries[1].timestamp, start + seconds(5));
}

TEST_F(LogbookTest, ConcurrentWritersKeepWholeEntriesInOrderAndOnlyTheLatestFiveHundred) {
    constexpr int kWriters = 4;
    for (int perWriter : {100, 400}) {
        RecordingPlatformLog platform;
        Logbook shared(preferences, notifications, clock, &platform);
        std::vector<std::thread> writers;
        for (int w = 0; w < kWriters; ++w) {
            writers.emplace_back([&shared, w, perWriter] {
                const std::string name = "W" + std::to_string(w);
                for (int n = 0; n < perWriter; ++n) {
                    shared.log(LogLevel::info, name, {}, name + ":" + std::to_string(n));
                }
            });
        }
        for (auto& writer : writers) {
            writer.join();
        }

        const auto total = static_cast<std::size_t>(kWriters * perWriter);
        const auto entries = shared.recentEntries();
        EXPECT_EQ(entries.size(), std::min(total, Logbook::kMaxRecentEntries));
        EXPECT_EQ(platform.entries.size(), total);
        // Eviction is oldest first, so each writer keeps an unbroken run ending with its last.
        std::map<std::string, int> kept, next;
        for (const auto& entry : entries) {
            ++kept[entry.service];
        }
        for (const auto& entry : entries) {
            int& n = next.try_emplace(entry.service, perWriter - kept[entry.service]).first->second;
            EXPECT_EQ(entry.message, entry.service + ":" + std::to_string(n++));
        }
    }
}

TEST(LogText, ShowsBothTimestampFormsOnEachLine) {
    const Date when = sys_days{year{2026} / 11 / 21} + hours{10} + minutes{15} + seconds{30};
    const std::vector<LogEntry> entries = {
        {when, LogLevel::warning, "WorkspaceService", LogCategory::workspace(), "Saved"},
        {when + hours{3}, LogLevel::debug, "Svc", LogCategory::general(), "a | b"},
    };
    EXPECT_EQ(
        renderLogText(entries, TimeZoneChoice::utc),
        "2026-11-21T10:15:30Z | Nov 21, 2026 at 10:15:30 AM | WARNING | WorkspaceService | "
        "workspace | Saved\n"
        "2026-11-21T13:15:30Z | Nov 21, 2026 at 1:15:30 PM | DEBUG | Svc | general | a | b\n");
    EXPECT_EQ(renderLogText({}, TimeZoneChoice::utc), "");
}

TEST(LogExcerpt, KeepsShortTextEscapedAndCutsLongTextAtACharacter) {
    const std::pair<std::string, std::string> cases[] = {
        {"list_windows", "list_windows"},
        {"a\nb\r\tc\x1b[0m\x7f", "a\\nb\\r\\tc\\x1b[0m\\x7f"},
        {std::string(14, 'x'), "xxxxxxxxxxxx\xE2\x80\xA6 (14 bytes)"},
        // "é" is two bytes: cut before it, never inside.
        {"12345678901\xC3\xA9", "12345678901\xE2\x80\xA6 (13 bytes)"},
    };
    for (const auto& [text, excerpt] : cases) {
        EXPECT_EQ(logExcerpt(text, 12), excerpt);
    }
    EXPECT_EQ(logExcerpt(std::string(1 << 20, 'm')).size(), kLogExcerptBytes + 19);
}

}  // namespace
}  // namespace corvetta
