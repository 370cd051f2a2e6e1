#include "foundation/notification_center.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace corvetta {
namespace {

// Observers of the name only, in registration order; a handler may post, add observers and drop
// a later observer, which then is not called.
TEST(NotificationCenter, DeliversInRegistrationOrderAndLetsHandlersChangeTheObservers) {
    NotificationCenter center;
    std::vector<std::string> calls;
    ObserverToken dropped, late;
    auto first = center.addObserver("A", [&](const Notification& n) {
        calls.push_back("first:" + n.name + ":" + *n.userInfo.at("who").ifString());
        dropped.reset();
        late = center.addObserver("B", [&](const Notification&) { calls.push_back("B"); });
        center.post("B");
    });
    auto second = center.addObserver("A", [&](const Notification&) { calls.push_back("second"); });
    dropped = center.addObserver("A", [&](const Notification&) { calls.push_back("dropped"); });
    auto other = center.addObserver("C", [&](const Notification&) { calls.push_back("C"); });
    center.post("A", {{"who", "me"}});
    EXPECT_EQ(calls, (std::vector<std::string>{"first:A:me", "B", "second"}));
}

TEST(NotificationCenter, DroppingOrMovingTheTokenStopsDeliveryEvenAfterTheCentreIsGone) {
    int count = 0;
    ObserverToken outliving;
    {
        NotificationCenter center;
        {
            auto token = center.addObserver("A", [&](const Notification&) { ++count; });
            center.post("A");
            EXPECT_EQ(center.observerCount("A"), 1u);
        }
        center.post("A");
        EXPECT_EQ(center.observerCount("A"), 0u);

        auto token = center.addObserver("A", [&](const Notification&) { ++count; });
        outliving = std::move(token);
        EXPECT_FALSE(token.isActive());
        center.post("A");
    }
    EXPECT_EQ(count, 2);
    outliving.reset();
    EXPECT_FALSE(outliving.isActive());
}

TEST(NotificationCenter, PostsFromManyThreadsAreAllDelivered) {
    NotificationCenter center;
    std::atomic<int> count{0};
    auto token = center.addObserver("tick", [&](const Notification&) { ++count; });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 250; ++i)
                center.post("tick");
        });
    }
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(count, 1000);
}

}  // namespace
}  // namespace corvetta
