// simulated_hot_keys.h: Simulated system-wide hot keys that tests press and reserve.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "platform/hot_keys.h"

namespace corvetta {

// The hot-key service of the simulated desktop. Combinations held by other applications are
// reserved up front or by tests; a press is delivered the way the system would deliver it: to
// this program's handlers, pressed then released, synchronously on the calling (main) thread.
class SimulatedHotKeys final : public HotKeyPort {
public:
    explicit SimulatedHotKeys(std::vector<HotKeyCombination> reserved = {});
    ~SimulatedHotKeys() override;
    SimulatedHotKeys(const SimulatedHotKeys&) = delete;
    SimulatedHotKeys& operator=(const SimulatedHotKeys&) = delete;

    Expected<void, HotKeyRegistrationError> registerHotKey(HotKeyId id,
                                                           HotKeyCombination combination) override;
    void unregisterHotKey(HotKeyId id) override;
    Registration installHotKeyHandler(HotKeyEventHandler handler) override;

    // The user presses a key with modifiers in the event-flag form; bits other than the four
    // modifiers are ignored. False when no registered hot key matches.
    bool pressHotKey(std::uint16_t keyCode, std::uint64_t modifierFlags);
    // Another application takes the combination: registering it fails from now on.
    void reserveHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers);

    std::map<HotKeyId, HotKeyCombination> registeredHotKeys() const;
    std::size_t installedHandlerCount() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace corvetta
