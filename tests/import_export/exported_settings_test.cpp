#include "import_export/exported_settings.h"

#include <gtest/gtest.h>

#include "foundation/clock.h"
#include "import_export/exported_settings_json.h"
#include "shortcuts/hot_key_store.h"
#include "support/test_logging.h"

namespace corvetta {
namespace {

class ExportedSettingsTest : public ::testing::Test {
protected:
    ManualClock clock;
    NotificationCenter notifications;
    testing::TestLogging log{notifications, clock};
    InMemoryPreferences defaults;
    HotKeyStore hotKeys{defaults, notifications, log.logging};
};

TEST_F(ExportedSettingsTest, ExportsEveryKeyWithStoredValuesOrDefaults) {
    defaults.set("gapSize", 12.0);
    defaults.set("sizeOffset", -4.0);  // out of range: what the calculations use is the default
    defaults.set("dragToSnapEnabled", false);
    defaults.set("userExcludedBundleIDs", std::vector<std::string>{"org.example.game"});
    hotKeys.setShortcut(libraryShortcutName("topThird"), HotKeyShortcut{17, 0x100});
    hotKeys.setShortcut(libraryShortcutName("leftHalf"), std::nullopt);

    const auto settings = currentExportedSettings(defaults, hotKeys);
    EXPECT_EQ(settings.values.size(), exportedSettingTable().size());
    EXPECT_EQ(settings.values.at("gapSize"), PropertyValue(12.0));
    EXPECT_EQ(settings.values.at("sizeOffset"), PropertyValue(30.0));
    EXPECT_EQ(settings.values.at("dragToSnapEnabled"), PropertyValue(false));
    EXPECT_EQ(settings.values.at("showToastNotifications"), PropertyValue(true));
    EXPECT_EQ(settings.values.at("snapModifiers"), PropertyValue(0));
    EXPECT_EQ(settings.values.at("userExcludedBundleIDs"),
              PropertyValue(std::vector<std::string>{"org.example.game"}));
    // Shortcuts in effect: the user's, the defaults nobody touched, never a cleared one.
    EXPECT_EQ(settings.shortcuts.at("topThird"), (Shortcut{17, 0x100000}));
    EXPECT_EQ(settings.shortcuts.at("rightHalf").keyCode, 124);
    EXPECT_EQ(settings.shortcuts.count("leftHalf"), 0U);

    const auto json = exportedSettingsToJson(settings);
    EXPECT_EQ(json["shortcuts"]["topThird"],
              Json::parse(R"({"keyCode": 17, "modifiers": 1048576})"));
    EXPECT_EQ(exportedSettingsFromJson(json), settings);
}

TEST_F(ExportedSettingsTest, DecodingIsStrictAboutKindsAndLenientAboutAbsence) {
    const auto partial = exportedSettingsFromJson(Json::parse(R"({"gapSize": 8})"));
    EXPECT_EQ(partial.values, (std::map<std::string, PropertyValue>{{"gapSize", 8.0}}));
    EXPECT_TRUE(partial.shortcuts.empty());

    const char* damaged[][2] = {
        {R"({"gapSize": "wide"})", "settings.gapSize"},
        {R"({"dragToSnapEnabled": 1})", "settings.dragToSnapEnabled"},
        {R"({"userExcludedBundleIDs": [3]})", "settings.userExcludedBundleIDs"},
        {R"({"shortcuts": {"leftHalf": {"keyCode": 1}}})", "settings.shortcuts.leftHalf"},
        {R"({"shortcuts": []})", "settings.shortcuts"},
    };
    for (const auto& [text, path] : damaged) {
        try {
            exportedSettingsFromJson(Json::parse(text));
            ADD_FAILURE() << text;
        } catch (const JsonDecodeError& error) {
            EXPECT_EQ(error.path(), path) << text;
        }
    }
}

TEST_F(ExportedSettingsTest, ApplyingStoresChangesAndSkipsWhatCannotBeStored) {
    defaults.set("layoutSpacing", 6.0);
    ExportedSettings settings;
    settings.values = {{"layoutSpacing", 6.0},        // unchanged
                       {"gapSize", 9.0},              // changed
                       {"almostMaximizeWidth", 3.0},  // a fraction cannot be 3
                       {"snapModifiers", -1},
                       {"futureSetting", true}};
    settings.shortcuts = {{"topThird", Shortcut{17, 0x100000}},
                          {"noSuchAction", Shortcut{1, 0}},
                          {"bottomThird", Shortcut{70000, 0}}};

    const auto applied = applyExportedSettings(settings, defaults, hotKeys);
    EXPECT_EQ(applied.changedKeys, std::vector<std::string>{"gapSize"});
    EXPECT_EQ(applied.changedShortcuts, std::vector<std::string>{"topThird"});
    EXPECT_EQ(
        applied.skipped,
        (std::vector<std::string>{
            "almostMaximizeWidth: out of range", "futureSetting: not a setting of this version",
            "snapModifiers: not a modifier mask", "bottomThird: not a key code",
            "noSuchAction: not a shortcut of this version"}));
    EXPECT_EQ(defaults.doubleValue("gapSize"), 9.0);
    EXPECT_FALSE(defaults.object("almostMaximizeWidth").has_value());
    EXPECT_EQ(hotKeys.shortcut(libraryShortcutName("topThird")), (HotKeyShortcut{17, 0x100}));
}

}  // namespace
}  // namespace corvetta
