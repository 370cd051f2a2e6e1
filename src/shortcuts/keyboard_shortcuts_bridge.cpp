#include "shortcuts/keyboard_shortcuts_bridge.h"

#include <utility>

#include "shortcuts/mas_shortcut_manager.h"

namespace corvetta {

namespace {

std::optional<std::string> notifiedName(const Notification& notification, const char* key) {
    const auto found = notification.userInfo.find(key);
    if (found == notification.userInfo.end() || found->second.ifString() == nullptr) {
        return std::nullopt;
    }
    return *found->second.ifString();
}

}  // namespace

class KeyboardShortcutsBridge::UpdateScope {
public:
    explicit UpdateScope(bool& flag) : flag_(flag), previous_(std::exchange(flag, true)) {}
    ~UpdateScope() { flag_ = previous_; }
    UpdateScope(const UpdateScope&) = delete;
    UpdateScope& operator=(const UpdateScope&) = delete;

private:
    bool& flag_;
    bool previous_;
};

KeyboardShortcutsBridge::KeyboardShortcutsBridge(ShortcutManager& shortcutManager,
                                                 KeyboardShortcuts& keyboardShortcuts,
                                                 NotificationCenter& notifications,
                                                 LoggingService& logging)
    : shortcutManager_(shortcutManager),
      keyboardShortcuts_(keyboardShortcuts),
      logger_(logging, "KeyboardShortcutsBridge", LogCategory::shortcut()) {
    for (const auto& row : shortcutNameTable()) {
        if (row.inNameMap) {
            nameMap_.push_back(libraryShortcutName(row.name));
        }
        if (row.bridgeDefault) {
            defaultShortcuts_.emplace(row.name, *row.bridgeDefault);
        }
    }
    keyboardShortcutsObserver_ = notifications.addObserver(
        HotKeyStore::kDidChangeNotification,
        [this](const Notification& notification) { handleKeyboardShortcutChanged(notification); });
    shortcutManagerObserver_ = notifications.addObserver(
        MASShortcutManager::kChangedNotification,
        [this](const Notification& notification) { handleShortcutManagerChanged(notification); });
}

std::optional<Shortcut> KeyboardShortcutsBridge::shortcut(const std::string& name) const {
    if (const auto live = keyboardShortcuts_.shortcut(libraryShortcutName(name))) {
        return ShortcutConverter::toShortcut(*live);
    }
    const auto fallback = defaultShortcuts_.find(name);
    if (fallback == defaultShortcuts_.end()) {
        return std::nullopt;
    }
    logger_.info("Using fallback shortcut for " + name);
    return fallback->second;
}

bool KeyboardShortcutsBridge::setShortcut(const std::string& name,
                                          std::optional<Shortcut> shortcut) {
    const UpdateScope updating(isUpdatingShortcut_);
    const auto named = libraryShortcutName(name);
    if (!shortcut) {
        logger_.info("Clearing shortcut in KeyboardShortcuts library");
        keyboardShortcuts_.setShortcut(named, std::nullopt);
        logger_.info("Set shortcut to nil in KeyboardShortcuts library");
        if (keyboardShortcuts_.shortcut(named)) {
            logger_.error("Failed to clear shortcut in KeyboardShortcuts");
            return false;
        }
        logger_.info("Verified shortcut was cleared in KeyboardShortcuts");
        return true;
    }
    const auto hotKey = ShortcutConverter::toHotKeyShortcut(*shortcut);
    if (hotKey) {
        keyboardShortcuts_.setShortcut(named, hotKey);
    }
    if (!hotKey || keyboardShortcuts_.shortcut(named) != hotKey) {
        logger_.error("Failed to set shortcut in KeyboardShortcuts");
        return false;
    }
    logger_.info("Updated shortcut in KeyboardShortcuts library");
    return true;
}

void KeyboardShortcutsBridge::registerShortcut(const std::string& name,
                                               std::function<void()> onKeyDown) {
    // The old handler goes first, so the combination is free for the new one.
    registrations_.erase(name);
    registrations_.emplace(
        name, keyboardShortcuts_.onKeyDown(libraryShortcutName(name), std::move(onKeyDown)));
}

void KeyboardShortcutsBridge::unregisterShortcut(const std::string& name) {
    registrations_.erase(name);
}

bool KeyboardShortcutsBridge::isShortcutRegistered(const std::string& name) const {
    return keyboardShortcuts_.isRegistered(name);
}

void KeyboardShortcutsBridge::resetAllShortcuts() {
    logger_.info("Resetting all shortcuts to defaults");
    const UpdateScope updating(isUpdatingShortcut_);
    for (const auto& name : nameMap_) {
        const auto fallback = defaultShortcuts_.find(name.rawValue);
        keyboardShortcuts_.setShortcut(name,
                                       fallback == defaultShortcuts_.end()
                                           ? std::nullopt
                                           : ShortcutConverter::toHotKeyShortcut(fallback->second));
    }
}

void KeyboardShortcutsBridge::unregisterAllShortcuts() {
    logger_.info("Unregistering all shortcuts");
    // Moved out first: a dropped hot key must not run inside the map's clear.
    auto registrations = std::move(registrations_);
    registrations_.clear();
    registrations.clear();
    logger_.info("All shortcuts unregistered");
}

void KeyboardShortcutsBridge::handleKeyboardShortcutChanged(const Notification& notification) {
    if (isUpdatingShortcut_) {
        return;
    }
    if (const auto name = notifiedName(notification, HotKeyStore::kNameKey)) {
        logger_.debug("Shortcut for '" + *name + "' changed outside the bridge");
    }
}

void KeyboardShortcutsBridge::handleShortcutManagerChanged(const Notification& notification) {
    // A refused write changed nothing; copying what is left could wipe the live combination.
    if (const auto refused = notification.userInfo.find(MASShortcutManager::kRefusedKey);
        refused != notification.userInfo.end() && refused->second.toBool().value_or(false)) {
        return;
    }
    if (const auto name = notifiedName(notification, MASShortcutManager::kNameKey)) {
        setShortcut(*name, shortcutManager_.shortcut(*name));
    }
}

}  // namespace corvetta
