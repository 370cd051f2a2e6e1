// toast_manager.h: The one toast on screen: showing, debounced loading, replacement, dismissal.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "appearance/toast.h"
#include "diagnostics/logger.h"
#include "foundation/main_queue.h"
#include "foundation/observer_list.h"
#include "foundation/preferences.h"

namespace corvetta {

// The single source of the toast on screen; the toast window follows `current` and
// `isPresented`. A loading toast appears only once its operation has run for half a second, and
// once seen stays at least 0.6 s before its result replaces it, so quick operations show only
// their result and slow ones never flash. With "Toaster.isEnabled" false, toasts are dropped.
// Every shown toast is logged "Toast shown: <message>" in the "toast" category. Main thread only.
class ToastManager {
public:
    static constexpr const char* kServiceName = "ToastManager";
    static constexpr const char* kIsEnabledKey = "Toaster.isEnabled";
    static constexpr Duration kMinLoadingDisplayDuration = std::chrono::milliseconds(600);
    static constexpr Duration kLoadingDebounceDelay = std::chrono::milliseconds(500);

    ToastManager(Preferences& defaults, MainQueue& queue, LoggingService& logging);
    ToastManager(const ToastManager&) = delete;
    ToastManager& operator=(const ToastManager&) = delete;

    // The toast shown, or shown last while it animates out.
    const std::optional<ToastData>& current() const { return current_; }
    bool isPresented() const { return isPresented_; }
    // Absent setting means on.
    bool isEnabled() const;
    // Turning toasts off takes the one on screen away.
    void setEnabled(bool enabled);

    // Replaces the toast on screen; a loading toast waits out the debounce first.
    void show(ToastData toast);
    void show(std::string message, ToastStyle style) {
        show(ToastData::make(std::move(message), style));
    }
    // Ends the loading operation under way with its result (see the class comment).
    void finishLoading(ToastData result);
    void dismiss();

    // Called after `current`, `isPresented` or `isEnabled` changed.
    [[nodiscard]] Registration observe(std::function<void()> handler) {
        return observers_.add(std::move(handler));
    }

private:
    void present(ToastData toast);

    Preferences& defaults_;
    MainQueue& queue_;
    std::optional<ToastData> current_;
    bool isPresented_ = false;
    std::optional<MonotonicTime> loadingStartTime_;
    DelayedWorkSlot dismissTask_;
    DelayedWorkSlot pendingCompletion_;
    DelayedWorkSlot loadingDebounceWork_;
    ObserverList<> observers_;
    Logger logger;
};

}  // namespace corvetta
