#include "workspaces/display_key.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace corvetta {

namespace {

std::string format(const char* pattern, double a, double b) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, pattern, a, b);
    return buffer;
}

std::string compactLowerName(const std::optional<std::string>& name) {
    if (!name) {
        return "unknown";
    }
    std::string out;
    for (const unsigned char c : *name) {
        if (!std::isspace(c)) {
            out.push_back(static_cast<char>(std::tolower(c)));
        }
    }
    return out;
}

bool present(const std::optional<std::string>& value) {
    return value && !value->empty();
}

std::string identityPart(const DisplayFingerprint& fingerprint) {
    if (present(fingerprint.persistentUUID)) {
        return "uuid_" + fingerprint.persistentUUID->substr(0, 8);
    }
    if (present(fingerprint.hardwareSerial)) {
        return "serial_" + *fingerprint.hardwareSerial;
    }
    if (present(fingerprint.edidFingerprint)) {
        return "edid_" + fingerprint.edidFingerprint->substr(0, 8);
    }
    return "smart_" +
           format("%.0fx%.0f", fingerprint.resolution.width, fingerprint.resolution.height) + "_" +
           format("%.0f_%.0f", fingerprint.relativePosition.x, fingerprint.relativePosition.y);
}

}  // namespace

std::string displayKey(const DisplayFingerprint& fingerprint) {
    char scale[32];
    std::snprintf(scale, sizeof scale, "%.1f", fingerprint.scaleFactor);
    return format("%.0fx%.0f", fingerprint.resolution.width, fingerprint.resolution.height) + "_" +
           scale + "_" + (fingerprint.isBuiltIn ? "builtin" : "external") + "_" +
           compactLowerName(fingerprint.name) + "_" + identityPart(fingerprint);
}

std::string arrangementFingerprint(const std::vector<DisplayFingerprint>& fingerprints,
                                   const std::optional<DisplayFingerprint>& mainDisplay) {
    std::vector<std::string> keys;
    keys.reserve(fingerprints.size());
    for (const auto& fingerprint : fingerprints) {
        keys.push_back(displayKey(fingerprint));
    }
    std::sort(keys.begin(), keys.end());
    std::string joined;
    for (const auto& key : keys) {
        joined += (joined.empty() ? "" : "|") + key;
    }
    return std::to_string(fingerprints.size()) + ":" +
           (mainDisplay ? displayKey(*mainDisplay) : std::string("none")) + ":" + joined;
}

}  // namespace corvetta
