#include "foundation/main_queue.h"

#include <exception>
#include <future>

namespace corvetta {

void WorkItem::cancel() {
    if (state_) {
        state_->cancelled = true;
    }
}

bool WorkItem::isCancelled() const {
    return state_ && state_->cancelled;
}

bool WorkItem::hasRun() const {
    return state_ && state_->ran;
}

bool WorkItem::isPending() const {
    return state_ && !state_->cancelled && !state_->ran;
}

void MainQueue::runAndWait(Task task) {
    if (isMainThread()) {
        task();
        return;
    }
    auto done = std::make_shared<std::promise<void>>();
    auto finished = done->get_future();
    post([task = std::move(task), done] {
        try {
            task();
            done->set_value();
        } catch (...) {
            done->set_exception(std::current_exception());
        }
    });
    finished.get();
}

void DelayedWorkSlot::schedule(Duration delay, Task task) {
    item_.cancel();
    item_ = queue_.postDelayed(delay, std::move(task));
}

void DelayedWorkSlot::cancel() {
    item_.cancel();
}

}  // namespace corvetta
