#include "shortcuts/keyboard_shortcuts.h"

#include <map>

namespace corvetta {

namespace {

// The handlers bound to one name and the hot key that serves them.
struct Binding {
    ShortcutName name;
    std::map<std::uint64_t, std::function<void()>> handlers;
    Registration hotKey;
};

}  // namespace

struct KeyboardShortcuts::State : std::enable_shared_from_this<State> {
    State(HotKeyStore& s, HotKeyCenter& h) : store(s), hotKeys(h) {}

    void bind(Binding& binding) {
        binding.hotKey.reset();
        if (!enabled) {
            return;
        }
        const auto shortcut = store.shortcut(binding.name);
        if (!shortcut) {
            return;
        }
        const auto& rawName = binding.name.rawValue;
        binding.hotKey =
            hotKeys.registerHotKey(rawName, *shortcut, [weak = weak_from_this(), rawName] {
                if (const auto alive = weak.lock()) {
                    alive->press(rawName);
                }
            });
    }

    void press(const std::string& name) {
        const auto found = bindings.find(name);
        if (found == bindings.end()) {
            return;
        }
        // A copy: a handler may add or drop handlers.
        const auto handlers = found->second.handlers;
        for (const auto& [key, handler] : handlers) {
            handler();
        }
    }

    void rebind(const std::string& name) {
        if (const auto found = bindings.find(name); found != bindings.end()) {
            bind(found->second);
        }
    }

    HotKeyStore& store;
    HotKeyCenter& hotKeys;
    bool enabled = true;
    std::map<std::string, Binding> bindings;
    std::uint64_t nextHandlerKey = 1;
};

KeyboardShortcuts::KeyboardShortcuts(HotKeyStore& store, HotKeyCenter& hotKeys,
                                     NotificationCenter& notifications)
    : state_(std::make_shared<State>(store, hotKeys)) {
    storeObserver_ = notifications.addObserver(
        HotKeyStore::kDidChangeNotification,
        [weak = std::weak_ptr<State>(state_)](const Notification& notification) {
            const auto alive = weak.lock();
            const auto name = notification.userInfo.find(HotKeyStore::kNameKey);
            if (alive && name != notification.userInfo.end() && name->second.ifString()) {
                alive->rebind(*name->second.ifString());
            }
        });
}

KeyboardShortcuts::~KeyboardShortcuts() = default;

void KeyboardShortcuts::setEnabled(bool enabled) {
    if (state_->enabled == enabled) {
        return;
    }
    state_->enabled = enabled;
    for (auto& [name, binding] : state_->bindings) {
        state_->bind(binding);
    }
}

bool KeyboardShortcuts::isEnabled() const {
    return state_->enabled;
}

std::optional<HotKeyShortcut> KeyboardShortcuts::shortcut(const ShortcutName& name) const {
    return state_->store.shortcut(name);
}

void KeyboardShortcuts::setShortcut(const ShortcutName& name,
                                    std::optional<HotKeyShortcut> shortcut) {
    state_->store.setShortcut(name, shortcut);
}

void KeyboardShortcuts::reset(const ShortcutName& name) {
    state_->store.setShortcut(name, name.defaultShortcut);
}

Registration KeyboardShortcuts::onKeyDown(const ShortcutName& name, std::function<void()> handler) {
    auto& state = *state_;
    auto [found, added] = state.bindings.try_emplace(name.rawValue, Binding{name, {}, {}});
    const auto key = state.nextHandlerKey++;
    found->second.handlers.emplace(key, std::move(handler));
    if (added) {
        state.bind(found->second);
    }
    return Registration([weak = std::weak_ptr<State>(state_), rawName = name.rawValue, key] {
        const auto alive = weak.lock();
        if (!alive) {
            return;
        }
        const auto binding = alive->bindings.find(rawName);
        if (binding == alive->bindings.end()) {
            return;
        }
        binding->second.handlers.erase(key);
        if (binding->second.handlers.empty()) {
            // Moved out first: dropping the hot key must not run inside the map's erase.
            auto hotKey = std::move(binding->second.hotKey);
            alive->bindings.erase(binding);
        }
    });
}

bool KeyboardShortcuts::isRegistered(const std::string& name) const {
    const auto found = state_->bindings.find(name);
    return found != state_->bindings.end() && found->second.hotKey.isActive();
}

std::vector<std::pair<std::string, HotKeyShortcut>> KeyboardShortcuts::notRegistered() const {
    std::vector<std::pair<std::string, HotKeyShortcut>> refused;
    if (!state_->enabled) {
        return refused;
    }
    for (const auto& [name, binding] : state_->bindings) {
        if (binding.hotKey.isActive()) {
            continue;
        }
        if (const auto shortcut = state_->store.shortcut(binding.name)) {
            refused.emplace_back(name, *shortcut);
        }
    }
    return refused;
}

}  // namespace corvetta
