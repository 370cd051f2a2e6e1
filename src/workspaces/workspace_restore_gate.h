// workspace_restore_gate.h: Lets one workspace restoration run at a time, and outlives a stuck one.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>

#include "foundation/clock.h"

namespace corvetta {

// The one lock restorations share. A restoration that began more than `staleAfter` ago is taken
// to have died without ending (a lost callback, an application that never answered), so a new
// one may take the gate over rather than being refused until the program restarts. Safe from any
// thread; the time is the main queue's clock, so tests move it by hand.
class RestoreGate {
public:
    static constexpr std::chrono::seconds kDefaultStaleAfter{120};

    explicit RestoreGate(const Clock& clock, Duration staleAfter = kDefaultStaleAfter)
        : clock_(clock), staleAfter_(staleAfter) {}

    enum class Entry {
        begun,          // the gate was free
        tookOverStale,  // the gate was held by a restoration that is now stale
        busy,           // a restoration is running; the caller must not start
    };
    // Takes the gate unless a restoration that is not stale holds it.
    Entry tryBegin();
    // Frees the gate; harmless when it is free.
    void end();
    // Held, and for longer than `staleAfter`.
    bool isStale() const;
    bool isHeld() const;

    std::optional<MonotonicTime> startedAt() const;
    Duration staleAfter() const { return staleAfter_; }

private:
    bool isStaleLocked() const;

    const Clock& clock_;
    const Duration staleAfter_;
    mutable std::mutex mutex_;
    std::optional<MonotonicTime> startedAt_;
};

}  // namespace corvetta
