// hot_key_center.h: Registers system hot keys and routes their presses to handlers.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/registration.h"
#include "platform/hot_keys.h"
#include "shortcuts/shortcut.h"

namespace corvetta {

// One combination live in the system.
struct HotKey {
    HotKeyShortcut shortcut;
    HotKeyId carbonHotKeyId = 0;
    // What the hot-key service was given for it.
    HotKeyCombination carbonHotKey;
    std::function<void()> onKeyDown;
    std::function<void()> onKeyUp;
};

// The hot-key layer: registers combinations with the platform, each under the next integer id,
// and routes presses and releases to them through one event handler, installed with the first
// registration and kept while the centre lives.
class HotKeyCenter {
public:
    HotKeyCenter(HotKeyPort& port, LoggingService& logging);
    ~HotKeyCenter();
    HotKeyCenter(const HotKeyCenter&) = delete;
    HotKeyCenter& operator=(const HotKeyCenter&) = delete;

    // The hot key stays registered while the returned registration lives. When the system
    // refuses the combination the refusal is logged with `name` and the registration is inactive;
    // nothing else is affected.
    [[nodiscard]] Registration registerHotKey(const std::string& name, HotKeyShortcut shortcut,
                                              std::function<void()> onKeyDown,
                                              std::function<void()> onKeyUp = {});

    std::size_t registeredCount() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace corvetta
