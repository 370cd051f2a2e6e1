#include "shortcuts/mas_shortcut_manager.h"

#include <vector>

#include "shortcuts/shortcut_json.h"
#include "shortcuts/shortcut_names.h"

namespace corvetta {

namespace {

std::string describe(const Shortcut& shortcut) {
    return "Key code: " + std::to_string(shortcut.keyCode) +
           ", Modifiers: " + std::to_string(shortcut.modifiers);
}

std::string quoted(const std::string& name) {
    return "'" + name + "'";
}

}  // namespace

MASShortcutManager::MASShortcutManager(Preferences& defaults, NotificationCenter& notifications,
                                       HotKeyCenter& hotKeys, LoggingService& logging)
    : defaults_(defaults),
      notifications_(notifications),
      hotKeys_(hotKeys),
      logger_(logging, "MASShortcutManager", LogCategory::shortcut()) {
    for (const auto* name : {"leftHalf", "rightHalf"}) {
        defaultShortcuts_.emplace(name, *findShortcutNameRow(name)->libraryDefault);
    }
}

void MASShortcutManager::registerShortcut(const std::string& name, std::function<void()> action) {
    auto combination = shortcut(name);
    if (!combination) {
        if (const auto found = defaultShortcuts_.find(name); found != defaultShortcuts_.end()) {
            combination = found->second;
        }
    }
    registeredShortcuts_.erase(name);
    if (!combination) {
        logger_.debug("No shortcut for " + quoted(name) + ", not registering");
        return;
    }
    logger_.info("Registering shortcut for " + quoted(name) + " - " + describe(*combination));
    const auto hotKey = ShortcutConverter::toHotKeyShortcut(*combination);
    if (!hotKey) {
        return;
    }
    auto registration = hotKeys_.registerHotKey(name, *hotKey, std::move(action));
    if (registration.isActive()) {
        registeredShortcuts_.emplace(name, std::move(registration));
    }
}

void MASShortcutManager::unregisterShortcut(const std::string& name) {
    logger_.info("Unregistering shortcut for " + quoted(name));
    registeredShortcuts_.erase(name);
}

std::optional<Shortcut> MASShortcutManager::shortcut(const std::string& name) const {
    const auto value = defaults_.object(key(name));
    if (!value) {
        return std::nullopt;
    }
    const auto* data = value->ifData();
    auto decoded = data != nullptr ? unarchiveShortcut(*data) : std::nullopt;
    if (!decoded) {
        logger_.error("Failed to unarchive shortcut data for " + quoted(name));
    }
    return decoded;
}

void MASShortcutManager::setShortcut(const std::string& name, std::optional<Shortcut> shortcut) {
    if (shortcut) {
        logger_.info("Setting shortcut for " + quoted(name) + " - " + describe(*shortcut));
        // Announced even when refused, marked so, for whoever waits on the outcome of a write;
        // followers of the store must not copy what is left as if it had just been written.
        if (!store(name, *shortcut)) {
            announce(name, true);
            return;
        }
    } else {
        logger_.info("Removing shortcut for " + quoted(name));
        remove(name);
    }
    announce(name);
}

void MASShortcutManager::resetShortcutToDefault(const std::string& name) {
    const auto found = defaultShortcuts_.find(name);
    if (found == defaultShortcuts_.end()) {
        logger_.info("No default shortcut for " + quoted(name) + ", removing shortcut");
        remove(name);
    } else {
        logger_.info("Resetting shortcut for " + quoted(name) + " to default - " +
                     describe(found->second));
        if (!store(name, found->second)) {
            return;
        }
    }
    announce(name);
}

void MASShortcutManager::resetAllShortcutsToDefaults() {
    for (const auto& row : shortcutNameTable()) {
        if (row.role != ShortcutRole::recorderScratch) {
            resetShortcutToDefault(std::string(row.name));
        }
    }
}

void MASShortcutManager::unregisterAllShortcuts() {
    std::vector<std::string> names;
    for (const auto& [name, registration] : registeredShortcuts_) {
        names.push_back(name);
    }
    for (const auto& name : names) {
        unregisterShortcut(name);
    }
}

std::string MASShortcutManager::key(const std::string& name) {
    return kUserDefaultsPrefix + name;
}

bool MASShortcutManager::store(const std::string& name, const Shortcut& shortcut) {
    auto archive = archiveShortcut(shortcut);
    if (!archive) {
        logger_.error("Failed to archive shortcut data for " + quoted(name));
        return false;
    }
    defaults_.set(key(name), PropertyValue(std::move(*archive)));
    return true;
}

void MASShortcutManager::remove(const std::string& name) {
    defaults_.remove(key(name));
}

void MASShortcutManager::announce(const std::string& name, bool refused) {
    UserInfo info{{kNameKey, PropertyValue(name)}};
    if (refused) {
        info.emplace(kRefusedKey, PropertyValue(true));
    }
    notifications_.post(kChangedNotification, std::move(info));
}

}  // namespace corvetta
