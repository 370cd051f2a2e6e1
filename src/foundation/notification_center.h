// notification_center.h: Named notifications, so services react to changes from anywhere.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "foundation/property_value.h"
#include "foundation/registration.h"

namespace corvetta {

struct Notification {
    std::string name;
    UserInfo userInfo;
};

using NotificationHandler = std::function<void(const Notification&)>;

// Keeps an observer registered for as long as it lives; the centre may go first.
using ObserverToken = Registration;

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
