#include "windowing/excluded_applications.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "windowing/system_surfaces.h"

namespace corvetta {

namespace {

bool sameIgnoringCase(const std::string& a, const std::string& b) {
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

}  // namespace

bool isExcludedApplication(const std::string& bundleIdentifier,
                           const ApplicationsPort& applications, const Preferences& defaults) {
    const auto own = applications.currentApplication().bundleIdentifier;
    if ((own && sameIgnoringCase(*own, bundleIdentifier)) || isSystemSurface(bundleIdentifier)) {
        return true;
    }
    const auto listed =
        defaults.stringList(kUserExcludedBundleIDsKey).value_or(std::vector<std::string>{});
    return std::ranges::any_of(listed, [&](const std::string& entry) {
        return sameIgnoringCase(entry, bundleIdentifier);
    });
}

}  // namespace corvetta
