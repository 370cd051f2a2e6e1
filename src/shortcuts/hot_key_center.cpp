#include "shortcuts/hot_key_center.h"

#include <map>

#include "shortcuts/key_labels.h"

namespace corvetta {

struct HotKeyCenter::State {
    State(HotKeyPort& p, LoggingService& logging)
        : port(p), logger(logging, "HotKeyCenter", LogCategory::shortcut()) {}

    void dispatch(const HotKeyEvent& event) {
        const auto found = hotKeys.find(event.id);
        if (found == hotKeys.end()) {
            return;
        }
        // A copy: the handler may unregister its own hot key.
        const auto handler = event.kind == HotKeyEventKind::pressed ? found->second.onKeyDown
                                                                    : found->second.onKeyUp;
        if (handler) {
            handler();
        }
    }

    HotKeyPort& port;
    Logger logger;
    std::map<HotKeyId, HotKey> hotKeys;
    HotKeyId nextId = 1;
    Registration eventHandler;
};

HotKeyCenter::HotKeyCenter(HotKeyPort& port, LoggingService& logging)
    : state_(std::make_shared<State>(port, logging)) {}

HotKeyCenter::~HotKeyCenter() {
    for (const auto& [id, hotKey] : state_->hotKeys) {
        state_->port.unregisterHotKey(id);
    }
    state_->hotKeys.clear();
}

Registration HotKeyCenter::registerHotKey(const std::string& name, HotKeyShortcut shortcut,
                                          std::function<void()> onKeyDown,
                                          std::function<void()> onKeyUp) {
    auto& state = *state_;
    if (!state.eventHandler.isActive()) {
        state.eventHandler = state.port.installHotKeyHandler(
            [weak = std::weak_ptr<State>(state_)](const HotKeyEvent& event) {
                if (const auto alive = weak.lock()) {
                    alive->dispatch(event);
                }
            });
    }
    const auto id = state.nextId++;
    const auto registered = state.port.registerHotKey(id, shortcut.combination());
    if (!registered) {
        state.logger.error("Failed to register hot key for '" + name + "' (" +
                           shortcutLabel(ShortcutConverter::toShortcut(shortcut)) +
                           "): " + std::string(description(registered.error())));
        return {};
    }
    state.hotKeys.emplace(
        id, HotKey{shortcut, id, shortcut.combination(), std::move(onKeyDown), std::move(onKeyUp)});
    return Registration([weak = std::weak_ptr<State>(state_), id] {
        if (const auto alive = weak.lock(); alive && alive->hotKeys.erase(id) > 0) {
            alive->port.unregisterHotKey(id);
        }
    });
}

std::size_t HotKeyCenter::registeredCount() const {
    return state_->hotKeys.size();
}

}  // namespace corvetta
