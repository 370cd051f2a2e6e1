// x11_alerts.h: Alerts on X11, which has no dialog toolkit here: logged and answered as dismissed.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "foundation/main_queue.h"
#include "platform/alerts.h"

namespace corvetta {

// Alerts on X11, where the program has no dialog toolkit: the alert's text goes to `report` (a
// log line) and the answer is "Cancel" (the last button when none is called that) on the queue's
// next turn, as if the user had dismissed it. There are no accessibility settings to open.
class X11Alerts final : public AlertPort {
public:
    X11Alerts(MainQueue& queue, std::function<void(const std::string&)> report)
        : queue_(queue), report_(std::move(report)) {}

    void showAlert(Alert alert, AlertCompletion completion) override;
    bool openAccessibilitySettings() override { return false; }

private:
    MainQueue& queue_;
    std::function<void(const std::string&)> report_;
    // Answers already posted are dropped once the alerts are gone.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace corvetta
