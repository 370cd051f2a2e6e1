#include "appearance/theme_manager.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "appearance/builtin_themes.h"
#include "appearance/theme_import_service.h"
#include "foundation/json.h"
#include "platform/settable_system_appearance.h"
#include "support/temporary_folder.h"
#include "support/test_logging.h"

namespace corvetta {
namespace {

using testing::readTestFile;
using testing::writeTestFile;

// A complete variant, every colour `fill`, with one key changed, removed (nullopt) or kept.
Json variant(const std::string& fill = "#112233", const std::string& key = "",
             std::optional<std::string> value = std::nullopt) {
    Json colors = Json::object();
    for (const auto& role : themeRoles()) {
        colors[std::string(role.key)] = fill;
    }
    if (!key.empty()) {
        value ? void(colors[key] = *value) : void(colors.erase(key));
    }
    return colors;
}

std::string themeText(const Json& light, const Json& dark = Json(), const char* name = "Mine") {
    Json theme{{"name", name}};
    if (!light.is_null()) {
        theme["light"] = light;
    }
    if (!dark.is_null()) {
        theme["dark"] = dark;
    }
    return writeJson(theme, JsonStyle::compact);
}

TEST(ThemeImportServiceTest, RefusesWhatIsNotAThemeWithTheMessageTheUserSees) {
    const std::string notATheme =
        "This file isn't a valid Corvetta theme. Make sure it's a JSON file matching the Corvetta "
        "theme format.";
    const auto badColor = [](const std::string& value) {
        return "The color \"" + value +
               "\" isn't a valid hex color (expected a format like #RRGGBB or #RRGGBBAA).";
    };
    const auto missing = [](const std::string& key) {
        return "The theme file is missing a required \"" + key + "\" value.";
    };
    const struct {
        std::string text;
        std::optional<std::string> message;  // nullopt: accepted
    } cases[] = {
        {themeText(variant()), std::nullopt},
        {themeText(Json(), variant("#00000014")), std::nullopt},
        {themeText(variant("#112233", "accent", "AUTO")), std::nullopt},
        {themeText(variant("#112233", "accent", "  #aabbcc ")), std::nullopt},
        {R"({"name":"Mine"})", R"(The theme must define at least one of "light" or "dark".)"},
        {themeText(variant("#112233", "backgroundWindow", "auto")), badColor("auto")},
        {themeText(variant(), variant("#112233", "textPrimary", "#ABC")), badColor("#ABC")},
        {themeText(variant("#GGGGGG")), badColor("#GGGGGG")},
        {themeText(variant("#112233", "spaceColor")), missing("spaceColor")},
        {R"({"light":{}})", missing("name")},
        // The shape is checked before any colour.
        {themeText(variant("#GGGGGG"), variant("#112233", "borderCard")), missing("borderCard")},
        {"[1, 2]", notATheme},
        {R"({"name": "Mine", "light": "#FFFFFF"})", notATheme},
        {"{not json", notATheme},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto parsed = ThemeImportService::parse(c.text);
        ASSERT_EQ(parsed.has_value(), !c.message);
        if (c.message) {
            EXPECT_EQ(parsed.error().message(), *c.message);
        }
    }
}

TEST(BuiltInThemesTest, AreValidDistinctAndIncludeTheNamedPalettes) {
    std::set<std::string> ids;
    for (const auto& theme : builtInThemes()) {
        ids.insert(theme.id);
        const auto reread = decodeThemeDefinition(encodeThemeDefinition(theme));
        ASSERT_TRUE(reread) << theme.id << ": " << reread.error();
        EXPECT_EQ(*reread, theme);
    }
    EXPECT_EQ(ids.size(), builtInThemes().size());
    EXPECT_EQ(builtInThemes().front().id, kDefaultThemeId);
    for (const char* id : {"catppuccin-macchiato", "catppuccin-frappe", "dracula", "nord",
                           "gruvbox", "monokai", "github", "kanagawa"}) {
        EXPECT_EQ(ids.count(id), 1U) << id;
    }
}

class ThemeManagerTest : public ::testing::Test {
protected:
    std::unique_ptr<ThemeManager> makeManager() {
        return std::make_unique<ThemeManager>(ThemeManager::Services{
            defaults, accents, appearance, clock, logging.logging, folder / "Themes"});
    }
    std::filesystem::path themeFile(const std::string& id) {
        return folder / "Themes" / (id + ".json");
    }

    testing::TemporaryFolder folder;
    ManualClock clock;
    NotificationCenter notifications;
    testing::TestLogging logging{notifications, clock};
    InMemoryPreferences defaults;
    ThemeColorService accents{defaults, logging.logging};
    SettableSystemAppearance appearance;
    std::unique_ptr<ThemeManager> manager = makeManager();
};

TEST_F(ThemeManagerTest, ImportSavesSelectsAndSurvivesARestart) {
    const auto imported = manager->importTheme(themeText(Json(), variant("#102030")));
    ASSERT_TRUE(imported);
    EXPECT_TRUE(imported->id.starts_with("custom."));
    EXPECT_EQ(imported->light, imported->dark);
    EXPECT_EQ(manager->current().id, imported->id);
    EXPECT_EQ(manager->installedThemes().back().id, imported->id);

    // Editing keeps the id; "editing" a built-in makes a new theme.
    const auto edited = manager->importTheme(themeText(variant("#FFFFFF")), imported->id);
    ASSERT_TRUE(edited);
    EXPECT_EQ(edited->id, imported->id);
    const auto copy = manager->importTheme(themeText(variant()), std::string("nord"));
    ASSERT_TRUE(copy);
    EXPECT_NE(copy->id, "nord");
    ASSERT_TRUE(manager->select(imported->id));

    manager = makeManager();
    EXPECT_EQ(manager->current(), *edited);
    EXPECT_EQ(defaults.stringList(ThemeManager::kImportedThemeIDsKey),
              (std::vector<std::string>{imported->id, copy->id}));
    EXPECT_EQ(manager->installedThemes().size(), builtInThemes().size() + 2);
}

TEST_F(ThemeManagerTest, FailedImportsChangeNothing) {
    ASSERT_TRUE(manager->select("nord"));
    EXPECT_EQ(manager->importTheme(R"({"name":"x"})").error().kind,
              ThemeImportError::Kind::missingVariant);
    EXPECT_EQ(manager->importThemeFile(folder / "absent.json").error().kind,
              ThemeImportError::Kind::readFailed);
    writeTestFile(folder / "Themes", "a file where the folder should be");
    const auto unwritable = manager->importTheme(themeText(variant()));
    ASSERT_FALSE(unwritable);
    EXPECT_EQ(unwritable.error().kind, ThemeImportError::Kind::writeFailed);
    EXPECT_EQ(manager->current().id, "nord");
    EXPECT_EQ(manager->installedThemes().size(), builtInThemes().size());
    EXPECT_FALSE(defaults.object(ThemeManager::kImportedThemeIDsKey));
}

TEST_F(ThemeManagerTest, StartSkipsMissingAndDamagedFilesAndFallsBackToDefault) {
    const auto kept = manager->importTheme(themeText(variant()));
    ASSERT_TRUE(kept);
    writeTestFile(themeFile("custom.damaged"), "{\"name\": ");
    defaults.set(ThemeManager::kImportedThemeIDsKey,
                 PropertyValue(std::vector<std::string>{"custom.gone", "custom.damaged", kept->id,
                                                        "../escape"}));
    defaults.set(ThemeManager::kSelectedThemeIDKey, PropertyValue("custom.gone"));

    manager = makeManager();
    EXPECT_EQ(manager->current().id, kDefaultThemeId);
    EXPECT_EQ(manager->installedThemes().back().id, kept->id);
    for (const char* id : {"custom.gone", "custom.damaged", "../escape"}) {
        EXPECT_TRUE(logging.contains(std::string("Skipping imported theme ") + id)) << id;
    }
    // The damaged file is kept aside, not deleted.
    EXPECT_FALSE(std::filesystem::exists(themeFile("custom.damaged")));
    int quarantined = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "Themes")) {
        quarantined += entry.path().filename().string().starts_with("custom.damaged-quarantine");
    }
    EXPECT_EQ(quarantined, 1);
}

TEST_F(ThemeManagerTest, DeletingTheCurrentThemeFallsBackAndBuiltInsCannotBeDeleted) {
    const auto a = manager->importTheme(themeText(variant()));
    const auto b = manager->importTheme(themeText(variant()));
    ASSERT_TRUE(a && b);
    EXPECT_FALSE(manager->deleteTheme("dracula"));
    EXPECT_FALSE(manager->deleteTheme("custom.unknown"));

    std::filesystem::remove(themeFile(a->id));
    ASSERT_TRUE(manager->deleteTheme(a->id));
    EXPECT_TRUE(logging.contains("Failed to delete imported theme file for " + a->id));
    EXPECT_EQ(manager->current().id, b->id);

    ASSERT_TRUE(manager->deleteTheme(b->id));
    EXPECT_FALSE(std::filesystem::exists(themeFile(b->id)));
    EXPECT_EQ(manager->current().id, kDefaultThemeId);
    EXPECT_EQ(defaults.stringList(ThemeManager::kImportedThemeIDsKey), std::vector<std::string>{});
    EXPECT_FALSE(manager->select(b->id));
}

TEST_F(ThemeManagerTest, ColoursFollowTheAppearanceAndTheAccentSettings) {
    int changes = 0;
    const auto observation = manager->observe([&] { ++changes; });
    ASSERT_TRUE(manager->importTheme(themeText(variant("#FFFFFF", "accent", "auto"),
                                               variant("#00000080", "accent", "#FF0000"))));
    EXPECT_DOUBLE_EQ(manager->vibrancyTranslucency(), 0.7);

    const ThemeColor blue = *parseHexColor(ThemeColorService::defaultColor(ThemeRole::accent));
    const ThemeColor black{0, 0, 0, 128 / 255.0};
    const ThemeColor green{0, 1, 0, 1};
    const struct {
        SystemAppearance system;
        bool fallbackDark;
        ThemeColor background;
        ThemeColor accent;
    } cases[] = {
        {SystemAppearance::unknown, false, {1, 1, 1, 1}, blue},
        {SystemAppearance::unknown, true, black, {1, 0, 0, 1}},
        {SystemAppearance::light, true, {1, 1, 1, 1}, blue},
        {SystemAppearance::dark, false, black, {1, 0, 0, 1}},
    };
    for (const auto& c : cases) {
        appearance.set(c.system);
        manager->setFallbackAppearance(c.fallbackDark);
        EXPECT_EQ(manager->color(ThemeRole::backgroundWindow), c.background);
        EXPECT_EQ(manager->color(ThemeRole::accent), c.accent);
    }
    // The user's accent reaches "auto" colours only.
    appearance.set(SystemAppearance::light);
    ASSERT_TRUE(accents.setColor(ThemeRole::accent, "#00FF00"));
    EXPECT_FALSE(accents.setColor(ThemeRole::textPrimary, "#00FF00"));
    EXPECT_FALSE(accents.setColor(ThemeRole::accent, "auto"));
    EXPECT_EQ(manager->color(ThemeRole::accent), green);
    EXPECT_EQ(manager->resolvedDark()[ThemeRole::accent], (ThemeColor{1, 0, 0, 1}));
    EXPECT_GE(changes, 6);
}

}  // namespace
}  // namespace corvetta
