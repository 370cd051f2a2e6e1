#include "appearance/toast_manager.h"

namespace corvetta {

namespace {

struct StyleRow {
    ToastStyle style;
    double duration;
};

// Errors stay long enough to be read twice; loading stays until its result replaces it.
constexpr StyleRow kStyles[] = {
    {ToastStyle::success, 2.0},
    {ToastStyle::info, 3.0},
    {ToastStyle::error, 5.0},
    {ToastStyle::loading, 0.0},
};

Duration seconds(double value) {
    return std::chrono::round<Duration>(std::chrono::duration<double>(value));
}

}  // namespace

double ToastData::defaultDuration(ToastStyle style) {
    for (const auto& row : kStyles) {
        if (row.style == style) {
            return row.duration;
        }
    }
    return 0;
}

ToastData ToastData::make(std::string message, ToastStyle style) {
    return ToastData{
        .message = std::move(message), .style = style, .duration = defaultDuration(style)};
}

ToastManager::ToastManager(Preferences& defaults, MainQueue& queue, LoggingService& logging)
    : defaults_(defaults),
      queue_(queue),
      dismissTask_(queue),
      pendingCompletion_(queue),
      loadingDebounceWork_(queue),
      logger(logging, kServiceName, LogCategory::toast()) {}

bool ToastManager::isEnabled() const {
    return defaults_.boolValue(kIsEnabledKey).value_or(true);
}

void ToastManager::setEnabled(bool enabled) {
    defaults_.set(kIsEnabledKey, PropertyValue(enabled));
    if (!enabled &&
        (isPresented_ || loadingDebounceWork_.isPending() || pendingCompletion_.isPending())) {
        dismiss();
    } else {
        observers_.notify();
    }
}

void ToastManager::show(ToastData toast) {
    if (!isEnabled()) {
        logger.debug("Toast dropped, toasts are off: " + toast.message);
        return;
    }
    if (toast.style != ToastStyle::loading) {
        present(std::move(toast));
        return;
    }
    loadingDebounceWork_.schedule(kLoadingDebounceDelay, [this, toast = std::move(toast)] {
        present(toast);
        loadingStartTime_ = queue_.clock().monotonicNow();
    });
}

void ToastManager::finishLoading(ToastData result) {
    loadingDebounceWork_.cancel();
    if (!isEnabled()) {
        logger.debug("Toast dropped, toasts are off: " + result.message);
        return;
    }
    if (loadingStartTime_) {
        const auto shownFor = queue_.clock().monotonicNow() - *loadingStartTime_;
        if (shownFor < kMinLoadingDisplayDuration) {
            pendingCompletion_.schedule(kMinLoadingDisplayDuration - shownFor,
                                        [this, result = std::move(result)] { present(result); });
            return;
        }
    }
    present(std::move(result));
}

void ToastManager::present(ToastData toast) {
    dismissTask_.cancel();
    pendingCompletion_.cancel();
    loadingStartTime_.reset();
    logger.info("Toast shown: " + toast.message);
    if (toast.duration > 0) {
        dismissTask_.schedule(seconds(toast.duration), [this] { dismiss(); });
    }
    current_ = std::move(toast);
    isPresented_ = true;
    observers_.notify();
}

void ToastManager::dismiss() {
    dismissTask_.cancel();
    pendingCompletion_.cancel();
    loadingDebounceWork_.cancel();
    loadingStartTime_.reset();
    isPresented_ = false;
    observers_.notify();
}

}  // namespace corvetta
