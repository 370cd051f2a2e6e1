// display_change_analysis.h: The kinds of display change and what comparing two arrangements
// concluded.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/date.h"
#include "workspaces/display_fingerprint.h"

namespace corvetta {

enum class DisplayChangeType {
    noChange,
    displayAdded,
    displayRemoved,
    displayReplaced,
    mainDisplayChanged,
    positionChanged,
    potentialRestart,
    identicalMonitorSwap,
};

// "no_change", "display_added", ...: the text a change type is written as.
std::string_view rawValue(DisplayChangeType type);
std::optional<DisplayChangeType> displayChangeTypeFromRawValue(std::string_view text);

struct DisplayChangeAnalysis {
    DisplayChangeType changeType = DisplayChangeType::noChange;
    // How sure the analysis is that the arrangement really changed this way, 0 to 1.
    float confidence = 1;
    // In the order they were found.
    std::vector<std::string> reasons;
    bool isInGracePeriod = false;
};

struct DisplayArrangementSnapshot {
    DisplayArrangementInfo arrangement;
    Date timestamp;
};

}  // namespace corvetta
