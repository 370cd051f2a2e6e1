#include "workspaces/display_arrangement_stability_service.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>

#include "workspaces/display_key.h"

namespace corvetta {

namespace {

constexpr double kMinorTolerance = 50;
constexpr double kSignificantTolerance = 200;
// A move this large makes the analysis fully sure the arrangement changed.
constexpr double kFullConfidenceMove = 500;
constexpr double kSwapTolerance = 5;
constexpr auto kRapidChangeWindow = std::chrono::seconds(10);
constexpr double kInstabilityPenalty = 0.7;

std::string twoDecimals(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

std::set<std::string> keysOf(const DisplayArrangementInfo& arrangement) {
    std::set<std::string> keys;
    for (const auto& fingerprint : arrangement.displayFingerprints) {
        keys.insert(displayKey(fingerprint));
    }
    return keys;
}

std::string mainKey(const DisplayArrangementInfo& arrangement) {
    return arrangement.mainDisplayFingerprint ? displayKey(*arrangement.mainDisplayFingerprint)
                                              : "none";
}

bool differ(const DisplayArrangementInfo& a, const DisplayArrangementInfo& b) {
    return a.displayFingerprints.size() != b.displayFingerprints.size() ||
           mainKey(a) != mainKey(b) || keysOf(a) != keysOf(b);
}

double largerDelta(Point a, Point b) {
    return std::max(std::abs(a.x - b.x), std::abs(a.y - b.y));
}

struct PositionAnalysis {
    bool significant = false;
    bool minor = false;
    double confidence = 1.0;
};

PositionAnalysis analyzePositions(const DisplayArrangementInfo& saved,
                                  const DisplayArrangementInfo& current, const Logger& logger) {
    logger.info("=== POSITION ANALYSIS ===");
    logger.info("Using tolerances: minor=" + std::to_string(static_cast<int>(kMinorTolerance)) +
                "px, significant=" + std::to_string(static_cast<int>(kSignificantTolerance)) +
                "px");
    std::map<std::string, Point> savedPositions;
    for (const auto& fingerprint : saved.displayFingerprints) {
        savedPositions[displayKey(fingerprint)] = fingerprint.relativePosition;
    }
    PositionAnalysis result;
    double largest = 0;
    for (const auto& fingerprint : current.displayFingerprints) {
        const auto key = displayKey(fingerprint);
        const auto found = savedPositions.find(key);
        if (found == savedPositions.end()) {
            continue;
        }
        const double delta = largerDelta(found->second, fingerprint.relativePosition);
        largest = std::max(largest, delta);
        if (delta > kSignificantTolerance) {
            result.significant = true;
        } else if (delta > kMinorTolerance) {
            result.minor = true;
        }
        if (delta > kMinorTolerance) {
            logger.info("Display " + key + " moved by " + twoDecimals(delta) + "px");
        }
    }
    if (result.significant) {
        result.minor = false;
        result.confidence = std::min(largest / kFullConfidenceMove, 1.0);
    } else if (result.minor) {
        result.confidence = 0.6;
    }
    return result;
}

// What tells a display apart from an identical one besides where it stands: the first identity
// it reports, as the display key takes it. Empty for a display that reports none.
std::string identityOf(const DisplayFingerprint& fingerprint) {
    auto present = [](const std::optional<std::string>& value) { return value && !value->empty(); };
    if (present(fingerprint.persistentUUID)) {
        return "uuid_" + *fingerprint.persistentUUID;
    }
    if (present(fingerprint.hardwareSerial)) {
        return "serial_" + *fingerprint.hardwareSerial;
    }
    if (present(fingerprint.edidFingerprint)) {
        return "edid_" + *fingerprint.edidFingerprint;
    }
    return {};
}

// The same model: everything a display reports except its identity and position.
DisplayFingerprint modelOf(DisplayFingerprint fingerprint) {
    fingerprint.relativePosition = {};
    fingerprint.persistentUUID.reset();
    fingerprint.hardwareSerial.reset();
    fingerprint.edidFingerprint.reset();
    return fingerprint;
}

// Each position of `a` matched to a different one of `b` within the tolerance.
bool samePlaces(std::vector<Point> a, std::vector<Point> b) {
    for (const auto& place : a) {
        const auto match = std::find_if(b.begin(), b.end(), [&](const Point& other) {
            return largerDelta(place, other) <= kSwapTolerance;
        });
        if (match == b.end()) {
            return false;
        }
        b.erase(match);
    }
    return b.empty();
}

// Within one group of identical models: the places are the same on both sides, and at least two
// displays that can be followed by their identity now stand where another stood.
bool groupSwapped(const std::vector<const DisplayFingerprint*>& saved,
                  const std::vector<const DisplayFingerprint*>& current) {
    std::vector<Point> savedPlaces, currentPlaces;
    std::map<std::string, std::vector<Point>> savedByIdentity, currentByIdentity;
    for (const auto* fingerprint : saved) {
        savedPlaces.push_back(fingerprint->relativePosition);
        savedByIdentity[identityOf(*fingerprint)].push_back(fingerprint->relativePosition);
    }
    for (const auto* fingerprint : current) {
        currentPlaces.push_back(fingerprint->relativePosition);
        currentByIdentity[identityOf(*fingerprint)].push_back(fingerprint->relativePosition);
    }
    if (!samePlaces(savedPlaces, currentPlaces)) {
        return false;
    }
    int moved = 0;
    for (const auto& [identity, places] : savedByIdentity) {
        const auto now = currentByIdentity.find(identity);
        if (identity.empty() || places.size() != 1 || now == currentByIdentity.end() ||
            now->second.size() != 1) {
            continue;
        }
        if (largerDelta(places.front(), now->second.front()) > kSwapTolerance) {
            ++moved;
        }
    }
    return moved >= 2;
}

}  // namespace

DisplayArrangementStabilityService::DisplayArrangementStabilityService(const Clock& clock,
                                                                       LoggingService& logging)
    : clock_(clock),
      logger_(logging, "DisplayArrangementStabilityService"),
      systemStartupTime_(clock.now()) {
    logger_.info("DisplayArrangementStabilityService initialized at system startup");
}

void DisplayArrangementStabilityService::recordSnapshot(const DisplayArrangementInfo& arrangement) {
    recentArrangements_.push_back({arrangement, clock_.now()});
    if (recentArrangements_.size() > maxSnapshotHistory) {
        recentArrangements_.erase(recentArrangements_.begin(),
                                  recentArrangements_.end() - maxSnapshotHistory);
    }
}

bool DisplayArrangementStabilityService::isInGracePeriod() const {
    return clock_.now() - systemStartupTime_ < postStartupGracePeriod;
}

bool DisplayArrangementStabilityService::hasRapidChanges() const {
    const auto count = recentArrangements_.size();
    return count >= 3 &&
           recentArrangements_[count - 1].timestamp - recentArrangements_[count - 3].timestamp <
               kRapidChangeWindow;
}

double DisplayArrangementStabilityService::stabilityFactor() const {
    const auto count = recentArrangements_.size();
    double factor = 1.0;
    for (std::size_t index = count - std::min<std::size_t>(count, 3) + 1; index < count; ++index) {
        if (differ(recentArrangements_[index - 1].arrangement,
                   recentArrangements_[index].arrangement)) {
            factor *= kInstabilityPenalty;
        }
    }
    return factor;
}

DisplayChangeAnalysis DisplayArrangementStabilityService::analyzeDisplayChange(
    const DisplayArrangementInfo& saved, const DisplayArrangementInfo& current) {
    recordSnapshot(current);
    DisplayChangeAnalysis analysis;
    analysis.isInGracePeriod = isInGracePeriod();
    if (detectIdenticalMonitorSwap(saved, current)) {
        logger_.info(
            "Detected identical monitor swapping - workspace should adapt to new arrangement");
        logger_.info("Detected identical monitor swapping - treating as non-critical change");
        analysis.changeType = DisplayChangeType::identicalMonitorSwap;
        analysis.confidence = 0.95f;
        analysis.reasons.push_back("Identical monitors swapped positions within space");
        return analysis;
    }
    classify(saved, current, analysis);
    log(analysis);
    return analysis;
}

bool DisplayArrangementStabilityService::detectIdenticalMonitorSwap(
    const DisplayArrangementInfo& saved, const DisplayArrangementInfo& current) const {
    const auto count = saved.displayFingerprints.size();
    if (count != current.displayFingerprints.size() || count < 2) {
        return false;
    }
    using Group = std::vector<const DisplayFingerprint*>;
    std::vector<std::pair<DisplayFingerprint, std::pair<Group, Group>>> groups;
    auto groupOf = [&](const DisplayFingerprint& fingerprint) -> std::pair<Group, Group>& {
        const auto model = modelOf(fingerprint);
        const auto found = std::find_if(groups.begin(), groups.end(),
                                        [&](const auto& group) { return group.first == model; });
        return found != groups.end() ? found->second
                                     : groups.emplace_back(model, std::pair<Group, Group>{}).second;
    };
    for (const auto& fingerprint : saved.displayFingerprints) {
        groupOf(fingerprint).first.push_back(&fingerprint);
    }
    for (const auto& fingerprint : current.displayFingerprints) {
        groupOf(fingerprint).second.push_back(&fingerprint);
    }
    return std::any_of(groups.begin(), groups.end(), [](const auto& group) {
        const auto& [before, after] = group.second;
        return before.size() >= 2 && before.size() == after.size() && groupSwapped(before, after);
    });
}

void DisplayArrangementStabilityService::classify(const DisplayArrangementInfo& saved,
                                                  const DisplayArrangementInfo& current,
                                                  DisplayChangeAnalysis& analysis) const {
    const auto savedCount = saved.displayFingerprints.size();
    const auto currentCount = current.displayFingerprints.size();
    const bool sameCount = savedCount == currentCount;
    if (!sameCount) {
        analysis.changeType = currentCount > savedCount ? DisplayChangeType::displayAdded
                                                        : DisplayChangeType::displayRemoved;
        analysis.reasons.push_back("Display count changed: " + std::to_string(savedCount) + " → " +
                                   std::to_string(currentCount));
        analysis.confidence = 0.95f;
    }

    const auto currentKeys = keysOf(current);
    const auto savedKeys = keysOf(saved);
    const bool someMissing = std::any_of(savedKeys.begin(), savedKeys.end(), [&](const auto& key) {
        return currentKeys.count(key) == 0;
    });
    if (someMissing && sameCount && analysis.isInGracePeriod) {
        analysis.changeType = DisplayChangeType::potentialRestart;
        analysis.reasons.push_back(
            "Display IDs changed during startup grace period (potential restart)");
        analysis.confidence = 0.9f;
    } else if (someMissing && sameCount) {
        analysis.changeType = DisplayChangeType::displayReplaced;
        analysis.reasons.push_back("Display IDs changed outside grace period");
        analysis.confidence = 0.8f;
    } else if (someMissing) {
        analysis.changeType = DisplayChangeType::displayRemoved;
        analysis.reasons.push_back("Some displays are missing from saved arrangement");
        analysis.confidence = 0.9f;
    }

    const auto savedMain = mainKey(saved);
    const auto currentMain = mainKey(current);
    if (savedMain != currentMain) {
        analysis.reasons.push_back("Main display changed: " + savedMain + " → " + currentMain);
        analysis.confidence = std::min(analysis.confidence, 0.9f);
        analysis.changeType = DisplayChangeType::mainDisplayChanged;
    } else if (analysis.changeType == DisplayChangeType::noChange ||
               analysis.changeType == DisplayChangeType::potentialRestart) {
        const auto positions = analyzePositions(saved, current, logger_);
        const auto positionConfidence = static_cast<float>(positions.confidence);
        if (positions.significant && analysis.changeType == DisplayChangeType::potentialRestart) {
            analysis.reasons.push_back(
                "Position changes detected during potential restart scenario");
            analysis.confidence = std::min(analysis.confidence, 0.4f);
        } else if (positions.significant) {
            analysis.reasons.push_back("Significant position changes detected");
            analysis.confidence = std::min(analysis.confidence, positionConfidence);
            analysis.changeType = DisplayChangeType::positionChanged;
        } else if (positions.minor) {
            analysis.reasons.push_back("Minor position changes detected");
            analysis.confidence = std::min(analysis.confidence, 0.6f);
            analysis.changeType = DisplayChangeType::positionChanged;
        }
    }

    if (hasRapidChanges()) {
        analysis.reasons.push_back("Rapid changes detected - likely system instability");
        analysis.confidence *= 0.3f;
    }
    if (recentArrangements_.size() > 1) {
        const double factor = stabilityFactor();
        analysis.confidence *= static_cast<float>(factor);
        analysis.reasons.push_back("Stability factor applied: " + twoDecimals(factor));
    }
}

void DisplayArrangementStabilityService::log(const DisplayChangeAnalysis& analysis) const {
    logger_.info("=== DISPLAY CHANGE ANALYSIS ===");
    logger_.info("Change type: " + std::string(rawValue(analysis.changeType)) +
                 ", confidence: " + twoDecimals(analysis.confidence) +
                 ", in grace period: " + (analysis.isInGracePeriod ? "yes" : "no"));
    for (const auto& reason : analysis.reasons) {
        logger_.info("Reason: " + reason);
    }
}

}  // namespace corvetta
