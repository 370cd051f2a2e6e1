// observer_list.h: The observers of one kind of change, each kept for as long as its handle lives.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "foundation/registration.h"

namespace corvetta {

// Callbacks registered for one kind of change. A registration may outlive the list; a callback
// may drop its own or another's registration while being called, and is then not called again.
// Single-threaded: use from the main thread.
template <class... Args>
class ObserverList {
public:
    using Handler = std::function<void(Args...)>;

    [[nodiscard]] Registration add(Handler handler) {
        const auto key = entries_->nextKey++;
        entries_->handlers.emplace(key, std::move(handler));
        return Registration([weak = std::weak_ptr<Entries>(entries_), key] {
            if (const auto entries = weak.lock()) {
                entries->handlers.erase(key);
            }
        });
    }

    void notify(const Args&... args) const {
        const auto keep = entries_;
        const auto snapshot = keep->handlers;
        for (const auto& [key, handler] : snapshot) {
            if (keep->handlers.count(key) > 0) {
                handler(args...);
            }
        }
    }

    std::size_t size() const { return entries_->handlers.size(); }

private:
    struct Entries {
        std::map<std::uint64_t, Handler> handlers;
        std::uint64_t nextKey = 1;
    };
    std::shared_ptr<Entries> entries_ = std::make_shared<Entries>();
};

}  // namespace corvetta
