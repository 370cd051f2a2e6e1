#include "platform/hot_keys.h"

namespace corvetta {

std::string_view description(HotKeyRegistrationError error) {
    switch (error) {
        case HotKeyRegistrationError::combinationTaken:
            return "The key combination is already in use";
        case HotKeyRegistrationError::idInUse:
            return "The hot key id is already registered";
    }
    return "The key combination is already in use";
}

}  // namespace corvetta
