// pending_answer.h: Hands a method's answer from the main thread to its connection's thread.
#pragma once

// Included only by the automation sources: it brings in the JSON library.

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "automation/method_dispatcher.h"

namespace corvetta {

// Where a method's answer travels from the main thread to the connection thread that waits for
// it. The first delivery counts; later ones, and any after the wait was abandoned (the server
// stopping), are dropped, so a reply that arrives late is harmless.
class PendingAnswer {
public:
    void deliver(MethodOutcome outcome);
    // Releases the waiting thread without an answer.
    void abandon();
    bool isAbandoned() const;
    // Blocks until an answer is delivered (returned) or the wait is abandoned (nothing).
    std::optional<MethodOutcome> wait();

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<MethodOutcome> outcome_;
    bool abandoned_ = false;
};

// The reply handed to a dispatcher for one request. When every copy of it is dropped without
// having been called, the request is answered with an error instead of being left waiting.
MethodReply makeMethodReply(std::shared_ptr<PendingAnswer> answer);

inline constexpr const char* kNoAnswerMessage = "The method ended without an answer";

}  // namespace corvetta
