#include "platform/x11/x11_hot_keys.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <X11/keysym.h>
#include <xcb/xcb_keysyms.h>

#include "platform/x11/x11_key_codes.h"

namespace corvetta {

namespace {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

// The modifier bits that a key with the symbol sets; 0 when no such key is a modifier.
std::uint16_t modifierMaskOfSymbol(const ModifierMasksOfKeys& masks, xcb_key_symbols_t* symbols,
                                   xcb_keysym_t symbol) {
    std::unique_ptr<xcb_keycode_t, FreeMemory> keyCodes(
        xcb_key_symbols_get_keycode(symbols, symbol));
    std::uint16_t mask = 0;
    for (const xcb_keycode_t* code = keyCodes.get(); code && *code != XCB_NO_SYMBOL; ++code) {
        mask |= masks[*code];
    }
    return mask;
}

}  // namespace

X11HotKeys::X11HotKeys(xcb_connection_t* connection, xcb_window_t root, MainQueue& queue,
                       RepliesRead repliesRead)
    : connection_(connection),
      root_(root),
      queue_(queue),
      repliesRead_(std::move(repliesRead)),
      keySymbols_(xcb_key_symbols_alloc(connection)) {
    readLockModifiers();
}

X11HotKeys::~X11HotKeys() {
    for (const auto& [id, hotKey] : hotKeys_) {
        ungrab(hotKey.keyCodes, hotKey.modifiers);
    }
    xcb_flush(connection_);
    xcb_key_symbols_free(keySymbols_);
}

Expected<void, HotKeyRegistrationError> X11HotKeys::registerHotKey(HotKeyId id,
                                                                   HotKeyCombination combination) {
    if (hotKeys_.count(id) > 0) {
        return unexpected(HotKeyRegistrationError::idInUse);
    }
    // The server lets a client grab a combination twice; the port does not.
    const bool ours = std::any_of(hotKeys_.begin(), hotKeys_.end(), [&](const auto& entry) {
        return entry.second.combination == combination;
    });
    if (ours) {
        return unexpected(HotKeyRegistrationError::combinationTaken);
    }
    HotKey hotKey{combination, x11ModifiersFromCarbon(combination.carbonModifiers),
                  keyCodesFor(combination.keyCode)};
    if (!grab(hotKey.keyCodes, hotKey.modifiers)) {
        return unexpected(HotKeyRegistrationError::combinationTaken);
    }
    hotKeys_.emplace(id, std::move(hotKey));
    return {};
}

void X11HotKeys::unregisterHotKey(HotKeyId id) {
    const auto found = hotKeys_.find(id);
    if (found == hotKeys_.end()) {
        return;
    }
    ungrab(found->second.keyCodes, found->second.modifiers);
    xcb_flush(connection_);
    std::erase_if(heldKeys_, [&](const auto& held) { return held.second == id; });
    hotKeys_.erase(found);
}

Registration X11HotKeys::installHotKeyHandler(HotKeyEventHandler handler) {
    return handlers_.add(std::move(handler));
}

bool X11HotKeys::handleEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & ~0x80) {
        case XCB_KEY_PRESS: {
            const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(event);
            return handleKeyPress(press.detail, press.state);
        }
        case XCB_KEY_RELEASE: {
            const auto& release = reinterpret_cast<const xcb_key_release_event_t&>(event);
            return handleKeyRelease(release.detail);
        }
        case XCB_MAPPING_NOTIFY: {
            const auto& mapping = reinterpret_cast<const xcb_mapping_notify_event_t&>(event);
            if (mapping.request != XCB_MAPPING_POINTER) {
                xcb_key_symbols_free(keySymbols_);
                keySymbols_ = xcb_key_symbols_alloc(connection_);
                regrabAll();
            }
            // Others may want to hear of the new mapping too.
            return false;
        }
        default:
            return false;
    }
}

std::vector<xcb_keycode_t> X11HotKeys::keyCodesFor(std::uint32_t virtualKeyCode) const {
    std::vector<xcb_keycode_t> keyCodes;
    const auto symbol = keySymbolForVirtualKeyCode(virtualKeyCode);
    if (!symbol) {
        return keyCodes;
    }
    std::unique_ptr<xcb_keycode_t, FreeMemory> found(
        xcb_key_symbols_get_keycode(keySymbols_, *symbol));
    for (const xcb_keycode_t* code = found.get(); code && *code != XCB_NO_SYMBOL; ++code) {
        if (std::find(keyCodes.begin(), keyCodes.end(), *code) == keyCodes.end()) {
            keyCodes.push_back(*code);
        }
    }
    return keyCodes;
}

std::vector<std::uint16_t> X11HotKeys::lockCombinations() const {
    std::vector<std::uint16_t> locks;
    for (const std::uint16_t lock : {X11Modifier::kLock, numLockMask_, scrollLockMask_}) {
        if (lock != 0 && std::find(locks.begin(), locks.end(), lock) == locks.end()) {
            locks.push_back(lock);
        }
    }
    std::vector<std::uint16_t> combinations;
    for (unsigned subset = 0; subset < (1u << locks.size()); ++subset) {
        std::uint16_t combination = 0;
        for (std::size_t bit = 0; bit < locks.size(); ++bit) {
            if ((subset & (1u << bit)) != 0) {
                combination |= locks[bit];
            }
        }
        combinations.push_back(combination);
    }
    return combinations;
}

bool X11HotKeys::grab(const std::vector<xcb_keycode_t>& keyCodes, std::uint16_t modifiers) {
    struct Attempt {
        xcb_keycode_t keyCode;
        std::uint16_t modifiers;
        xcb_void_cookie_t cookie;
    };
    std::vector<Attempt> attempts;
    for (const auto keyCode : keyCodes) {
        for (const auto locks : lockCombinations()) {
            const auto all = static_cast<std::uint16_t>(modifiers | locks);
            attempts.push_back({keyCode, all,
                                xcb_grab_key_checked(connection_, 0, root_, all, keyCode,
                                                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)});
        }
    }
    bool allGranted = true;
    std::vector<Attempt> granted;
    for (const auto& attempt : attempts) {
        if (xcb_generic_error_t* error = xcb_request_check(connection_, attempt.cookie)) {
            std::free(error);
            allGranted = false;
        } else {
            granted.push_back(attempt);
        }
    }
    noteRepliesRead(repliesRead_);
    if (!allGranted) {
        for (const auto& attempt : granted) {
            xcb_ungrab_key(connection_, attempt.keyCode, root_, attempt.modifiers);
        }
        xcb_flush(connection_);
    }
    return allGranted;
}

void X11HotKeys::ungrab(const std::vector<xcb_keycode_t>& keyCodes, std::uint16_t modifiers) {
    for (const auto keyCode : keyCodes) {
        for (const auto locks : lockCombinations()) {
            xcb_ungrab_key(connection_, keyCode, root_,
                           static_cast<std::uint16_t>(modifiers | locks));
        }
    }
}

void X11HotKeys::readLockModifiers() {
    const auto masks = readModifierMasksOfKeys(connection_);
    noteRepliesRead(repliesRead_);
    numLockMask_ = modifierMaskOfSymbol(masks, keySymbols_, XK_Num_Lock);
    scrollLockMask_ = modifierMaskOfSymbol(masks, keySymbols_, XK_Scroll_Lock);
}

void X11HotKeys::regrabAll() {
    for (const auto& [id, hotKey] : hotKeys_) {
        ungrab(hotKey.keyCodes, hotKey.modifiers);
    }
    readLockModifiers();
    heldKeys_.clear();
    for (auto& [id, hotKey] : hotKeys_) {
        hotKey.keyCodes = keyCodesFor(hotKey.combination.keyCode);
        // A combination another client took meanwhile stays registered without a grab; nothing
        // else can be done for it.
        if (!grab(hotKey.keyCodes, hotKey.modifiers)) {
            hotKey.keyCodes.clear();
        }
    }
    xcb_flush(connection_);
}

bool X11HotKeys::handleKeyPress(xcb_keycode_t keyCode, std::uint16_t state) {
    const std::uint16_t ignored = X11Modifier::kLock | numLockMask_ | scrollLockMask_;
    const auto modifiers = static_cast<std::uint16_t>(state & X11Modifier::kAll & ~ignored);
    for (const auto& [id, hotKey] : hotKeys_) {
        const bool sameKey = std::find(hotKey.keyCodes.begin(), hotKey.keyCodes.end(), keyCode) !=
                             hotKey.keyCodes.end();
        if (sameKey && hotKey.modifiers == modifiers) {
            heldKeys_[keyCode] = id;
            deliver(HotKeyEventKind::pressed, id);
            return true;
        }
    }
    return false;
}

bool X11HotKeys::handleKeyRelease(xcb_keycode_t keyCode) {
    const auto held = heldKeys_.find(keyCode);
    if (held == heldKeys_.end()) {
        return false;
    }
    const auto id = held->second;
    heldKeys_.erase(held);
    deliver(HotKeyEventKind::released, id);
    return true;
}

void X11HotKeys::deliver(HotKeyEventKind kind, HotKeyId id) {
    handlers_.postToEach(queue_, [event = HotKeyEvent{kind, id}](
                                     const HotKeyEventHandler& handler) { handler(event); });
}

}  // namespace corvetta
