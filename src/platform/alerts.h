// alerts.h: The alerts port: questions put to the user, and the way to the accessibility settings.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace corvetta {

// A question put to the user in a modal-style alert.
struct Alert {
    std::string title;
    std::string message;
    // Left to right as the user reads them; the first is the default button.
    std::vector<std::string> buttons;

    bool operator==(const Alert&) const = default;
};

// Receives the index into Alert::buttons of the button the user chose.
using AlertCompletion = std::function<void(std::size_t buttonIndex)>;

// The alerts port: what the program asks of the user outside its own windows.
class AlertPort {
public:
    virtual ~AlertPort() = default;

    // Shows the alert and returns at once. The completion runs on the main thread, never before
    // this call returns, once the user has chosen a button; not at all if the desktop goes first.
    virtual void showAlert(Alert alert, AlertCompletion completion) = 0;
    // Opens the system settings at the accessibility privacy pane, where the user grants the
    // permission. False when they could not be opened.
    virtual bool openAccessibilitySettings() = 0;
};

}  // namespace corvetta
