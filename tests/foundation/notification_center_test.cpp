#include "foundation/notification_center.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace corvetta {
namespace {

TEST(NotificationCenter, DeliversToObserversOfThatNameInRegistrationOrder) {
    NotificationCenter center;
    std::vector<std::string> calls;
    auto first = center.addObserver("A", [&](const Notification& n) {
        calls.push_back("first:" + n.name + ":" + *n.userInfo.at("who").ifString());
    });
    auto second = center.addObserver("A", [&](const Notification&) { calls.push_back("second"); });
    auto other = center.addObserver("B", [&](const Notification&) { calls.push_back("other"); });
    center.post("A", {{"who", "me"}});
    EXPECT_EQ(calls, (std::vector<std::string>{"first:A:me", "second"}));
}

TEST(NotificationCenter, DroppingTheTokenStopsDelivery) {
    NotificationCenter center;
    int count = 0;
    {
        auto token = center.addObserver("A", [&](const Notification&) { ++count; });
        center.post("A");
        EXPECT_EQ(center.observerCount("A"), 1u);
    }
    center.post("A");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(center.observerCount("A"), 0u);

    auto token = center.addObserver("A", [&](const Notification&) { ++count; });
    ObserverToken moved = std::move(token);
    EXPECT_FALSE(token.isActive());
    center.post("A");
    moved.reset();
    center.post("A");
    EXPECT_EQ(count, 2);
}

TEST(NotificationCenter, ObserverRemovedDuringDeliveryIsNotCalledAfterwards) {
    NotificationCenter center;
    ObserverToken second;
    int secondCalls = 0;
    auto first = center.addObserver("A", [&](const Notification&) { second.reset(); });
    second = center.addObserver("A", [&](const Notification&) { ++secondCalls; });
    center.post("A");
    EXPECT_EQ(secondCalls, 0);
}

TEST(NotificationCenter, HandlersMayPostAndObserveWithoutDeadlock) {
    NotificationCenter center;
    std::vector<std::string> calls;
    ObserverToken late;
    auto chain = center.addObserver("A", [&](const Notification&) {
        calls.push_back("A");
        late = center.addObserver("B", [&](const Notification&) { calls.push_back("B"); });
        center.post("B");
    });
    center.post("A");
    EXPECT_EQ(calls, (std::vector<std::string>{"A", "B"}));
}

TEST(NotificationCenter, TokenOutlivingTheCentreIsHarmless) {
    ObserverToken token;
    {
        NotificationCenter center;
        token = center.addObserver("A", [](const Notification&) {});
    }
    token.reset();
    EXPECT_FALSE(token.isActive());
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
