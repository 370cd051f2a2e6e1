#include "workspaces/display_migration.h"

#include <gtest/gtest.h>

#include "workspaces/display_arrangement_capture.h"

namespace corvetta {

void PrintTo(const MigratedFrame& migrated, std::ostream* os) {
    *os << migrated.frame << " on display " << migrated.screenIndex << " by "
        << migrationRuleName(migrated.rule);
}

namespace {

// A display given in accessibility space, as the worked examples of docs/workspaces.md are.
struct Display {
    const char* uuid;
    Rect frame;
    std::optional<Rect> visible = std::nullopt;
    const char* name = "Dell";
    bool builtIn = false;
};

std::vector<Screen> screens(const std::vector<Display>& displays) {
    std::vector<Screen> result;
    const double pivot = displays.front().frame.height();
    const auto toScreen = [pivot](const Rect& r) {
        return Rect(r.minX(), pivot - r.maxY(), r.width(), r.height());
    };
    for (const auto& d : displays) {
        Screen screen{static_cast<ScreenNumber>(result.size() + 1),
                      toScreen(d.frame),
                      toScreen(d.visible.value_or(d.frame)),
                      1,
                      d.name,
                      d.builtIn};
        screen.identity.persistentUUID = d.uuid;
        result.push_back(screen);
    }
    return result;
}

const Display kA{"A0000000-0000-0000-0000-00000000000A",
                 {0, 0, 1440, 900},
                 Rect{0, 25, 1440, 875},
                 "Built-in",
                 true};
const Display kB{"B0000000-0000-0000-0000-00000000000B", {1440, 0, 1920, 1080}};
Display withFrame(Display d, Rect frame, std::optional<Rect> visible = std::nullopt) {
    d.frame = frame;
    d.visible = visible;
    return d;
}

struct Case {
    const char* name;
    std::vector<Display> saved;
    std::vector<Display> current;
    // The window stood on saved[display], or on no known display when negative.
    int display;
    Rect window;
    MigratedFrame expected;
};

TEST(DisplayMigration, PlacesSavedFramesOnTheCurrentDisplays) {
    using enum MigrationRule;
    const Display twinC{"C0000000-0000-0000-0000-00000000000C", {1440, 0, 1920, 1080}, {}, "Twin"};
    const Display twinD{"D0000000-0000-0000-0000-00000000000D", {3360, 0, 1920, 1080}, {}, "Twin"};
    const Display left{"E0000000-0000-0000-0000-00000000000E", {-1280, 0, 1280, 1024}};
    const Display other{
        "F0000000-0000-0000-0000-00000000000F", {-1920, 0, 1920, 1080}, {}, "Other"};
    // clang-format off
    const std::vector<Case> cases{
        {"same displays", {kA, kB}, {kA, kB}, 1, {1600, 100, 800, 600}, {{1600, 100, 800, 600}, 1, sameDisplay}},
        {"display moved", {kA, kB}, {kA, withFrame(kB, {-1920, 0, 1920, 1080})}, 1, {1600, 100, 800, 600},
         {{-1760, 100, 800, 600}, 1, sameDisplay}},
        {"resolution changed", {kA, kB}, {kA, withFrame(kB, {1440, 0, 2560, 1440})}, 1, {1600, 100, 800, 600},
         {{1653, 133, 1066, 800}, 1, scaled}},
        {"display removed", {kA, kB}, {kA}, 1, {1600, 100, 800, 600}, {{120, 106, 600, 486}, 0, replacement}},
        {"main display swapped", {kA, kB},
         {withFrame(kB, {0, 0, 1920, 1080}), withFrame(kA, {-1440, 180, 1440, 900})}, 0, {100, 100, 800, 600},
         {{-1340, 280, 800, 600}, 1, sameDisplay}},
        {"identical monitors swapped", {kA, twinC, twinD},
         {kA, withFrame(twinD, twinC.frame), withFrame(twinC, twinD.frame)}, 1, {1500, 50, 600, 400},
         {{1500, 50, 600, 400}, 1, sameDisplay}},
        {"too big for the display now", {kA, kB},
         {kA, withFrame(kB, {1440, 0, 1280, 720}, Rect{1440, 25, 1280, 695})}, 1, {1440, 0, 1920, 1080},
         {{1440, 25, 1280, 695}, 1, scaled}},
        {"panel with a new UUID is still itself", {kA, kB},
         {Display{"99999999-0000-0000-0000-000000000000", kA.frame, kA.visible, "Built-in", true}, kB}, 0,
         {100, 100, 800, 600}, {{100, 100, 800, 600}, 0, sameDisplay}},
        {"gone display goes to the nearest", {kA, kB, left}, {kA, other}, 2, {-1180, 100, 640, 512},
         {{-1770, 105, 960, 540}, 1, replacement}},
        {"gone main display goes to the main", {kA, kB}, {kB}, 0, {100, 100, 800, 600},
         {{1573, 120, 1066, 720}, 0, replacement}},
        {"no display recorded keeps the frame", {}, {kA, kB}, -1, {1600, 100, 800, 600},
         {{1600, 100, 800, 600}, 1, unknownDisplay}},
        {"off every display comes onto the main", {}, {kA, kB}, -1, {5000, 5000, 100, 100},
         {{1340, 800, 100, 100}, 0, unknownDisplay}},
    };
    // clang-format on
    for (const auto& c : cases) {
        std::optional<DisplayArrangementInfo> saved;
        WindowInfo window{.frame = c.window};
        if (!c.saved.empty()) {
            saved = captureDisplayArrangement(screens(c.saved), Date{});
            window.monitorID = monitorIdentifier(saved->displayFingerprints.at(c.display));
        }
        const DisplayMigration migration(saved, screens(c.current));
        EXPECT_EQ(migration.migrate(window), c.expected) << c.name;
    }
    EXPECT_EQ(DisplayMigration(std::nullopt, {}).migrate(WindowInfo{}), std::nullopt);
}

TEST(DisplayMigration, AWindowStandsOnTheDisplayHoldingItsCentreElseTheOneItOverlapsMost) {
    const std::vector<Rect> displays{{0, 0, 1440, 900}, {1440, 0, 1920, 1080}};
    EXPECT_EQ(displayHolding({1300, 100, 400, 300}, displays), 1u);
    EXPECT_EQ(displayHolding({1200, -400, 400, 600}, displays), 0u);
    EXPECT_EQ(displayHolding({5000, 0, 10, 10}, displays), std::nullopt);
}

}  // namespace
}  // namespace corvetta
