// registration.h: A handle that undoes a registration (observer, watch) when dropped.
#pragma once

#include <functional>
#include <utility>

namespace corvetta {

// Keeps something registered (an observer, a watched descriptor, a handler) for as long as it
// lives, and undoes the registration when dropped or reset. Move-only.
class Registration {
public:
    Registration() = default;
    explicit Registration(std::function<void()> undo) : undo_(std::move(undo)) {}
    Registration(Registration&& other) noexcept : undo_(std::exchange(other.undo_, nullptr)) {}
    Registration& operator=(Registration&& other) noexcept {
        if (this != &other) {
            reset();
            undo_ = std::exchange(other.undo_, nullptr);
        }
        return *this;
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration() { reset(); }

    void reset() {
        if (auto undo = std::exchange(undo_, nullptr)) {
            undo();
        }
    }
    bool isActive() const { return static_cast<bool>(undo_); }

private:
    std::function<void()> undo_;
};

}  // namespace corvetta
