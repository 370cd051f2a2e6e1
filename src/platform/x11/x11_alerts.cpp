#include "platform/x11/x11_alerts.h"

#include <algorithm>

namespace corvetta {

void X11Alerts::showAlert(Alert alert, AlertCompletion completion) {
    std::string buttons;
    for (const auto& button : alert.buttons) {
        buttons += (buttons.empty() ? "" : ", ") + button;
    }
    report_("Alert \"" + alert.title + "\": " + alert.message + " [" + buttons +
            "] answered Cancel: no dialogs on X11");
    const auto cancel = std::ranges::find(alert.buttons, "Cancel");
    const std::size_t answer = cancel != alert.buttons.end()
                                   ? static_cast<std::size_t>(cancel - alert.buttons.begin())
                                   : (alert.buttons.empty() ? 0 : alert.buttons.size() - 1);
    queue_.post([alive = std::weak_ptr<bool>(alive_), completion = std::move(completion), answer] {
        if (alive.lock()) {
            completion(answer);
        }
    });
}

}  // namespace corvetta
