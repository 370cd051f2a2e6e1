// theme_manager.h: The installed themes, the one in force, and its colours for the appearance.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "appearance/theme_color_service.h"
#include "appearance/theme_definition.h"
#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "foundation/expected.h"
#include "foundation/observer_list.h"
#include "foundation/preferences.h"
#include "platform/system_appearance.h"

namespace corvetta {

// Holds the built-in themes and the user's imported ones, which one is in force, and its colours
// with "auto" resolved for the light and dark variant. Imported themes live one file each
// ("<id>.json") in the themes folder; their ids, in import order, under "importedThemeIDs". A file
// that is missing or damaged at start is skipped ("Skipping imported theme <id>"), a damaged one
// kept aside under a quarantine name. Main thread only.
class ThemeManager {
public:
    static constexpr const char* kServiceName = "ThemeManager";
    static constexpr const char* kSelectedThemeIDKey = "selectedThemeID";
    static constexpr const char* kImportedThemeIDsKey = "importedThemeIDs";
    static constexpr const char* kVibrancyTranslucencyKey = "vibrancyTranslucency";
    static constexpr double kDefaultVibrancyTranslucency = 0.7;

    struct Services {
        Preferences& defaults;
        ThemeColorService& accentColors;
        SystemAppearancePort& appearance;
        const Clock& clock;
        LoggingService& logging;
        // "Themes" in the application-support folder; created when the first theme is saved.
        std::filesystem::path themesFolder;
    };

    explicit ThemeManager(Services services);
    ThemeManager(const ThemeManager&) = delete;
    ThemeManager& operator=(const ThemeManager&) = delete;

    const ThemeDefinition& current() const;
    // Built-ins in their fixed order, then imported ones in import order.
    const std::vector<ThemeDefinition>& installedThemes() const { return installed_; }
    const ThemeDefinition* find(std::string_view id) const;
    double vibrancyTranslucency() const;

    const ResolvedThemeColors& resolvedLight() const { return resolvedLight_; }
    const ResolvedThemeColors& resolvedDark() const { return resolvedDark_; }
    // Whether the dark variant is in force: the system's appearance, or the fallback while the
    // system does not say.
    bool isDark() const;
    // What to assume while the system appearance is unknown (the toolkit's palette, say).
    void setFallbackAppearance(bool dark);
    // The resolved colour of `role` in the variant in force.
    ThemeColor color(ThemeRole role) const;

    // Validates, writes "<id>.json", records a new id and selects the theme. `editing` names an
    // imported theme to replace; any other id (or none) gives the import a new one. On failure
    // nothing changes.
    Expected<ThemeDefinition, ThemeImportError> importTheme(
        std::string_view text, const std::optional<std::string>& editing = std::nullopt);
    // The same from a file the user chose; a file that cannot be read gives readFailed.
    Expected<ThemeDefinition, ThemeImportError> importThemeFile(
        const std::filesystem::path& file,
        const std::optional<std::string>& editing = std::nullopt);
    // False, changing nothing, when no installed theme has that id.
    bool select(const std::string& id);
    // Removes an imported theme, its file and its id; the current one gives way to "default".
    // False when `id` is not an imported theme.
    bool deleteTheme(const std::string& id);

    // Called after the current theme, its colours, the installed list or the appearance changed.
    [[nodiscard]] Registration observe(std::function<void()> handler) {
        return observers_.add(std::move(handler));
    }

private:
    void loadImportedThemes();
    std::optional<ThemeDefinition> loadImportedTheme(const std::string& id);
    std::filesystem::path fileOf(const std::string& id) const;
    std::vector<std::string> importedIds() const;
    void resolveColors();
    ThemeColor resolve(ThemeRole role, const std::string& text) const;
    void changed();

    Services services_;
    std::vector<ThemeDefinition> installed_;
    std::size_t currentIndex_ = 0;
    ResolvedThemeColors resolvedLight_;
    ResolvedThemeColors resolvedDark_;
    bool fallbackDark_ = false;
    mutable std::unordered_map<std::string, ThemeColor> colorCache_;
    ObserverList<> observers_;
    Registration appearanceObservation_;
    Registration accentObservation_;
    Logger logger;
};

}  // namespace corvetta
