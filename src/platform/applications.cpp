#include "platform/applications.h"

namespace corvetta {

std::string RunningApplication::description() const {
    return localizedName + " (" + bundleIdentifier.value_or("no bundle identifier") + ", pid " +
           std::to_string(processIdentifier) + ")";
}

std::vector<ApplicationAction> ApplicationsPort::applicationActions(ProcessId) const {
    return {};
}

Expected<void, std::string> ApplicationsPort::performApplicationAction(
    ProcessId, const std::string& identifier) {
    return unexpected("this desktop has no application action " + identifier);
}

}  // namespace corvetta
