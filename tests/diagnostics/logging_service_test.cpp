#include "diagnostics/logging_service.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/logger.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;

class LoggingServiceTest : public ::testing::Test {
protected:
    std::vector<std::string> kept() const {
        std::vector<std::string> messages;
        for (const auto& entry : book.recentEntries()) {
            messages.push_back(entry.message);
        }
        return messages;
    }

    // One line at every level in each of two categories, named "<category>.<level>".
    void logEverything(LoggingService& service) {
        for (const auto& category : {LogCategory::general(), LogCategory::shortcut()}) {
            for (auto level :
                 {LogLevel::debug, LogLevel::info, LogLevel::warning, LogLevel::error}) {
                service.log(level, "Svc", category,
                            category.rawValue + "." + std::string(logLevelName(level)));
            }
        }
    }

    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    Logbook book{preferences, notifications, clock, nullptr};
};

TEST_F(LoggingServiceTest, PassesEverythingWhenNothingIsStored) {
    LoggingService service(preferences, book);
    EXPECT_TRUE(service.loggingEnabled());
    EXPECT_EQ(service.minimumLogLevel(), LogLevel::debug);
    EXPECT_FALSE(service.enabledCategories());
    logEverything(service);
    EXPECT_EQ(book.entryCount(), 8u);
}

TEST_F(LoggingServiceTest, DisabledLoggingDropsEverything) {
    preferences.set(LoggingService::kLoggingEnabledKey, false);
    LoggingService service(preferences, book);
    logEverything(service);
    EXPECT_EQ(book.entryCount(), 0u);
}

TEST_F(LoggingServiceTest, MinimumLevelReadsAnIndexOrAName) {
    preferences.set(LoggingService::kMinimumLogLevelKey, 2);
    LoggingService byIndex(preferences, book);
    EXPECT_EQ(byIndex.minimumLogLevel(), LogLevel::warning);
    logEverything(byIndex);
    EXPECT_THAT(kept(), ElementsAre("general.warning", "general.error", "shortcut.warning",
                                    "shortcut.error"));

    preferences.set(LoggingService::kMinimumLogLevelKey, "error");
    EXPECT_EQ(LoggingService(preferences, book).minimumLogLevel(), LogLevel::error);
    preferences.set(LoggingService::kMinimumLogLevelKey, "1");
    EXPECT_EQ(LoggingService(preferences, book).minimumLogLevel(), LogLevel::info);
}

TEST_F(LoggingServiceTest, UnreadableMinimumLevelFallsBackToDebug) {
    for (PropertyValue stored : {PropertyValue(7), PropertyValue(-1), PropertyValue("loud"),
                                 PropertyValue(PropertyValue::Array{})}) {
        preferences.set(LoggingService::kMinimumLogLevelKey, stored);
        EXPECT_EQ(LoggingService(preferences, book).minimumLogLevel(), LogLevel::debug);
    }
}

TEST_F(LoggingServiceTest, EnabledCategoriesDropTheOthers) {
    preferences.set(LoggingService::kEnabledCategoriesKey, std::vector<std::string>{"shortcut"});
    LoggingService service(preferences, book);
    EXPECT_EQ(service.enabledCategories(), std::set<std::string>{"shortcut"});
    logEverything(service);
    EXPECT_THAT(kept(), ElementsAre("shortcut.debug", "shortcut.info", "shortcut.warning",
                                    "shortcut.error"));
    EXPECT_FALSE(service.wouldLog(LogLevel::error, LogCategory::general()));

    // An empty list is a real choice: no category at all.
    preferences.set(LoggingService::kEnabledCategoriesKey, std::vector<std::string>{});
    service.reloadSettings();
    EXPECT_FALSE(service.wouldLog(LogLevel::error, LogCategory::shortcut()));
}

TEST_F(LoggingServiceTest, StoredChangesApplyOnlyAfterReload) {
    LoggingService service(preferences, book);
    preferences.set(LoggingService::kLoggingEnabledKey, false);
    preferences.set(LoggingService::kMinimumLogLevelKey, 3);
    preferences.set(LoggingService::kEnabledCategoriesKey, std::vector<std::string>{"mcp"});
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

TEST_F(LoggingServiceTest, LoggerTagsEntriesWithItsServiceAndCategory) {
    LoggingService service(preferences, book);
    const Logger logger(service, "WorkspaceService", LogCategory::workspace());
    logger.debug("d");
    logger.info("i");
    logger.warning("w", LogCategory::toast());
    logger.error("e");
    logger.log(LogLevel::info, "direct", LogCategory::mcp());

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

TEST_F(LoggingServiceTest, LoggerGoesThroughTheServiceSwitches) {
    preferences.set(LoggingService::kEnabledCategoriesKey, std::vector<std::string>{"toast"});
    LoggingService service(preferences, book);
    const Logger logger(service, "Svc");
    EXPECT_EQ(logger.defaultCategory(), LogCategory::general());
    logger.error("general is off");
    logger.info("toast is on", LogCategory::toast());
    EXPECT_THAT(kept(), ElementsAre("toast is on"));
}

}  // namespace
}  // namespace corvetta
