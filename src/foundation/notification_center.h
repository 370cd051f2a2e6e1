#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "foundation/property_value.h"

namespace corvetta {

struct Notification {
    std::string name;
    UserInfo userInfo;
};

using NotificationHandler = std::function<void(const Notification&)>;

// Keeps an observer registered for as long as it lives. The centre may go first; the token then
// does nothing.
class ObserverToken {
public:
    ObserverToken() = default;
    explicit ObserverToken(std::function<void()> remove) : remove_(std::move(remove)) {}
    ObserverToken(ObserverToken&& other) noexcept;
    ObserverToken& operator=(ObserverToken&& other) noexcept;
    ObserverToken(const ObserverToken&) = delete;
    ObserverToken& operator=(const ObserverToken&) = delete;
    ~ObserverToken() { reset(); }

    void reset();
    bool isActive() const { return static_cast<bool>(remove_); }

private:
    std::function<void()> remove_;
};

// Named notifications delivered synchronously, on the posting thread, to the observers of that
// name in the order they registered. An observer removed while a notification is being delivered
// is not called after its removal.
class NotificationCenter {
public:
    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    [[nodiscard]] ObserverToken addObserver(std::string name, NotificationHandler handler);
    void post(const std::string& name, UserInfo userInfo = {});
    std::size_t observerCount(const std::string& name) const;

private:
    struct Registry;
    std::shared_ptr<Registry> registry_;
};

}  // namespace corvetta
