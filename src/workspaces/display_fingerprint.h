// display_fingerprint.h: How one display and a whole arrangement of displays are recorded.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "foundation/date.h"
#include "foundation/geometry.h"

namespace corvetta {

// One display as a saved workspace remembers it: enough to recognise it again after a restart,
// a re-plug or a swap, and where it stood relative to the main display.
struct DisplayFingerprint {
    // The display's bounds in points.
    Size resolution;
    // Millimetres; absent when the display does not report one.
    std::optional<Size> physicalSize;
    double scaleFactor = 1;
    std::optional<std::string> colorSpace;
    bool isBuiltIn = false;
    // Centre of this display minus centre of the main display.
    Point relativePosition;
    std::optional<std::string> name;
    std::optional<std::string> persistentUUID;
    std::optional<std::string> hardwareSerial;
    // Eight lower-case hexadecimal digits of a 32-bit hash of the EDID bytes.
    std::optional<std::string> edidFingerprint;

    bool operator==(const DisplayFingerprint&) const = default;
};

// Every display at one moment, as recorded with a saved workspace.
struct DisplayArrangementInfo {
    Date createdAt;
    std::vector<DisplayFingerprint> displayFingerprints;
    std::optional<DisplayFingerprint> mainDisplayFingerprint;
    // Summary key of the whole arrangement.
    std::string arrangementFingerprint;
    // Height of each display's bounds, keyed by the monitor id windows are saved with; flips
    // frames between top-left and bottom-left origins when windows move between arrangements.
    std::map<std::string, double> monitorDisplayHeights;

    bool operator==(const DisplayArrangementInfo&) const = default;
};

}  // namespace corvetta
