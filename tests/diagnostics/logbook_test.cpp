#include "diagnostics/logbook.h"

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/log_text.h"

// GCC 12 warns about members a designated initializer leaves to their defaults, which is the
// whole point of the optional filter parts.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
using Strings = std::vector<std::string>;
using namespace std::chrono;

class RecordingPlatformLog final : public PlatformLog {
public:
    void write(const LogEntry& entry) override {
        std::lock_guard lock(mutex_);
        entries_.push_back(entry);
    }
    std::vector<LogEntry> entries() const {
        std::lock_guard lock(mutex_);
        return entries_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<LogEntry> entries_;
};

std::vector<std::string> messagesOf(const std::vector<LogEntry>& entries) {
    std::vector<std::string> messages;
    for (const auto& entry : entries) {
        messages.push_back(entry.message);
    }
    return messages;
}

class LogbookTest : public ::testing::Test {
protected:
    // Records what the book showed while each settings notification was posted, so a test can
    // tell the change was in force before observers heard of it.
    LogbookTest() {
        token_ = notifications.addObserver(
            Logbook::kSettingsChangedNotification, [this](const Notification&) {
                seen.push_back(std::string(book.isEnabled() ? "on" : "off") + "/" +
                               std::string(logLevelName(book.minimumLevel())) + "/" +
                               std::to_string(book.disabledCategories().size()));
            });
    }

    std::vector<std::string> messages(const LogFilter& filter = {}) const {
        return messagesOf(book.recentEntries(filter));
    }

    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    RecordingPlatformLog platformLog;
    Logbook book{preferences, notifications, clock, &platformLog};
    std::vector<std::string> seen;
    ObserverToken token_;
};

TEST_F(LogbookTest, KeepsTheMostRecentFiveHundredOldestFirst) {
    for (int i = 0; i <= 500; ++i) {
        book.log(LogLevel::info, "Svc", LogCategory::general(), "m" + std::to_string(i));
    }
    const auto entries = book.recentEntries();
    ASSERT_EQ(entries.size(), Logbook::kMaxRecentEntries);
    EXPECT_EQ(entries.front().message, "m1");
    EXPECT_EQ(entries.back().message, "m500");
    book.clear();
    EXPECT_EQ(book.entryCount(), 0u);
}

TEST_F(LogbookTest, LogsEverythingWhenNothingIsStored) {
    EXPECT_TRUE(book.isEnabled());
    EXPECT_EQ(book.minimumLevel(), LogLevel::debug);
    EXPECT_TRUE(book.disabledCategories().empty());
    book.log(LogLevel::debug, "Svc", LogCategory::toast(), "hello");
    EXPECT_EQ(book.entryCount(), 1u);
}

TEST_F(LogbookTest, DisablingDropsEntriesPersistsAndAnnounces) {
    book.setEnabled(false);
    book.log(LogLevel::error, "Svc", LogCategory::general(), "dropped");
    EXPECT_EQ(book.entryCount(), 0u);
    EXPECT_THAT(seen, ElementsAre("off/debug/0"));
    EXPECT_EQ(preferences.boolValue("Logbook.isEnabled"), false);

    Logbook reopened(preferences, notifications, clock, nullptr);
    EXPECT_FALSE(reopened.isEnabled());
    reopened.log(LogLevel::error, "Svc", LogCategory::general(), "dropped");
    EXPECT_EQ(reopened.entryCount(), 0u);
}

TEST_F(LogbookTest, MinimumLevelDropsLowerEntriesAndIsStoredAsItsIndex) {
    book.setMinimumLevel(LogLevel::warning);
    for (auto level : {LogLevel::debug, LogLevel::info, LogLevel::warning, LogLevel::error}) {
        book.log(level, "Svc", LogCategory::general(), std::string(logLevelName(level)));
    }
    EXPECT_THAT(messages(), ElementsAre("warning", "error"));
    EXPECT_THAT(seen, ElementsAre("on/warning/0"));
    EXPECT_EQ(preferences.integer("Logbook.minimumLevel"), 2);
    EXPECT_EQ(Logbook(preferences, notifications, clock, nullptr).minimumLevel(),
              LogLevel::warning);
}

TEST_F(LogbookTest, StoredLevelOutOfRangeFallsBackToDebug) {
    InMemoryPreferences stored({{"Logbook.minimumLevel", 9}});
    EXPECT_EQ(Logbook(stored, notifications, clock, nullptr).minimumLevel(), LogLevel::debug);
}

TEST_F(LogbookTest, DisabledCategoriesDropEntriesPersistAndCanBeReenabled) {
    book.setCategoryEnabled(LogCategory::toast(), false);
    book.setCategoryEnabled(LogCategory::mcp(), false);
    book.log(LogLevel::error, "Svc", LogCategory::toast(), "toast");
    book.log(LogLevel::info, "Svc", LogCategory::shortcut(), "shortcut");
    EXPECT_THAT(messages(), ElementsAre("shortcut"));
    EXPECT_THAT(seen, ElementsAre("on/debug/1", "on/debug/2"));
    EXPECT_THAT(preferences.stringList("Logbook.disabledCategories").value_or(Strings{}),
                UnorderedElementsAre("mcp", "toast"));

    Logbook reopened(preferences, notifications, clock, nullptr);
    EXPECT_EQ(reopened.disabledCategories(), (std::set<std::string>{"mcp", "toast"}));

    book.setCategoryEnabled(LogCategory::toast(), true);
    book.log(LogLevel::info, "Svc", LogCategory::toast(), "toast again");
    EXPECT_EQ(book.recentEntries().back().message, "toast again");
    EXPECT_THAT(preferences.stringList("Logbook.disabledCategories").value_or(Strings{}),
                ElementsAre("mcp"));
}

TEST_F(LogbookTest, SwitchesLiveUnderTheGivenPrefix) {
    Logbook other(preferences, notifications, clock, nullptr, "Other");
    other.setEnabled(false);
    EXPECT_EQ(preferences.boolValue("Other.isEnabled"), false);
    EXPECT_FALSE(preferences.object("Logbook.isEnabled"));
    EXPECT_TRUE(book.isEnabled());
}

TEST_F(LogbookTest, FiltersRecentEntries) {
    book.log(LogLevel::debug, "Alpha", LogCategory::shortcut(), "Pressed key");
    book.log(LogLevel::info, "Beta", LogCategory::workspace(), "Saved WORKSPACE");
    book.log(LogLevel::warning, "Alpha", LogCategory::workspace(), "workspace missing");
    book.log(LogLevel::error, "Beta", LogCategory::shortcut(), "Key conflict");
    book.log(LogLevel::info, "Alpha", LogCategory::shortcut(), "key released");

    EXPECT_THAT(messages({.minimumLevel = LogLevel::warning}),
                ElementsAre("workspace missing", "Key conflict"));
    EXPECT_THAT(messages({.category = "workspace"}),
                ElementsAre("Saved WORKSPACE", "workspace missing"));
    EXPECT_THAT(messages({.service = "Beta"}), ElementsAre("Saved WORKSPACE", "Key conflict"));
    EXPECT_THAT(messages({.search = "kEy"}),
                ElementsAre("Pressed key", "Key conflict", "key released"));
    // The most recent matches, still oldest first.
    EXPECT_THAT(messages({.limit = 2}), ElementsAre("Key conflict", "key released"));
    EXPECT_EQ(book.recentEntries({.limit = 10}).size(), 5u);
    EXPECT_TRUE(book.recentEntries({.limit = 0}).empty());

    EXPECT_THAT(messages({.minimumLevel = LogLevel::info, .service = "Alpha", .search = "KEY"}),
                ElementsAre("key released"));
    EXPECT_THAT(messages({.category = "shortcut", .limit = 1}), ElementsAre("key released"));
    EXPECT_TRUE(book.recentEntries({.category = "Shortcut"}).empty());
    EXPECT_TRUE(book.recentEntries({.service = "alpha"}).empty());
    EXPECT_TRUE(book.recentEntries({.search = "nothing like this"}).empty());
}

TEST_F(LogbookTest, HandlersGetKeptEntriesAtTheirLevelUntilTheTokenGoes) {
    std::vector<std::string> received;
    auto token = book.addHandler(
        {LogLevel::warning, [&](const LogEntry& entry) { received.push_back(entry.message); }});
    book.setCategoryEnabled(LogCategory::toast(), false);

    book.log(LogLevel::info, "Svc", LogCategory::general(), "too low");
    book.log(LogLevel::warning, "Svc", LogCategory::general(), "warning");
    book.log(LogLevel::error, "Svc", LogCategory::toast(), "not kept");
    book.log(LogLevel::error, "Svc", LogCategory::general(), "error");
    token.reset();
    book.log(LogLevel::error, "Svc", LogCategory::general(), "after the token");

    EXPECT_THAT(received, ElementsAre("warning", "error"));
}

TEST_F(LogbookTest, HandlerMayLogFromInsideItself) {
    std::vector<std::string> received;
    auto token = book.addHandler({LogLevel::debug, [&](const LogEntry& entry) {
                                      received.push_back(entry.message);
                                      if (entry.message == "outer") {
                                          book.log(LogLevel::info, "Handler",
                                                   LogCategory::general(), "inner");
                                      }
                                  }});
    book.log(LogLevel::info, "Svc", LogCategory::general(), "outer");
    EXPECT_THAT(received, ElementsAre("outer", "inner"));
    EXPECT_THAT(messages(), ElementsAre("outer", "inner"));
}

TEST_F(LogbookTest, KeptEntriesReachThePlatformLogWithTheClockTime) {
    const Date start = clock.now();
    book.log(LogLevel::warning, "Svc", LogCategory::toast(), "first");
    clock.advance(seconds(5));
    book.setMinimumLevel(LogLevel::info);
    book.log(LogLevel::debug, "Svc", LogCategory::toast(), "dropped");
    book.log(LogLevel::info, "Other", LogCategory::mcp(), "second");

    // The platform log sees exactly what the book kept, field for field.
    const auto written = platformLog.entries();
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(renderLogText(written, TimeZoneChoice::utc),
              renderLogText(book.recentEntries(), TimeZoneChoice::utc));
    EXPECT_THAT(messagesOf(written), ElementsAre("first", "second"));
    EXPECT_EQ(written[0].timestamp, start);
    EXPECT_EQ(written[1].timestamp, start + seconds(5));
}

// Runs `threads` writers of `perThread` entries each and checks the book kept the last entries
// whole: each message names its writer and sequence, and each writer's entries stay in order.
void logConcurrently(int threads, int perThread) {
    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    RecordingPlatformLog platformLog;
    Logbook book(preferences, notifications, clock, &platformLog);

    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t) {
        writers.emplace_back([&book, t, perThread] {
            for (int n = 0; n < perThread; ++n) {
                book.log(LogLevel::info, "T" + std::to_string(t), LogCategory::general(),
                         std::to_string(t) + ":" + std::to_string(n));
            }
        });
    }
    for (auto& writer : writers) {
        writer.join();
    }

    const std::size_t total = static_cast<std::size_t>(threads * perThread);
    const auto entries = book.recentEntries();
    EXPECT_EQ(entries.size(), std::min(total, Logbook::kMaxRecentEntries));
    EXPECT_EQ(platformLog.entries().size(), total);
    // Eviction is strictly oldest first, so what survives of each writer is an unbroken run
    // that ends with its final entry.
    std::vector<int> lastSeen(static_cast<std::size_t>(threads), -1);
    for (const auto& entry : entries) {
        const auto colon = entry.message.find(':');
        ASSERT_NE(colon, std::string::npos) << entry.message;
        const int t = std::stoi(entry.message.substr(0, colon));
        const int n = std::stoi(entry.message.substr(colon + 1));
        ASSERT_EQ(entry.service, "T" + std::to_string(t));
        int& last = lastSeen[static_cast<std::size_t>(t)];
        if (last >= 0) {
            EXPECT_EQ(n, last + 1) << entry.message;
        }
        last = n;
    }
    for (int last : lastSeen) {
        EXPECT_TRUE(last == -1 || last == perThread - 1) << last;
    }
}

TEST(LogbookConcurrency, ManyWritersBelowCapacityLoseNothing) {
    logConcurrently(4, 100);
}

TEST(LogbookConcurrency, ManyWritersAboveCapacityKeepExactlyTheLimit) {
    logConcurrently(4, 400);
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

}  // namespace
}  // namespace corvetta
