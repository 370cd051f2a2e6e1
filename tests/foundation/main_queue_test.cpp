#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "foundation/event_loop.h"
#include "foundation/manual_queue.h"
#include "support/main_queue_contract.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

class ManualQueueTest : public ::testing::Test {
protected:
    ManualClock clock;
    ManualQueue queue{clock};
    std::vector<std::string> order;

    Task record(std::string name) {
        return [this, name] { order.push_back(name); };
    }
};

TEST_F(ManualQueueTest, WorkRunsInOrderWhenTheTestSaysAndDelayedWorkAtItsOwnDueTime) {
    queue.post([this] {
        order.push_back("a");
        queue.post(record("c"));
    });
    queue.post(record("b"));
    EXPECT_TRUE(order.empty());
    EXPECT_EQ(queue.pendingCount(), 2u);
    EXPECT_EQ(queue.runUntilIdle(), 3u);

    const auto start = clock.monotonicNow();
    const auto at = [&](std::string name) {
        return [this, start, name] {
            order.push_back(name + "@" + std::to_string((clock.monotonicNow() - start) / 1ms));
        };
    };
    EXPECT_FALSE(queue.timeUntilNextDue());
    queue.postDelayed(3s, at("3s"));
    queue.postDelayed(1s, at("1s-first"));
    queue.postDelayed(1s, at("1s-second"));
    // A follow-up scheduled from inside counts from its own moment, not from the test's.
    queue.postDelayed(2500ms, [&, then = at("2.5s")] {
        then();
        queue.postDelayed(1s, at("follow-up"));
    });
    WorkItem cancelled = queue.postDelayed(500ms, record("cancelled"));
    EXPECT_TRUE(cancelled.isPending());
    EXPECT_EQ(queue.timeUntilNextDue(), Duration(500ms));
    cancelled.cancel();
    EXPECT_EQ(queue.timeUntilNextDue(), Duration(1s));
    queue.advance(999ms);
    EXPECT_EQ(order.size(), 3u);
    queue.advance(10s);
    EXPECT_EQ(order, (std::vector<std::string>{"a", "b", "c", "1s-first@1000", "1s-second@1000",
                                               "2.5s@2500", "3s@3000", "follow-up@3500"}));
    EXPECT_EQ(clock.monotonicNow() - start, 10999ms);
    EXPECT_FALSE(cancelled.hasRun());
    cancelled.cancel();  // late: changes nothing
}

TEST_F(ManualQueueTest, ANewerRequestReplacesThePendingOne) {
    DelayedWorkSlot debounce(queue);
    debounce.schedule(500ms, record("first"));
    queue.advance(400ms);
    debounce.schedule(500ms, record("second"));
    queue.advance(400ms);
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(debounce.isPending());
    queue.advance(100ms);
    EXPECT_EQ(order, std::vector<std::string>{"second"});
    EXPECT_FALSE(debounce.isPending());

    {
        DelayedWorkSlot dropped(queue);
        dropped.schedule(1s, record("never"));
    }
    queue.advance(2s);
    EXPECT_EQ(order, std::vector<std::string>{"second"});
}

TEST_F(ManualQueueTest, AFailingTaskIsReportedAndTheQueueGoesOn) {
    std::vector<std::string> failures;
    ManualQueue guarded(clock, [&](std::exception_ptr e) {
        try {
            std::rethrow_exception(e);
        } catch (const std::exception& error) {
            failures.push_back(error.what());
        }
    });
    guarded.post([] { throw std::runtime_error("boom"); });
    guarded.post(record("after"));
    guarded.runUntilIdle();
    EXPECT_EQ(failures, std::vector<std::string>{"boom"});
    EXPECT_EQ(order, std::vector<std::string>{"after"});
}

TEST_F(ManualQueueTest, WorkThatNeverStopsRepostingFailsInsteadOfHanging) {
    std::function<void()> again = [&] { queue.post(again); };
    queue.post(again);
    EXPECT_THROW(queue.runUntilIdle(), std::logic_error);
}

TEST_F(ManualQueueTest, WatchedDescriptorsAreServedWhenReady) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    std::string received;
    FdWatch watch = queue.watch(fds[0], static_cast<unsigned>(FdEvent::readable), [&](unsigned ev) {
        EXPECT_TRUE(hasEvent(ev, FdEvent::readable));
        char buffer[16];
        const auto n = read(fds[0], buffer, sizeof buffer);
        received.append(buffer, static_cast<std::size_t>(n));
    });
    queue.runUntilIdle();
    EXPECT_TRUE(received.empty());
    ASSERT_EQ(write(fds[1], "hi", 2), 2);
    queue.runUntilIdle();
    EXPECT_EQ(received, "hi");
    watch.reset();
    ASSERT_EQ(write(fds[1], "!", 1), 1);
    queue.runUntilIdle();
    EXPECT_EQ(received, "hi");
    close(fds[0]);
    close(fds[1]);
}

TEST_F(ManualQueueTest, RunAndWaitRunsOnTheMainThreadAndPassesExceptionsBack) {
    std::thread::id ranOn;
    auto caller = std::async(std::launch::async, [&] {
        queue.runAndWait([&] { ranOn = std::this_thread::get_id(); });
        queue.runAndWait([] { throw std::runtime_error("refused"); });
    });
    for (int call = 0; call < 2; ++call) {
        ASSERT_TRUE(queue.waitForPostedWork(10s));
        queue.runUntilIdle();
    }
    EXPECT_THROW(caller.get(), std::runtime_error);
    EXPECT_EQ(ranOn, std::this_thread::get_id());

    // On the main thread it runs at once.
    bool ran = false;
    queue.runAndWait([&] { ran = true; });
    EXPECT_TRUE(ran);
}

// The poll loop owes the product the same as every other main queue.
INSTANTIATE_TYPED_TEST_SUITE_P(PollLoop, MainQueueContract, ::testing::Types<EventLoop>);

}  // namespace
}  // namespace corvetta
