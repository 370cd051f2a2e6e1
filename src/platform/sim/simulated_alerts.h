// simulated_alerts.h: Simulated alerts that wait for a test to answer them like a user.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "foundation/main_queue.h"
#include "platform/alerts.h"

namespace corvetta {

// Alerts that nobody sees: each one waits until a test answers it, as a user would by clicking a
// button. Alerts queue up in the order shown and are answered oldest first.
class SimulatedAlerts final : public AlertPort {
public:
    explicit SimulatedAlerts(MainQueue& queue);
    SimulatedAlerts(const SimulatedAlerts&) = delete;
    SimulatedAlerts& operator=(const SimulatedAlerts&) = delete;

    void showAlert(Alert alert, AlertCompletion completion) override;
    bool openAccessibilitySettings() override;

    // Every alert shown so far, answered or not, oldest first.
    const std::vector<Alert>& shownAlerts() const { return shown_; }
    // The oldest alert still waiting for an answer.
    std::optional<Alert> pendingAlert() const;
    // Clicks a button of the oldest waiting alert; its completion runs on a later queue turn.
    // False, and nothing answered, when no alert waits or the index names no button.
    bool answerAlert(std::size_t buttonIndex);

    // How many times the accessibility pane was opened.
    int accessibilitySettingsOpenings() const { return settingsOpenings_; }
    // While unavailable, opening the settings fails (as with no settings application).
    void setAccessibilitySettingsAvailable(bool available) { settingsAvailable_ = available; }

private:
    struct Waiting {
        Alert alert;
        AlertCompletion completion;
    };

    MainQueue& queue_;
    std::vector<Alert> shown_;
    std::deque<Waiting> waiting_;
    int settingsOpenings_ = 0;
    bool settingsAvailable_ = true;
    // Completions already posted are dropped once these alerts are gone.
    std::shared_ptr<int> lifetime_ = std::make_shared<int>(0);
};

}  // namespace corvetta
