#include "windowing/window_direction.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/json.h"
#include "windowing/action_titles.h"
#include "windowing/window_direction_json.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;

// The plain types hold the cases' names with `custom` moved from first to last.
template <class Value, class Cases, class Types, class Lookup>
void expectTypesFollowTheCases(const Cases& cases, const Types& types, Lookup fromRawValue) {
    std::vector<std::string> names, typeNames;
    for (auto c : cases) {
        names.emplace_back(Value(c).name());
    }
    for (auto t : types) {
        typeNames.emplace_back(rawValue(t));
        EXPECT_EQ(fromRawValue(rawValue(t)), t);
    }
    ASSERT_EQ(names.front(), "custom");
    EXPECT_EQ(std::set(names.begin(), names.end()).size(), names.size());
    std::rotate(names.begin(), names.begin() + 1, names.end());
    EXPECT_EQ(typeNames, names);
}

TEST(WindowDirectionTest, TypesMatchTheCasesAndRawValuesNameNothingElse) {
    expectTypesFollowTheCases<WindowDirection>(allWindowDirectionCases(), allDirectionTypes(),
                                               directionTypeFromRawValue);
    expectTypesFollowTheCases<SnapPosition>(allSnapPositionCases(), allPositionTypes(),
                                            positionTypeFromRawValue);
    for (const char* unknown : {"", "LeftHalf", "fullscreen ", "moveToNextDisplay", "fullscreen"}) {
        EXPECT_EQ(directionTypeFromRawValue(unknown), std::nullopt) << unknown;
    }
    EXPECT_EQ(positionTypeFromRawValue("maximize"), std::nullopt);
}

TEST(WindowDirectionTest, EqualityComparesCasesAndCustomRectangles) {
    using Case = WindowDirection::Case;
    EXPECT_NE(WindowDirection(Case::topLeft), WindowDirection(Case::topLeftQuarter));
    EXPECT_EQ(WindowDirection(Case::maximize), WindowDirection(DirectionType::maximize));
    EXPECT_EQ(WindowDirection::custom({1, 2, 3, 4}), WindowDirection::custom({1, 2, 3, 4}));
    EXPECT_NE(WindowDirection::custom({1, 2, 3, 4}), WindowDirection::custom({1, 2, 3, 5}));
    EXPECT_NE(WindowDirection::custom({0, 0, 0, 0}), WindowDirection(Case::leftHalf));
    // A rectangle passed with a plain type is not carried.
    EXPECT_EQ(WindowDirection(DirectionType::leftHalf, {1, 2, 3, 4}),
              WindowDirection(Case::leftHalf));
    EXPECT_EQ(SnapPosition::custom({5, 6, 7, 8}), SnapPosition(PositionType::custom, {5, 6, 7, 8}));
    EXPECT_NE(SnapPosition(SnapPosition::Case::fullscreen),
              SnapPosition(SnapPosition::Case::center));
}

Json parsed(const char* text) {
    return parseJson(text).value();
}

TEST(WindowDirectionTest, EveryCaseSurvivesTheStoredForm) {
    for (auto c : allWindowDirectionCases()) {
        const WindowDirection direction = c == WindowDirection::Case::custom
                                              ? WindowDirection::custom({-10.5, 20, 300, 400})
                                              : WindowDirection(c);
        const Json stored = toJson(direction);
        EXPECT_EQ(stored["type"], direction.name());
        EXPECT_EQ(stored.contains("rect"), direction.isCustom()) << direction.name();
        EXPECT_EQ(windowDirectionFromJson(parseJson(writeJson(stored, JsonStyle::compact)).value()),
                  direction);
    }
    for (auto c : allSnapPositionCases()) {
        const SnapPosition position = c == SnapPosition::Case::custom
                                          ? SnapPosition::custom({0, 0, 640.25, 480})
                                          : SnapPosition(c);
        EXPECT_EQ(snapPositionFromJson(toJson(position)), position);
    }
    EXPECT_EQ(writeJson(toJson(WindowDirection::custom({10, 20, 300.5, 400})), JsonStyle::compact),
              R"({"type":"custom","rect":[10.0,20.0,300.5,400.0]})");
    EXPECT_EQ(writeJson(toJson(SnapPosition(SnapPosition::Case::fullscreen)), JsonStyle::compact),
              R"({"type":"fullscreen"})");
}

TEST(WindowDirectionTest, DamagedStoredFormsAreRefused) {
    const char* const wrongRects[] = {
        R"({"type":"custom","rect":[1,2,3]})", R"({"type":"custom","rect":[1,2,3,4,5]})",
        R"({"type":"custom","rect":[1,2,"3",4]})", R"({"type":"custom","rect":{"x":1}})",
        R"({"type":"custom","rect":[[1,2],[3,4]]})"};
    for (const char* json : wrongRects) {
        try {
            windowDirectionFromJson(parsed(json), "panes[0]");
            ADD_FAILURE() << "accepted " << json;
        } catch (const JsonDecodeError& error) {
            EXPECT_EQ(std::string(error.what()), "Expected 4 values for rect") << json;
        }
    }
    for (const char* json :
         {R"({"type":"custom"})", R"({"type":"fullscreen"})", R"({"type":"sideways"})",
          R"({"rect":[1,2,3,4]})", R"({"type":3})", R"(["leftHalf"])"}) {
        EXPECT_THROW(windowDirectionFromJson(parsed(json)), JsonDecodeError) << json;
    }
    EXPECT_THROW(snapPositionFromJson(parsed(R"({"type":"maximize"})")), JsonDecodeError);
    EXPECT_THROW(snapPositionFromJson(parsed(R"({"type":"custom","rect":[]})")), JsonDecodeError);
}

std::vector<std::string> describe(const auto& titles) {
    std::vector<std::string> rows;
    for (const auto& row : titles) {
        rows.push_back(std::string(row.title) + "=" + std::string(row.keyName));
    }
    return rows;
}

TEST(ActionTitlesTest, FourGroupsInDisplayOrderNamingStoredPositions) {
    EXPECT_THAT(describe(halvesActionTitles()),
                ElementsAre("Left Half=leftHalf", "Right Half=rightHalf", "Top Half=topHalf",
                            "Bottom Half=bottomHalf"));
    EXPECT_THAT(describe(quartersActionTitles()),
                ElementsAre("Top Left Quarter=topLeftQuarter", "Top Right Quarter=topRightQuarter",
                            "Bottom Left Quarter=bottomLeftQuarter",
                            "Bottom Right Quarter=bottomRightQuarter"));
    EXPECT_THAT(
        describe(thirdsActionTitles()),
        ElementsAre("Left Third=leftThird", "Center Third=centerThird", "Right Third=rightThird",
                    "Left Two Thirds=leftTwoThirds", "Center Two Thirds=centerTwoThirds",
                    "Right Two Thirds=rightTwoThirds", "Top Third=topThird",
                    "Center Vertical Third=centerVerticalThird", "Bottom Third=bottomThird"));
    EXPECT_THAT(describe(otherActionTitles()), ElementsAre("Fullscreen=fullscreen", "Center=center",
                                                           "Previous Display=moveToPreviousDisplay",
                                                           "Next Display=moveToNextDisplay"));
    // Every row but the display moves names a snap position, so that a menu row can be stored.
    for (const auto group : {halvesActionTitles(), quartersActionTitles(), otherActionTitles()}) {
        for (const auto& row : group) {
            EXPECT_EQ(positionTypeFromRawValue(row.keyName).has_value(),
                      !row.keyName.starts_with("moveTo"))
                << row.keyName;
        }
    }
    for (const auto& row : thirdsActionTitles()) {
        EXPECT_TRUE(positionTypeFromRawValue(row.keyName)) << row.keyName;
        EXPECT_TRUE(directionTypeFromRawValue(row.keyName)) << row.keyName;
    }
}

}  // namespace
}  // namespace corvetta
