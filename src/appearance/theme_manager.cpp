#include "appearance/theme_manager.h"

#include <algorithm>

#include "appearance/builtin_themes.h"
#include "appearance/theme_import_service.h"
#include "foundation/files.h"
#include "foundation/uuid.h"

namespace corvetta {

namespace {

// Ids become file names; one read from damaged settings must not reach outside the folder.
bool isSafeFileStem(const std::string& id) {
    return !id.empty() && id != "." && id != ".." && id.find('/') == std::string::npos &&
           id.find('\0') == std::string::npos;
}

}  // namespace

ThemeManager::ThemeManager(Services services)
    : services_(std::move(services)),
      installed_(builtInThemes()),
      logger(services_.logging, kServiceName, LogCategory::general()) {
    loadImportedThemes();
    const auto selected = services_.defaults.string(kSelectedThemeIDKey);
    const auto* found = selected ? find(*selected) : nullptr;
    if (selected && found == nullptr) {
        logger.warning("Selected theme " + *selected + " is not installed; using " +
                       kDefaultThemeId);
    }
    currentIndex_ = found ? static_cast<std::size_t>(found - installed_.data()) : 0;
    resolveColors();
    appearanceObservation_ = services_.appearance.observeAppearance([this](SystemAppearance now) {
        logger.debug("System appearance is now " + std::string(systemAppearanceName(now)));
        changed();
    });
    accentObservation_ = services_.accentColors.observe([this] {
        resolveColors();
        changed();
    });
}

const ThemeDefinition& ThemeManager::current() const {
    return installed_[currentIndex_];
}

const ThemeDefinition* ThemeManager::find(std::string_view id) const {
    const auto it = std::find_if(installed_.begin(), installed_.end(),
                                 [&](const ThemeDefinition& theme) { return theme.id == id; });
    return it == installed_.end() ? nullptr : &*it;
}

double ThemeManager::vibrancyTranslucency() const {
    return services_.defaults.doubleValue(kVibrancyTranslucencyKey)
        .value_or(kDefaultVibrancyTranslucency);
}

bool ThemeManager::isDark() const {
    switch (services_.appearance.currentAppearance()) {
        case SystemAppearance::dark:
            return true;
        case SystemAppearance::light:
            return false;
        case SystemAppearance::unknown:
            break;
    }
    return fallbackDark_;
}

void ThemeManager::setFallbackAppearance(bool dark) {
    if (dark != fallbackDark_) {
        fallbackDark_ = dark;
        if (services_.appearance.currentAppearance() == SystemAppearance::unknown) {
            changed();
        }
    }
}

ThemeColor ThemeManager::color(ThemeRole role) const {
    return (isDark() ? resolvedDark_ : resolvedLight_)[role];
}

std::filesystem::path ThemeManager::fileOf(const std::string& id) const {
    return services_.themesFolder / (id + ".json");
}

std::vector<std::string> ThemeManager::importedIds() const {
    return services_.defaults.stringList(kImportedThemeIDsKey).value_or(std::vector<std::string>{});
}

void ThemeManager::loadImportedThemes() {
    for (const auto& id : importedIds()) {
        if (auto theme = loadImportedTheme(id)) {
            installed_.push_back(std::move(*theme));
        } else {
            logger.warning("Skipping imported theme " + id);
        }
    }
}

std::optional<ThemeDefinition> ThemeManager::loadImportedTheme(const std::string& id) {
    if (!isSafeFileStem(id) || find(id) != nullptr) {
        return std::nullopt;
    }
    const auto file = fileOf(id);
    const auto contents = readFile(file);
    if (!contents) {
        logger.error("Failed to read theme file: " + contents.error().description());
        return std::nullopt;
    }
    auto decoded = decodeThemeDefinition(*contents);
    if (!decoded) {
        logger.error("Failed to decode " + file.string() + ": " + decoded.error());
        // The user's colours are in there; keep them for a person to look at.
        if (const auto moved = quarantineFile(file, id, services_.clock.now())) {
            logger.warning("Quarantined undecodable theme file to " + moved->string());
        } else {
            logger.error("Failed to quarantine theme file: " + moved.error().description());
        }
        return std::nullopt;
    }
    decoded->id = id;
    decoded->source = ThemeSource::imported;
    return std::move(*decoded);
}

Expected<ThemeDefinition, ThemeImportError> ThemeManager::importTheme(
    std::string_view text, const std::optional<std::string>& editing) {
    auto parsed = ThemeImportService::parse(text);
    if (!parsed) {
        logger.warning("Theme import refused: " + parsed.error().message());
        return unexpected(parsed.error());
    }
    const auto* edited = editing ? find(*editing) : nullptr;
    const bool replacing = edited != nullptr && edited->source == ThemeSource::imported;
    ThemeDefinition theme{
        .id = replacing ? edited->id : "custom." + Uuid::random().string(),
        .name = parsed->name,
        .source = ThemeSource::imported,
        .useVibrancy = parsed->useVibrancy,
        // A theme given in one appearance only looks the same in the other.
        .light = parsed->light.value_or(parsed->dark.value_or(ThemeAppearanceColors{})),
        .dark = parsed->dark.value_or(parsed->light.value_or(ThemeAppearanceColors{})),
    };
    if (const auto written = writeFileAtomically(fileOf(theme.id), encodeThemeDefinition(theme));
        !written) {
        logger.error("Failed to save theme " + theme.id + ": " + written.error().description());
        return unexpected(ThemeImportError::writeFailed(written.error().reason));
    }
    if (replacing) {
        installed_[static_cast<std::size_t>(edited - installed_.data())] = theme;
    } else {
        auto ids = importedIds();
        ids.push_back(theme.id);
        services_.defaults.set(kImportedThemeIDsKey, PropertyValue(ids));
        installed_.push_back(theme);
    }
    logger.info((replacing ? "Updated imported theme " : "Imported theme ") + theme.id + " (" +
                theme.name + ")");
    select(theme.id);
    return theme;
}

Expected<ThemeDefinition, ThemeImportError> ThemeManager::importThemeFile(
    const std::filesystem::path& file, const std::optional<std::string>& editing) {
    const auto contents = readFile(file);
    if (!contents) {
        logger.warning("Theme import refused: " + contents.error().description());
        return unexpected(ThemeImportError::readFailed(contents.error().reason));
    }
    return importTheme(*contents, editing);
}

bool ThemeManager::select(const std::string& id) {
    const auto* theme = find(id);
    if (theme == nullptr) {
        logger.warning("Cannot select theme " + id + ": not installed");
        return false;
    }
    services_.defaults.set(kSelectedThemeIDKey, PropertyValue(id));
    currentIndex_ = static_cast<std::size_t>(theme - installed_.data());
    resolveColors();
    logger.info("Selected theme " + id);
    changed();
    return true;
}

bool ThemeManager::deleteTheme(const std::string& id) {
    const auto* theme = find(id);
    if (theme == nullptr || theme->source != ThemeSource::imported) {
        logger.warning("Cannot delete theme " + id + ": not an imported theme");
        return false;
    }
    std::error_code error;
    if (!std::filesystem::remove(fileOf(id), error) || error) {
        logger.error("Failed to delete imported theme file for " + id);
    }
    auto ids = importedIds();
    std::erase(ids, id);
    services_.defaults.set(kImportedThemeIDsKey, PropertyValue(ids));
    const std::string currentId = current().id;
    installed_.erase(installed_.begin() + (theme - installed_.data()));
    logger.info("Deleted imported theme " + id);
    const auto* stillCurrent = find(currentId);
    if (stillCurrent == nullptr) {
        select(kDefaultThemeId);
    } else {
        currentIndex_ = static_cast<std::size_t>(stillCurrent - installed_.data());
        changed();
    }
    return true;
}

ThemeColor ThemeManager::resolve(ThemeRole role, const std::string& text) const {
    if (themeRoleInfo(role).acceptsAuto && isAutoColor(text)) {
        return services_.accentColors.color(role);
    }
    if (const auto cached = colorCache_.find(text); cached != colorCache_.end()) {
        return cached->second;
    }
    // Every stored colour was validated; a broken one still draws, as opaque black.
    const auto parsed = parseHexColor(text).value_or(ThemeColor{});
    colorCache_.emplace(text, parsed);
    return parsed;
}

void ThemeManager::resolveColors() {
    for (const auto& role : themeRoles()) {
        resolvedLight_[role.role] = resolve(role.role, current().light.*role.field);
        resolvedDark_[role.role] = resolve(role.role, current().dark.*role.field);
    }
}

void ThemeManager::changed() {
    observers_.notify();
}

}  // namespace corvetta
