// learned_min_size_store.h: Per application, the sizes below which its windows refused to shrink.
#pragma once

#include <optional>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/geometry.h"
#include "foundation/preferences.h"

namespace corvetta {

// Kept in the user defaults as {bundle identifier: [minimum width, minimum height]}; 0 in a
// dimension means not learned. Entries of another shape are left alone (and ignored), so a value
// written by another version is never lost to a rewrite. Main thread only.
class LearnedMinSizeStore {
public:
    static constexpr const char* kKey = "corvetta.learnedMinSizes";

    LearnedMinSizeStore(Preferences& defaults, LoggingService& logging);

    // None when nothing was learned for the application.
    std::optional<Size> minSize(const std::string& bundleID) const;
    // Keeps the larger of stored and new per dimension; a 0 leaves a dimension as it is.
    void record(const std::string& bundleID, double width, double height);
    // A window turned out smaller than learned: brings each dimension above a non-zero value down
    // to it.
    void lower(const std::string& bundleID, double width, double height);
    // "Reset learned sizes".
    void resetAll();

private:
    void store(const std::string& bundleID, Size size);

    Preferences& defaults_;
    Logger logger_;
};

}  // namespace corvetta
