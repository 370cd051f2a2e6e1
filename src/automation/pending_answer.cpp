#include "automation/pending_answer.h"

#include <utility>

namespace corvetta {

void PendingAnswer::deliver(MethodOutcome outcome) {
    {
        std::lock_guard lock(mutex_);
        if (outcome_ || abandoned_) {
            return;
        }
        outcome_.emplace(std::move(outcome));
    }
    changed_.notify_all();
}

void PendingAnswer::abandon() {
    {
        std::lock_guard lock(mutex_);
        abandoned_ = true;
    }
    changed_.notify_all();
}

bool PendingAnswer::isAbandoned() const {
    std::lock_guard lock(mutex_);
    return abandoned_;
}

std::optional<MethodOutcome> PendingAnswer::wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return outcome_ || abandoned_; });
    if (abandoned_ && !outcome_) {
        return std::nullopt;
    }
    return std::move(outcome_);
}

namespace {
// Lives as long as any copy of the reply; answers for a dispatcher that dropped it unanswered.
struct ReplyGuard {
    explicit ReplyGuard(std::shared_ptr<PendingAnswer> pending) : answer(std::move(pending)) {}
    ReplyGuard(const ReplyGuard&) = delete;
    ReplyGuard& operator=(const ReplyGuard&) = delete;
    ~ReplyGuard() { answer->deliver(unexpected(std::string(kNoAnswerMessage))); }

    std::shared_ptr<PendingAnswer> answer;
};
}  // namespace

MethodReply makeMethodReply(std::shared_ptr<PendingAnswer> answer) {
    auto guard = std::make_shared<ReplyGuard>(std::move(answer));
    return [guard](MethodOutcome outcome) { guard->answer->deliver(std::move(outcome)); };
}

}  // namespace corvetta
