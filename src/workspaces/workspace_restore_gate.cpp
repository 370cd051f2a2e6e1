#include "workspaces/workspace_restore_gate.h"

namespace corvetta {

RestoreGate::Entry RestoreGate::tryBegin() {
    std::lock_guard lock(mutex_);
    if (startedAt_ && !isStaleLocked()) {
        return Entry::busy;
    }
    const bool stale = startedAt_.has_value();
    startedAt_ = clock_.monotonicNow();
    return stale ? Entry::tookOverStale : Entry::begun;
}

void RestoreGate::end() {
    std::lock_guard lock(mutex_);
    startedAt_.reset();
}

bool RestoreGate::isStale() const {
    std::lock_guard lock(mutex_);
    return isStaleLocked();
}

bool RestoreGate::isHeld() const {
    std::lock_guard lock(mutex_);
    return startedAt_.has_value();
}

std::optional<MonotonicTime> RestoreGate::startedAt() const {
    std::lock_guard lock(mutex_);
    return startedAt_;
}

bool RestoreGate::isStaleLocked() const {
    return startedAt_ && clock_.monotonicNow() - *startedAt_ > staleAfter_;
}

}  // namespace corvetta
