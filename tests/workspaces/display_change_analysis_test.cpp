#include <gtest/gtest.h>

#include "foundation/notification_center.h"
#include "support/test_logging.h"
#include "workspaces/display_arrangement_stability_service.h"
#include "workspaces/display_key.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

// A 1920x1080 "Dell" display, known by its UUID when `id` is given, standing at (x, y) relative
// to the main display.
struct Placed {
    std::string id;
    double x = 0, y = 0;
    Placed at(double toX, double toY) const { return {id, toX, toY}; }
};

// The first display is the main one.
DisplayArrangementInfo arrangement(const std::vector<Placed>& displays) {
    DisplayArrangementInfo result;
    for (const auto& display : displays) {
        DisplayFingerprint fingerprint;
        fingerprint.resolution = {1920, 1080};
        fingerprint.name = "Dell";
        fingerprint.relativePosition = {display.x, display.y};
        if (!display.id.empty()) {
            fingerprint.persistentUUID = display.id + "-0000-0000-0000-000000000000";
        }
        result.displayFingerprints.push_back(fingerprint);
    }
    if (!displays.empty()) {
        result.mainDisplayFingerprint = result.displayFingerprints.front();
    }
    result.arrangementFingerprint =
        arrangementFingerprint(result.displayFingerprints, result.mainDisplayFingerprint);
    return result;
}

const Placed A{"AAAAAAAA"}, B{"BBBBBBBB", 1920}, C{"CCCCCCCC", -1920}, D{"DDDDDDDD"};
const Placed anonymous{""};

struct StabilityTest : ::testing::Test {
    ManualClock clock;
    NotificationCenter notifications;
    testing::TestLogging logs{notifications, clock};
    DisplayArrangementStabilityService service{clock, logs.logging};
};

TEST_F(StabilityTest, ClassifiesEachKindOfChangeWithItsReasonsAndConfidence) {
    using enum DisplayChangeType;
    const std::string minor = "Minor position changes detected";
    const std::string significant = "Significant position changes detected";
    const std::string restart =
        "Display IDs changed during startup grace period (potential restart)";
    const std::string keyA = "1920x1080_1.0_external_dell_uuid_AAAAAAAA";
    struct Row {
        const char* what;
        std::vector<Placed> saved, current;
        Duration sinceStart;
        DisplayChangeType type;
        float confidence;
        std::vector<std::string> reasons;
    };
    // clang-format off
    const std::vector<Row> rows = {
        {"unchanged", {A, B}, {A, B}, 0s, noChange, 1.0f, {}},
        {"moved within the tolerance", {A, B}, {A, B.at(1920, 50)}, 0s, noChange, 1.0f, {}},
        {"moved 120", {A, B}, {A, B.at(1920, 120)}, 0s, positionChanged, 0.6f, {minor}},
        {"moved 300", {A, B}, {A, B.at(1620, 0)}, 0s, positionChanged, 0.6f, {significant}},
        {"moved 450", {A, B}, {A, B.at(1920, -450)}, 0s, positionChanged, 0.9f, {significant}},
        {"moved 900", {A, B}, {A, B.at(1920, 900)}, 0s, positionChanged, 1.0f, {significant}},
        {"added", {A}, {A, B}, 0s, displayAdded, 0.95f, {"Display count changed: 1 → 2"}},
        {"one of three unplugged", {A, B, C}, {A, B}, 0s, displayRemoved, 0.9f,
         {"Display count changed: 3 → 2", "Some displays are missing from saved arrangement"}},
        {"new UUID in the grace period", {A, B}, {A, D.at(1920, 0)}, 29s, potentialRestart, 0.9f,
         {restart}},
        {"new UUID after it", {A, B}, {A, D.at(1920, 0)}, 30s, displayReplaced, 0.8f,
         {"Display IDs changed outside grace period"}},
        {"new UUID and a far move in the grace period", {A, B, C},
         {A, B.at(1920, 400), D.at(-1920, 0)}, 0s, potentialRestart, 0.4f,
         {restart, "Position changes detected during potential restart scenario"}},
        {"the other display became the main one", {A, B}, {B.at(0, 0), A.at(-1920, 0)}, 0s,
         mainDisplayChanged, 0.9f,
         {"Main display changed: " + keyA + " → 1920x1080_1.0_external_dell_uuid_BBBBBBBB"}},
        {"every display gone", {A}, {}, 0s, mainDisplayChanged, 0.9f,
         {"Display count changed: 1 → 0", "Some displays are missing from saved arrangement",
          "Main display changed: " + keyA + " → none"}},
        {"identical monitors exchanged places", {A, B, C}, {A, B.at(-1920, 0), C.at(1920, 0)}, 0s,
         identicalMonitorSwap, 0.95f, {"Identical monitors swapped positions within space"}},
        // Without any identity identical monitors cannot be followed: their places are all that
        // is known of them, and those are the same.
        {"anonymous identical monitors",
         {anonymous, anonymous.at(1920, 0), anonymous.at(-1920, 0)},
         {anonymous, anonymous.at(-1920, 0), anonymous.at(1920, 0)}, 0s, noChange, 1.0f, {}},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ManualClock rowClock;
        DisplayArrangementStabilityService fresh(rowClock, logs.logging);
        rowClock.advance(row.sinceStart);
        const auto analysis =
            fresh.analyzeDisplayChange(arrangement(row.saved), arrangement(row.current));
        EXPECT_EQ(rawValue(analysis.changeType), rawValue(row.type));
        EXPECT_EQ(analysis.reasons, row.reasons);
        EXPECT_FLOAT_EQ(analysis.confidence, row.confidence);
        EXPECT_EQ(analysis.isInGracePeriod, row.sinceStart < 30s);
    }
}

TEST_F(StabilityTest, RapidChangesAndTheStabilityFactorLowerTheConfidence) {
    const auto saved = arrangement({A, B});
    // Reconfigurations 2 seconds apart, flipping between two and three displays.
    auto analyse = [&](const std::vector<Placed>& current, Duration after) {
        clock.advance(after);
        return service.analyzeDisplayChange(saved, arrangement(current));
    };
    analyse({A, B, C}, 0s);
    const auto second = analyse({A, B}, 2s);
    EXPECT_FLOAT_EQ(second.confidence, 0.7f);
    EXPECT_EQ(second.reasons, std::vector<std::string>{"Stability factor applied: 0.70"});

    const auto third = analyse({A, B, C}, 2s);
    EXPECT_EQ(third.changeType, DisplayChangeType::displayAdded);
    EXPECT_EQ(third.reasons,
              (std::vector<std::string>{"Display count changed: 2 → 3",
                                        "Rapid changes detected - likely system instability",
                                        "Stability factor applied: 0.49"}));
    EXPECT_FLOAT_EQ(third.confidence, 0.95f * 0.3f * 0.49f);

    // Calm again: the third-newest snapshot is 13 seconds old, one change among the newest three.
    const auto fourth = analyse({A, B, C}, 11s);
    EXPECT_FALSE(service.hasRapidChanges());
    EXPECT_FLOAT_EQ(fourth.confidence, 0.95f * 0.7f);

    analyse({A, B, C}, 1s);
    analyse({A, B, C}, 1s);
    EXPECT_EQ(service.recentArrangements().size(), 5u);
    EXPECT_EQ(service.recentArrangements().back().timestamp, clock.now());
    EXPECT_DOUBLE_EQ(service.stabilityFactor(), 1.0);
}

TEST_F(StabilityTest, LogsEachAnalysis) {
    service.analyzeDisplayChange(arrangement({A, B}), arrangement({A, B.at(1920, 120)}));
    service.analyzeDisplayChange(arrangement({A, B, C}),
                                 arrangement({A, B.at(-1920, 0), C.at(1920, 0)}));
    EXPECT_EQ(logs.messages(service.serviceName()),
              (std::vector<std::string>{
                  "DisplayArrangementStabilityService initialized at system startup",
                  "=== POSITION ANALYSIS ===",
                  "Using tolerances: minor=50px, significant=200px",
                  "Display 1920x1080_1.0_external_dell_uuid_BBBBBBBB moved by 120.00px",
                  "=== DISPLAY CHANGE ANALYSIS ===",
                  "Change type: position_changed, confidence: 0.60, in grace period: yes",
                  "Reason: Minor position changes detected",
                  "Detected identical monitor swapping - workspace should adapt to new arrangement",
                  "Detected identical monitor swapping - treating as non-critical change",
              }));
}

}  // namespace
}  // namespace corvetta
