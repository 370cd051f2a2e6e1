#include "diagnostics/logging_service.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/logger.h"
#include "support/log_messages.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using Categories = std::vector<std::string>;

class LoggingServiceTest : public ::testing::Test {
protected:
    // Logs "<category>.<level>" at every level in two categories and returns what was kept.
    std::vector<std::string> keptOfEverything(LoggingService& service) {
        book.clear();
        for (const auto& category : {LogCategory::general(), LogCategory::shortcut()}) {
            for (auto level :
                 {LogLevel::debug, LogLevel::info, LogLevel::warning, LogLevel::error}) {
                service.log(level, "Svc", category,
                            category.rawValue + "." + std::string(logLevelName(level)));
            }
        }
        return kept();
    }
    std::vector<std::string> kept() const { return testing::loggedMessages(book); }

    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    Logbook book{preferences, notifications, clock, nullptr};
};

TEST_F(LoggingServiceTest, StoredSwitchesFilterEntries) {
    LoggingService defaults(preferences, book);
    EXPECT_TRUE(defaults.loggingEnabled());
    EXPECT_EQ(defaults.minimumLogLevel(), LogLevel::debug);
    EXPECT_FALSE(defaults.enabledCategories());
    EXPECT_EQ(keptOfEverything(defaults).size(), 8u);

    preferences.set(LoggingService::kMinimumLogLevelKey, 2);
    LoggingService byIndex(preferences, book);
    EXPECT_EQ(byIndex.minimumLogLevel(), LogLevel::warning);
    EXPECT_THAT(keptOfEverything(byIndex), ElementsAre("general.warning", "general.error",
                                                       "shortcut.warning", "shortcut.error"));
    preferences.set(LoggingService::kMinimumLogLevelKey, "error");
    EXPECT_EQ(LoggingService(preferences, book).minimumLogLevel(), LogLevel::error);
    preferences.set(LoggingService::kMinimumLogLevelKey, "1");
    EXPECT_EQ(LoggingService(preferences, book).minimumLogLevel(), LogLevel::info);
    for (PropertyValue unreadable : {PropertyValue(7), PropertyValue(-1), PropertyValue("loud"),
                                     PropertyValue(PropertyValue::Array{})}) {
        preferences.set(LoggingService::kMinimumLogLevelKey, unreadable);
        EXPECT_EQ(LoggingService(preferences, book).minimumLogLevel(), LogLevel::debug);
    }
    preferences.remove(LoggingService::kMinimumLogLevelKey);

    preferences.set(LoggingService::kEnabledCategoriesKey, Categories{"shortcut"});
    LoggingService shortcuts(preferences, book);
    EXPECT_EQ(shortcuts.enabledCategories(), std::set<std::string>{"shortcut"});
    EXPECT_THAT(keptOfEverything(shortcuts), ElementsAre("shortcut.debug", "shortcut.info",
                                                         "shortcut.warning", "shortcut.error"));
    // An empty list is a real choice: no category at all.
    preferences.set(LoggingService::kEnabledCategoriesKey, Categories{});
    shortcuts.reloadSettings();
    EXPECT_FALSE(shortcuts.wouldLog(LogLevel::error, LogCategory::shortcut()));

    preferences.set(LoggingService::kLoggingEnabledKey, false);
    preferences.remove(LoggingService::kEnabledCategoriesKey);
    LoggingService disabled(preferences, book);
    EXPECT_TRUE(keptOfEverything(disabled).empty());
}

TEST_F(LoggingServiceTest, StoredChangesApplyOnlyAfterReload) {
    LoggingService service(preferences, book);
    preferences.set(LoggingService::kLoggingEnabledKey, false);
    preferences.set(LoggingService::kMinimumLogLevelKey, 3);
    preferences.set(LoggingService::kEnabledCategoriesKey, Categories{"mcp"});
    service.log(LogLevel::debug, "Svc", LogCategory::general(), "before reload");
    EXPECT_TRUE(service.loggingEnabled());
    EXPECT_EQ(service.minimumLogLevel(), LogLevel::debug);

    service.reloadSettings();
    EXPECT_FALSE(service.loggingEnabled());
    EXPECT_EQ(service.minimumLogLevel(), LogLevel::error);
    EXPECT_EQ(service.enabledCategories(), std::set<std::string>{"mcp"});

    preferences.set(LoggingService::kLoggingEnabledKey, true);
    preferences.remove(LoggingService::kEnabledCategoriesKey);
    service.reloadSettings();
    service.log(LogLevel::warning, "Svc", LogCategory::general(), "below error");
    service.log(LogLevel::error, "Svc", LogCategory::general(), "after reload");
    EXPECT_FALSE(service.enabledCategories());
    EXPECT_THAT(kept(), ElementsAre("before reload", "after reload"));
}

TEST_F(LoggingServiceTest, LoggerTagsEntriesAndGoesThroughTheSwitches) {
    preferences.set(LoggingService::kEnabledCategoriesKey, Categories{"workspace", "toast", "mcp"});
    LoggingService service(preferences, book);
    const Logger logger(service, "WorkspaceService", LogCategory::workspace());
    logger.debug("d");
    logger.info("i");
    logger.warning("w", LogCategory::toast());
    logger.error("e");
    logger.log(LogLevel::info, "direct", LogCategory::mcp());
    logger.error("general is off", LogCategory::general());
    Logger(service, "Plain").error("default category is general, which is off");

    std::vector<std::string> tagged;
    for (const auto& entry : book.recentEntries()) {
        tagged.push_back(std::string(logLevelName(entry.level)) + " " + entry.service + "[" +
                         entry.category.rawValue + "] " + entry.message);
    }
    EXPECT_THAT(
        tagged,
        ElementsAre("debug WorkspaceService[workspace] d", "info WorkspaceService[workspace] i",
                    "warning WorkspaceService[toast] w", "error WorkspaceService[workspace] e",
                    "info WorkspaceService[mcp] direct"));
}

}  // namespace
}  // namespace corvetta
