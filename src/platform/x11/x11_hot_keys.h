// x11_hot_keys.h: The hot-key port on X11, as passive key grabs on the root window.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include <xcb/xcb.h>

#include "foundation/main_queue.h"
#include "platform/hot_keys.h"
#include "platform/x11/x11_input.h"

struct _XCBKeySymbols;

namespace corvetta {

// Hot keys as passive key grabs on the root window. A combination is grabbed under every state
// of the lock modifiers (Caps Lock, Num Lock, Scroll Lock), so a lit lock changes nothing. Handlers
// hear of presses and releases on the main queue's next turn.
class X11HotKeys final : public HotKeyPort {
public:
    X11HotKeys(xcb_connection_t* connection, xcb_window_t root, MainQueue& queue,
               RepliesRead repliesRead = {});
    ~X11HotKeys() override;
    X11HotKeys(const X11HotKeys&) = delete;
    X11HotKeys& operator=(const X11HotKeys&) = delete;

    // A combination another client has grabbed fails with combinationTaken and leaves no grab
    // behind. A key the keyboard does not have registers but grabs nothing until the keyboard
    // mapping gives it a key code.
    Expected<void, HotKeyRegistrationError> registerHotKey(HotKeyId id,
                                                           HotKeyCombination combination) override;
    void unregisterHotKey(HotKeyId id) override;
    Registration installHotKeyHandler(HotKeyEventHandler handler) override;

    // Key presses and releases of grabbed keys, and keyboard mapping changes (which re-grab every
    // hot key). True when the event was a hot key's.
    bool handleEvent(const xcb_generic_event_t& event);

private:
    struct HotKey {
        HotKeyCombination combination;
        std::uint16_t modifiers = 0;
        std::vector<xcb_keycode_t> keyCodes;
    };

    std::vector<xcb_keycode_t> keyCodesFor(std::uint32_t virtualKeyCode) const;
    std::vector<std::uint16_t> lockCombinations() const;
    bool grab(const std::vector<xcb_keycode_t>& keyCodes, std::uint16_t modifiers);
    void ungrab(const std::vector<xcb_keycode_t>& keyCodes, std::uint16_t modifiers);
    void readLockModifiers();
    void regrabAll();
    bool handleKeyPress(xcb_keycode_t keyCode, std::uint16_t state);
    bool handleKeyRelease(xcb_keycode_t keyCode);
    void deliver(HotKeyEventKind kind, HotKeyId id);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    MainQueue& queue_;
    RepliesRead repliesRead_;
    _XCBKeySymbols* keySymbols_;
    std::uint16_t numLockMask_ = 0;
    std::uint16_t scrollLockMask_ = 0;
    std::map<HotKeyId, HotKey> hotKeys_;
    // The hot key each held key started, so its release is delivered whatever the modifiers do.
    std::map<xcb_keycode_t, HotKeyId> heldKeys_;
    InputHandlerList<HotKeyEventHandler> handlers_;
};

}  // namespace corvetta
