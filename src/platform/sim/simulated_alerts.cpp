#include "platform/sim/simulated_alerts.h"

#include <utility>

namespace corvetta {

SimulatedAlerts::SimulatedAlerts(MainQueue& queue) : queue_(queue) {}

void SimulatedAlerts::showAlert(Alert alert, AlertCompletion completion) {
    shown_.push_back(alert);
    waiting_.push_back({std::move(alert), std::move(completion)});
}

bool SimulatedAlerts::openAccessibilitySettings() {
    if (!settingsAvailable_) {
        return false;
    }
    ++settingsOpenings_;
    return true;
}

std::optional<Alert> SimulatedAlerts::pendingAlert() const {
    if (waiting_.empty()) {
        return std::nullopt;
    }
    return waiting_.front().alert;
}

bool SimulatedAlerts::answerAlert(std::size_t buttonIndex) {
    if (waiting_.empty() || buttonIndex >= waiting_.front().alert.buttons.size()) {
        return false;
    }
    auto completion = std::move(waiting_.front().completion);
    waiting_.pop_front();
    if (completion) {
        std::weak_ptr<int> alive = lifetime_;
        queue_.post([alive, buttonIndex, completion = std::move(completion)] {
            if (!alive.expired()) {
                completion(buttonIndex);
            }
        });
    }
    return true;
}

}  // namespace corvetta
