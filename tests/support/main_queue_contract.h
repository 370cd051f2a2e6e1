// main_queue_contract.h: The behaviour every real main queue owes the product, as typed tests.
#pragma once

#include <chrono>
#include <exception>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "foundation/clock.h"
#include "foundation/queue_core.h"

namespace corvetta {

// Instantiated once per loop (the poll loop, Qt's loop): each must wake for work posted from other
// threads, for due timers and for ready descriptors, in the same order, and stop when asked. These
// run on real time, so they only assert order and lower bounds.
template <typename Loop>
class MainQueueContract : public ::testing::Test {
protected:
    SystemClock clock;
    std::vector<std::string> failures;
    Loop loop{clock, [this](std::exception_ptr failure) {
                  try {
                      std::rethrow_exception(failure);
                  } catch (const std::exception& e) {
                      failures.push_back(e.what());
                  }
              }};
    std::vector<std::string> order;

    struct Pipe {
        int read = -1;
        int write = -1;
        Pipe() {
            int fds[2];
            if (pipe(fds) == 0) {
                read = fds[0];
                write = fds[1];
            }
        }
        ~Pipe() {
            close(read);
            close(write);
        }
    };
};

TYPED_TEST_SUITE_P(MainQueueContract);

TYPED_TEST_P(MainQueueContract, ServesOtherThreadsDescriptorsAndTimersInOrder) {
    using namespace std::chrono_literals;
    auto& loop = this->loop;
    auto& order = this->order;
    typename TestFixture::Pipe fds;
    ASSERT_GE(fds.read, 0);

    FdWatch watch = loop.watch(fds.read, static_cast<unsigned>(FdEvent::readable), [&](unsigned) {
        char c;
        ASSERT_EQ(read(fds.read, &c, 1), 1);
        order.push_back(std::string("fd:") + c);
        loop.postDelayed(20ms, [&] {
            order.push_back("timer");
            loop.stop();
        });
    });
    auto cancelled = loop.postDelayed(10ms, [&] { order.push_back("cancelled"); });
    cancelled.cancel();
    bool ranOnMain = false;
    std::thread other([&] {
        loop.runAndWait([&] {
            order.push_back("from-thread");
            ranOnMain = loop.isMainThread();
        });
        ASSERT_EQ(write(fds.write, "x", 1), 1);
    });
    const auto started = this->clock.monotonicNow();
    loop.run();
    other.join();
    EXPECT_EQ(order, (std::vector<std::string>{"from-thread", "fd:x", "timer"}));
    EXPECT_GE(this->clock.monotonicNow() - started, 20ms);
    EXPECT_TRUE(ranOnMain);
    EXPECT_FALSE(std::async(std::launch::async, [&] { return loop.isMainThread(); }).get());
}

TYPED_TEST_P(MainQueueContract, DelayedWorkRunsByDueTimeThenScheduleOrderAndNeverEarly) {
    using namespace std::chrono_literals;
    auto& loop = this->loop;
    auto& order = this->order;
    const auto started = this->clock.monotonicNow();
    std::vector<Duration> lateness;
    const auto at = [&](std::string name, Duration delay) {
        loop.postDelayed(delay, [&, name, delay] {
            lateness.push_back(this->clock.monotonicNow() - started - delay);
            order.push_back(name);
        });
    };
    at("30ms", 30ms);
    at("5ms-first", 5ms);
    at("5ms-second", 5ms);
    loop.post([&] { order.push_back("posted"); });
    loop.postDelayed(40ms, [&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(order, (std::vector<std::string>{"posted", "5ms-first", "5ms-second", "30ms"}));
    for (const auto late : lateness) {
        EXPECT_GE(late, Duration::zero());
    }
}

TYPED_TEST_P(MainQueueContract, ADroppedWatchIsSilentAndAFailingTaskDoesNotStopTheLoop) {
    using namespace std::chrono_literals;
    auto& loop = this->loop;
    auto& order = this->order;
    typename TestFixture::Pipe dropped;
    typename TestFixture::Pipe kept;
    FdWatch droppedWatch = loop.watch(dropped.read, static_cast<unsigned>(FdEvent::readable),
                                      [&](unsigned) { order.push_back("dropped fired"); });
    FdWatch keptWatch;
    loop.post([&] {
        droppedWatch.reset();
        ASSERT_EQ(write(dropped.write, "x", 1), 1);
        // Watched from inside a task: served without any other wake-up.
        keptWatch =
            loop.watch(kept.read, static_cast<unsigned>(FdEvent::readable), [&](unsigned events) {
                char c;
                ASSERT_EQ(read(kept.read, &c, 1), 1);
                EXPECT_TRUE(hasEvent(events, FdEvent::readable));
                order.push_back("kept fired");
                loop.postDelayed(10ms, [&] { loop.stop(); });
            });
        ASSERT_EQ(write(kept.write, "y", 1), 1);
    });
    loop.post([] { throw std::runtime_error("broken task"); });
    loop.run();
    EXPECT_EQ(order, (std::vector<std::string>{"kept fired"}));
    EXPECT_EQ(this->failures, (std::vector<std::string>{"broken task"}));
}

REGISTER_TYPED_TEST_SUITE_P(MainQueueContract, ServesOtherThreadsDescriptorsAndTimersInOrder,
                            DelayedWorkRunsByDueTimeThenScheduleOrderAndNeverEarly,
                            ADroppedWatchIsSilentAndAFailingTaskDoesNotStopTheLoop);

}  // namespace corvetta
