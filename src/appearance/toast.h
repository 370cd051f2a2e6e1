// toast.h: One short notice: its text, its look and how long it stays.
#pragma once

#include <string>

#include "foundation/uuid.h"

namespace corvetta {

enum class ToastStyle { success, info, error, loading };

// Two toasts are equal when every field is: a new toast with the same text is still new.
struct ToastData {
    Uuid id = Uuid::random();
    std::string message;
    ToastStyle style = ToastStyle::info;
    // Seconds; greater than 0 dismisses the toast after that time, 0 keeps it until replaced.
    double duration = 0;

    bool operator==(const ToastData&) const = default;

    // A toast that stays for its style's usual time (loading: until replaced).
    static ToastData make(std::string message, ToastStyle style);
    static double defaultDuration(ToastStyle style);
};

}  // namespace corvetta
