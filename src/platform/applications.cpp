#include "platform/applications.h"

namespace corvetta {

std::string RunningApplication::description() const {
    return localizedName + " (" + bundleIdentifier.value_or("no bundle identifier") + ", pid " +
           std::to_string(processIdentifier) + ")";
}

}  // namespace corvetta
