#include "diagnostics/logging_manager.h"

#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/logger.h"
#include "support/log_messages.h"

// GCC 12 warns about filter parts a designated initializer leaves out, which is their purpose.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using Categories = std::set<std::string>;

struct PresetCase {
    void (LoggingManager::*method)();
    const char* methodName;
    const char* confirmation;
    const char* presetText;  // null: not reachable by text
    const char* reported;    // null: the check does not name it
    LogLevel level;
    Categories categories;  // empty: every category

    LoggingSwitches switches() const {
        return {true, level, categories.empty() ? std::nullopt : std::optional(categories)};
    }
};

using M = LoggingManager;
using L = LogLevel;
// clang-format off
const std::vector<PresetCase> kPresets = {
    {&M::enableAllLogging, "enableAllLogging", "All logging enabled at debug level",
     "preset.allLogging", nullptr, L::debug, {}},
    {&M::disableDebugLogs, "disableDebugLogs", "Debug logs disabled, keeping warnings and errors only",
     "preset.warningsOnly", "Warnings & Errors Only", L::warning, {}},
    {&M::enableGeneralUsageLogging, "enableGeneralUsageLogging", "General usage logging preset enabled",
     "preset.generalUsage", "General Usage (Less Verbose)", L::info, {}},
    {&M::enableSystemDebugging, "enableSystemDebugging", "System debugging preset enabled",
     nullptr, "System Debugging", L::debug, {"general", "permission", "startup", "system"}},
    {&M::enableShortcutsDebugging, "enableShortcutsDebugging", "Shortcuts debugging preset enabled",
     "preset.shortcuts", "Shortcuts Debugging", L::debug, {"general", "shortcut"}},
    {&M::enableUserInterfaceDebugging, "enableUserInterfaceDebugging",
     "User interface debugging preset enabled", "preset.userInterface", "User Interface Debugging",
     L::debug, {"general", "startup", "toast"}},
    {&M::enableWorkspacesDebugging, "enableWorkspacesDebugging", "Workspaces debugging preset enabled",
     "preset.workspaces", "Workspaces Debugging", L::debug, {"general", "workspace"}},
    {&M::enableScreenDetectionDebugging, "enableScreenDetectionDebugging",
     "Screen detection debugging preset enabled", "preset.screenDetection",
     "Screen Detection Debugging", L::debug, {"general", "system", "windowCalculation"}},
    {&M::enableWindowManagementDebugging, "enableWindowManagementDebugging",
     "Window management debugging preset enabled", "preset.windowManagement",
     "Window Management Debugging", L::debug,
     {"accessibility", "general", "windowCalculation", "windowPositioning"}},
    {&M::enableDeeplinksDebugging, "enableDeeplinksDebugging", "Deeplinks debugging preset enabled",
     "preset.deeplinks", nullptr, L::debug, {"deeplink", "general", "workspace"}},
    {&M::enableMCPDebugging, "enableMCPDebugging", "MCP debugging preset enabled",
     nullptr, nullptr, L::debug, {"general", "mcp"}},
};
// clang-format on

class LoggingManagerTest : public ::testing::Test {
protected:
    std::vector<std::string> lines() const {
        return testing::loggedMessages(book, {.service = "LoggingManager"});
    }

    InMemoryPreferences preferences;
    NotificationCenter notifications;
    ManualClock clock;
    Logbook book{preferences, notifications, clock, nullptr};
    // Reloaded only in the wiring test, so elsewhere the manager's lines show whatever is set.
    LoggingService service{preferences, book};
    LoggingManager manager{preferences, notifications, service};
    // What was stored and logged at each announcement, to prove both came first.
    std::vector<LoggingSwitches> storedAtAnnouncement;
    std::vector<std::size_t> linesAtAnnouncement;
    ObserverToken announcement_ = notifications.addObserver(
        LoggingManager::kSettingsChangedNotification, [this](const Notification&) {
            storedAtAnnouncement.push_back(LoggingSwitches::read(preferences));
            linesAtAnnouncement.push_back(lines().size());
        });
};

TEST_F(LoggingManagerTest, EachPresetLogsWritesAnnouncesOnceAndIsNamedByTheCheck) {
    for (const auto& preset : kPresets) {
        SCOPED_TRACE(preset.methodName);
        book.clear();
        storedAtAnnouncement.clear();
        linesAtAnnouncement.clear();
        (manager.*preset.method)();
        EXPECT_THAT(lines(), ElementsAre(std::string(preset.methodName) + " method called",
                                         preset.confirmation));
        EXPECT_THAT(storedAtAnnouncement, ElementsAre(preset.switches()));
        EXPECT_THAT(linesAtAnnouncement, ElementsAre(2u));

        if (preset.reported) {
            book.clear();
            const std::string expected = std::string("Current preset: ") + preset.reported;
            EXPECT_EQ(manager.checkCurrentPreset(), expected);
            EXPECT_THAT(lines(), ElementsAre("Checking current logging preset...", expected));
        }
        if (preset.presetText) {
            // Switches no preset leaves behind, so every part of the write shows.
            preferences.set(LoggingService::kMinimumLogLevelKey, 3);
            preferences.set(LoggingService::kEnabledCategoriesKey, std::vector<std::string>{"x"});
            EXPECT_TRUE(manager.applyPreset(preset.presetText));
            EXPECT_EQ(LoggingSwitches::read(preferences), preset.switches());
            EXPECT_EQ(lines().back(), preset.confirmation);
        }
    }
}

TEST_F(LoggingManagerTest, UnknownPresetTextChangesNothing) {
    manager.enableShortcutsDebugging();
    const auto before = preferences.snapshot();
    for (const char* text : {"preset.bogus", "", "preset.ALLLOGGING", "enableAllLogging"}) {
        EXPECT_FALSE(manager.applyPreset(text)) << text;
    }
    EXPECT_EQ(preferences.snapshot(), before);
    EXPECT_EQ(storedAtAnnouncement.size(), 1u);
}

TEST_F(LoggingManagerTest, CheckReportsCustomAfterAHandChange) {
    const std::string custom = "Current preset: Custom Configuration";
    manager.setMinimumLogLevel(LogLevel::error);
    EXPECT_EQ(manager.checkCurrentPreset(), custom);
    manager.enableShortcutsDebugging();
    manager.enableCategories({LogCategory::workspace()});
    EXPECT_EQ(manager.checkCurrentPreset(), custom);
    manager.disableDebugLogs();
    manager.setLoggingEnabled(false);
    EXPECT_EQ(manager.checkCurrentPreset(), custom);
    EXPECT_THAT(lines(), Contains(custom));
}

TEST_F(LoggingManagerTest, SingleChangesLogWriteAndAnnounce) {
    manager.setMinimumLogLevel(LogLevel::warning);
    EXPECT_EQ(LoggingSwitches::read(preferences).minimumLevel, LogLevel::warning);
    manager.enableOnlyCategories({LogCategory::workspace(), LogCategory::general()});
    EXPECT_EQ(LoggingSwitches::read(preferences).enabledCategories,
              (Categories{"general", "workspace"}));
    manager.enableCategories({LogCategory::toast()});
    // Category changes keep the level set before them.
    EXPECT_EQ(
        LoggingSwitches::read(preferences),
        (LoggingSwitches{true, LogLevel::warning, Categories{"general", "toast", "workspace"}}));
    manager.enableAllCategories();
    EXPECT_FALSE(preferences.object(LoggingService::kEnabledCategoriesKey));
    // With every category already on, adding some must not narrow the set to just those.
    manager.enableCategories({LogCategory::mcp()});
    EXPECT_FALSE(preferences.object(LoggingService::kEnabledCategoriesKey));

    EXPECT_THAT(lines(), ElementsAre("Set minimum log level to: warning",
                                     "Enabled only categories: general, workspace",
                                     "Enabled categories: toast", "Enabled categories: all",
                                     "Enabled categories: mcp"));
    EXPECT_EQ(storedAtAnnouncement.size(), 5u);
}

TEST_F(LoggingManagerTest, LogsTheCurrentState) {
    manager.logCurrentState();
    EXPECT_THAT(lines(), ElementsAre("Logging enabled: true", "Minimum log level: debug",
                                     "Enabled categories: all"));
    manager.enableSystemDebugging();
    manager.setLoggingEnabled(false);
    book.clear();
    manager.logCurrentState();
    EXPECT_THAT(lines(), ElementsAre("Logging enabled: false", "Minimum log level: debug",
                                     "Enabled categories: general, permission, startup, system"));
}

// Wired as the program does it: the service re-reads its switches on every announcement.
TEST_F(LoggingManagerTest, PresetsReallyFilterOtherServicesButNotTheManager) {
    auto reload = notifications.addObserver(LoggingManager::kSettingsChangedNotification,
                                            [&](const Notification&) { service.reloadSettings(); });
    const Logger workspaces(service, "WorkspaceService", LogCategory::workspace());
    const auto has = [&](const std::string& message) {
        return !book.recentEntries({.search = message}).empty();
    };

    manager.disableDebugLogs();
    EXPECT_TRUE(has("Debug logs disabled, keeping warnings and errors only"));
    workspaces.debug("debug after warnings-only");
    workspaces.warning("warning after warnings-only");
    EXPECT_FALSE(has("debug after warnings-only"));
    EXPECT_TRUE(has("warning after warnings-only"));

    manager.enableShortcutsDebugging();
    workspaces.error("workspace after shortcuts");
    workspaces.debug("shortcut after shortcuts", LogCategory::shortcut());
    EXPECT_FALSE(has("workspace after shortcuts"));
    EXPECT_TRUE(has("shortcut after shortcuts"));
}

}  // namespace
}  // namespace corvetta
