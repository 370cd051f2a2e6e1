#include "platform/sim/simulated_hot_keys.h"

#include <algorithm>

#include "platform/sim/desktop_model.h"

namespace corvetta {

struct SimulatedHotKeys::State {
    std::vector<HotKeyCombination> reserved;
    std::map<HotKeyId, HotKeyCombination> registered;
    sim::HandlerList<HotKeyEventHandler> handlers;

    bool taken(const HotKeyCombination& combination) const {
        return std::find(reserved.begin(), reserved.end(), combination) != reserved.end() ||
               std::any_of(registered.begin(), registered.end(),
                           [&](const auto& entry) { return entry.second == combination; });
    }
};

SimulatedHotKeys::SimulatedHotKeys(std::vector<HotKeyCombination> reserved)
    : state_(std::make_shared<State>()) {
    state_->reserved = std::move(reserved);
}

SimulatedHotKeys::~SimulatedHotKeys() = default;

Expected<void, HotKeyRegistrationError> SimulatedHotKeys::registerHotKey(
    HotKeyId id, HotKeyCombination combination) {
    if (state_->registered.count(id) > 0) {
        return unexpected(HotKeyRegistrationError::idInUse);
    }
    if (state_->taken(combination)) {
        return unexpected(HotKeyRegistrationError::combinationTaken);
    }
    state_->registered.emplace(id, combination);
    return {};
}

void SimulatedHotKeys::unregisterHotKey(HotKeyId id) {
    state_->registered.erase(id);
}

Registration SimulatedHotKeys::installHotKeyHandler(HotKeyEventHandler handler) {
    const auto key = state_->handlers.add(std::move(handler));
    return Registration([weak = std::weak_ptr<State>(state_), key] {
        if (const auto state = weak.lock()) {
            state->handlers.handlers.erase(key);
        }
    });
}

bool SimulatedHotKeys::pressHotKey(std::uint16_t keyCode, std::uint64_t modifierFlags) {
    const HotKeyCombination pressed{keyCode, carbonModifiersFromEventFlags(modifierFlags)};
    const auto match = std::find_if(state_->registered.begin(), state_->registered.end(),
                                    [&](const auto& entry) { return entry.second == pressed; });
    if (match == state_->registered.end()) {
        return false;
    }
    const auto id = match->first;
    for (const auto kind : {HotKeyEventKind::pressed, HotKeyEventKind::released}) {
        state_->handlers.forEach([&](const HotKeyEventHandler& handler) { handler({kind, id}); });
    }
    return true;
}

void SimulatedHotKeys::reserveHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers) {
    state_->reserved.push_back({keyCode, carbonModifiers});
}

std::map<HotKeyId, HotKeyCombination> SimulatedHotKeys::registeredHotKeys() const {
    return state_->registered;
}

std::size_t SimulatedHotKeys::installedHandlerCount() const {
    return state_->handlers.handlers.size();
}

}  // namespace corvetta
