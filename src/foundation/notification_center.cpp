#include "foundation/notification_center.h"

#include <atomic>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace corvetta {

struct NotificationCenter::Registry {
    struct Observer {
        std::string name;
        NotificationHandler handler;
        std::atomic<bool> active{true};
    };
    mutable std::mutex mutex;
    std::map<std::uint64_t, std::shared_ptr<Observer>> observers;  // ids grow: registration order
    std::uint64_t nextId = 1;
};

NotificationCenter::NotificationCenter() : registry_(std::make_shared<Registry>()) {}

NotificationCenter::~NotificationCenter() = default;

ObserverToken NotificationCenter::addObserver(std::string name, NotificationHandler handler) {
    auto observer = std::make_shared<Registry::Observer>();
    observer->name = std::move(name);
    observer->handler = std::move(handler);
    std::uint64_t id;
    {
        std::lock_guard lock(registry_->mutex);
        id = registry_->nextId++;
        registry_->observers.emplace(id, observer);
    }
    std::weak_ptr<Registry> weak = registry_;
    return ObserverToken([weak, id, observer] {
        observer->active = false;
        if (auto registry = weak.lock()) {
            std::lock_guard lock(registry->mutex);
            registry->observers.erase(id);
        }
    });
}

void NotificationCenter::post(const std::string& name, UserInfo userInfo) {
    std::vector<std::shared_ptr<Registry::Observer>> targets;
    {
        std::lock_guard lock(registry_->mutex);
        for (const auto& [id, observer] : registry_->observers) {
            if (observer->name == name) {
                targets.push_back(observer);
            }
        }
    }
    // Handlers run outside the lock: they may post, observe or drop their own tokens.
    const Notification notification{name, std::move(userInfo)};
    for (const auto& observer : targets) {
        if (observer->active) {
            observer->handler(notification);
        }
    }
}

std::size_t NotificationCenter::observerCount(const std::string& name) const {
    std::lock_guard lock(registry_->mutex);
    std::size_t count = 0;
    for (const auto& [id, observer] : registry_->observers) {
        count += observer->name == name ? 1 : 0;
    }
    return count;
}

}  // namespace corvetta
