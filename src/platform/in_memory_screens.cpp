#include "platform/in_memory_screens.h"

#include <algorithm>
#include <map>

namespace corvetta {

// Shared with the registrations, so a registration dropped after the port still finds its list.
struct InMemoryScreens::Observers {
    std::map<std::uint64_t, std::function<void()>> handlers;
    std::uint64_t nextId = 1;
};

InMemoryScreens::InMemoryScreens() : observers_(std::make_shared<Observers>()) {}

InMemoryScreens::InMemoryScreens(std::vector<Screen> screens) : InMemoryScreens() {
    screens_ = std::move(screens);
    if (!screens_.empty()) {
        main_ = screens_.front().number;
    }
}

InMemoryScreens::~InMemoryScreens() = default;

std::vector<Screen> InMemoryScreens::screens() const {
    return screens_;
}

std::optional<Screen> InMemoryScreens::mainScreen() const {
    const auto found = std::find_if(screens_.begin(), screens_.end(),
                                    [&](const Screen& s) { return main_ && s.number == *main_; });
    if (found != screens_.end()) {
        return *found;
    }
    if (screens_.empty()) {
        return std::nullopt;
    }
    return screens_.front();
}

Registration InMemoryScreens::observeScreenParameters(std::function<void()> handler) {
    const auto id = observers_->nextId++;
    observers_->handlers.emplace(id, std::move(handler));
    std::weak_ptr<Observers> weak = observers_;
    return Registration([weak, id] {
        if (auto observers = weak.lock()) {
            observers->handlers.erase(id);
        }
    });
}

void InMemoryScreens::setScreens(std::vector<Screen> screens) {
    screens_ = std::move(screens);
    const bool mainStillThere =
        main_ && std::any_of(screens_.begin(), screens_.end(),
                             [&](const Screen& s) { return s.number == *main_; });
    if (!mainStillThere) {
        main_ = screens_.empty() ? std::nullopt : std::optional(screens_.front().number);
    }
    // A copy, so a handler may drop its own or another registration while being called.
    auto handlers = observers_->handlers;
    for (const auto& [id, handler] : handlers) {
        if (observers_->handlers.count(id) > 0) {
            handler();
        }
    }
}

bool InMemoryScreens::setMainScreen(ScreenNumber number) {
    const bool known = std::any_of(screens_.begin(), screens_.end(),
                                   [&](const Screen& s) { return s.number == number; });
    if (known) {
        main_ = number;
    }
    return known;
}

}  // namespace corvetta
