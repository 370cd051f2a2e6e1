#include "shortcuts/shortcut_startup.h"

#include "shortcuts/shortcut_json.h"

namespace corvetta {

namespace {

constexpr std::int64_t kKeyCodeS = 1;

}  // namespace

ShortcutStartup::ShortcutStartup(Preferences& defaults, ShortcutManager& shortcutManager,
                                 HotKeyStore& hotKeyStore, KeyboardShortcuts& keyboardShortcuts,
                                 LoggingService& logging)
    : defaults_(defaults),
      shortcutManager_(shortcutManager),
      hotKeyStore_(hotKeyStore),
      keyboardShortcuts_(keyboardShortcuts),
      logger_(logging, "ShortcutStartup", LogCategory::shortcut()) {}

void ShortcutStartup::run() {
    applyNewUserDefaults();
    keyboardShortcuts_.setEnabled(true);
    logger_.info("KeyboardShortcuts.isEnabled set to true");
    if (defaults_.boolValue(kMigrationCompletedKey).value_or(false)) {
        logger_.info("Migration already completed, using existing values");
    } else {
        migrateLegacyShortcuts();
    }
    applySaveWorkspaceFix();
}

void ShortcutStartup::applyNewUserDefaults() {
    if (defaults_.object(kAllowAnyShortcutKey)) {
        return;
    }
    defaults_.set(kAllowAnyShortcutKey, true);
    logger_.info("Set default allowAnyShortcut to true for new user");
}

void ShortcutStartup::migrateLegacyShortcuts() {
    logger_.info("First-time migration needed");
    logger_.info("Migrating existing shortcuts...");
    const auto dictionary = legacyDictionary();
    for (const auto& row : shortcutNameTable()) {
        if (row.role == ShortcutRole::recorderScratch) {
            continue;
        }
        const std::string name(row.name);
        const auto legacy = legacyShortcut(name, dictionary);
        if (!legacy) {
            continue;
        }
        const auto existing = hotKeyStore_.entry(name).kind;
        if (existing == HotKeyStore::EntryKind::combination ||
            existing == HotKeyStore::EntryKind::cleared) {
            logger_.info("Using existing shortcut from KeyboardShortcuts");
            continue;
        }
        const auto hotKey = ShortcutConverter::toHotKeyShortcut(*legacy);
        if (!hotKey) {
            logger_.warning("Skipping legacy shortcut for '" + name + "': key code " +
                            std::to_string(legacy->keyCode) + " is no key");
            continue;
        }
        hotKeyStore_.setShortcut(libraryShortcutName(name), hotKey);
        logger_.debug("Migrated shortcut for '" + name + "'");
    }
    defaults_.set(kMigrationCompletedKey, true);
    logger_.info("Migration marked as completed");
    logger_.info("Migrated existing shortcuts to KeyboardShortcuts format");
    logger_.info("Migration complete.");
}

void ShortcutStartup::applySaveWorkspaceFix() {
    if (defaults_.boolValue(kSaveWorkspaceFixAppliedKey).value_or(false)) {
        logger_.info("Save Workspace shortcut fix already applied");
        return;
    }
    logger_.info("Applying one-time Save Workspace shortcut fix");
    hotKeyStore_.setShortcut(
        libraryShortcutName("saveWorkspace"),
        HotKeyShortcut{kKeyCodeS, CarbonModifier::kControl | CarbonModifier::kOption});
    defaults_.set(kSaveWorkspaceFixAppliedKey, true);
    logger_.info("Save Workspace shortcut fix applied - reset to Control + Option + S");
}

std::optional<Shortcut> ShortcutStartup::legacyShortcut(
    const std::string& name, const std::map<std::string, Shortcut>& dictionary) {
    if (auto own = shortcutManager_.shortcut(name)) {
        return own;
    }
    const auto found = dictionary.find(name);
    return found == dictionary.end() ? std::nullopt : std::optional(found->second);
}

std::map<std::string, Shortcut> ShortcutStartup::legacyDictionary() {
    std::map<std::string, Shortcut> result;
    const auto value = defaults_.object(ShortcutDefaults::shortcutsKey);
    if (!value) {
        return result;
    }
    std::optional<Json> document;
    if (const auto* data = value->ifData()) {
        auto parsed =
            parseJson(std::string_view(reinterpret_cast<const char*>(data->data()), data->size()));
        if (parsed && parsed->is_object()) {
            document = std::move(*parsed);
        }
    }
    if (!document) {
        logger_.warning("Ignoring unreadable legacy shortcut dictionary");
        return result;
    }
    for (const auto& [name, entry] : document->items()) {
        try {
            result.emplace(name, shortcutFromJson(entry, name));
        } catch (const JsonDecodeError& error) {
            logger_.warning("Ignoring unreadable legacy shortcut for '" + name +
                            "': " + error.what());
        }
    }
    return result;
}

}  // namespace corvetta
