// x11_input.h: What the X11 input classes share: the primary monitor, handler lists.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

#include "foundation/geometry.h"
#include "foundation/main_queue.h"
#include "foundation/registration.h"

namespace corvetta {

// The primary monitor's rectangle in root-window coordinates (top-left origin, y downward), asked
// each time so a monitor change needs no notice.
using PrimaryMonitorInRoot = std::function<Rect()>;

// Called after an input class waited for a reply on a connection it shares: the events read from
// the socket meanwhile wait in xcb's queue, where the socket's readiness no longer shows them, so
// the connection's owner must look there soon. Empty when nobody else reads the connection.
using RepliesRead = std::function<void()>;

inline void noteRepliesRead(const RepliesRead& repliesRead) {
    if (repliesRead) {
        repliesRead();
    }
}

// A root-window point in screen space: origin at the primary monitor's bottom-left, y upward.
inline Point screenPointFromRoot(Point root, const Rect& primaryInRoot) {
    return {root.x - primaryInRoot.origin.x,
            primaryInRoot.origin.y + primaryInRoot.size.height - root.y};
}

// The handlers the input classes call back. Registrations remove their handler and may outlive
// the list; a handler removed before its turn is not called.
template <class Handler>
class InputHandlerList {
public:
    Registration add(Handler handler) {
        const auto key = state_->nextKey++;
        state_->handlers.emplace(key, std::move(handler));
        return Registration([weak = std::weak_ptr<State>(state_), key] {
            if (const auto state = weak.lock()) {
                state->handlers.erase(key);
            }
        });
    }

    // Calls each handler on the main queue's next turn, unless the list is gone by then.
    template <class Call>
    void postToEach(MainQueue& queue, Call call) const {
        queue.post([weak = std::weak_ptr<State>(state_), call = std::move(call)] {
            const auto state = weak.lock();
            if (!state) {
                return;
            }
            const auto snapshot = state->handlers;
            for (const auto& [key, handler] : snapshot) {
                if (state->handlers.count(key) > 0) {
                    call(handler);
                }
            }
        });
    }

    // Whether any handler satisfies the test, now.
    template <class Test>
    bool any(Test test) const {
        for (const auto& [key, handler] : state_->handlers) {
            if (test(handler)) {
                return true;
            }
        }
        return false;
    }

private:
    struct State {
        std::map<std::uint64_t, Handler> handlers;
        std::uint64_t nextKey = 1;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace corvetta
