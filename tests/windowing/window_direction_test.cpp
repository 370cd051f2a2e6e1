#include "windowing/window_direction.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/json.h"
#include "windowing/action_titles.h"
#include "windowing/window_direction_json.h"

namespace corvetta {
namespace {

using ::testing::ElementsAreArray;

const std::vector<std::string> kDirectionOrder = {"custom",
                                                  "leftHalf",
                                                  "rightHalf",
                                                  "topHalf",
                                                  "bottomHalf",
                                                  "topLeft",
                                                  "topRight",
                                                  "bottomLeft",
                                                  "bottomRight",
                                                  "maximize",
                                                  "center",
                                                  "leftThird",
                                                  "centerThird",
                                                  "rightThird",
                                                  "leftTwoThirds",
                                                  "centerTwoThirds",
                                                  "rightTwoThirds",
                                                  "topThird",
                                                  "centerVerticalThird",
                                                  "bottomThird",
                                                  "topLeftQuarter",
                                                  "topRightQuarter",
                                                  "bottomLeftQuarter",
                                                  "bottomRightQuarter",
                                                  "larger",
                                                  "smaller",
                                                  "largerWidth",
                                                  "smallerWidth",
                                                  "almostMaximize",
                                                  "specified"};

const std::vector<std::string> kPositionOrder = {"custom",
                                                 "leftHalf",
                                                 "rightHalf",
                                                 "topHalf",
                                                 "bottomHalf",
                                                 "fullscreen",
                                                 "center",
                                                 "leftThird",
                                                 "centerThird",
                                                 "rightThird",
                                                 "topLeftQuarter",
                                                 "topRightQuarter",
                                                 "bottomLeftQuarter",
                                                 "bottomRightQuarter",
                                                 "leftTwoThirds",
                                                 "centerTwoThirds",
                                                 "rightTwoThirds",
                                                 "topThird",
                                                 "centerVerticalThird",
                                                 "bottomThird"};

// The plain companions list the same cases with `custom` moved to the end.
std::vector<std::string> customLast(std::vector<std::string> names) {
    names.erase(names.begin());
    names.push_back("custom");
    return names;
}

TEST(WindowDirectionTest, CasesAndTheirCompanionsKeepTheDeclaredOrder) {
    std::vector<std::string> directions, directionTypes, positions, positionTypes;
    for (auto c : allWindowDirectionCases()) {
        directions.emplace_back(WindowDirection(c).name());
    }
    for (auto t : allDirectionTypes()) {
        directionTypes.emplace_back(rawValue(t));
    }
    for (auto c : allSnapPositionCases()) {
        positions.emplace_back(SnapPosition(c).name());
    }
    for (auto t : allPositionTypes()) {
        positionTypes.emplace_back(rawValue(t));
    }
    EXPECT_THAT(directions, ElementsAreArray(kDirectionOrder));
    EXPECT_THAT(directionTypes, ElementsAreArray(customLast(kDirectionOrder)));
    EXPECT_THAT(positions, ElementsAreArray(kPositionOrder));
    EXPECT_THAT(positionTypes, ElementsAreArray(customLast(kPositionOrder)));
}

TEST(WindowDirectionTest, RawValuesNameCasesAndNothingElse) {
    for (auto t : allDirectionTypes()) {
        EXPECT_EQ(directionTypeFromRawValue(rawValue(t)), t);
    }
    for (auto t : allPositionTypes()) {
        EXPECT_EQ(positionTypeFromRawValue(rawValue(t)), t);
    }
    for (const char* unknown : {"", "LeftHalf", "fullscreen ", "moveToNextDisplay"}) {
        EXPECT_EQ(directionTypeFromRawValue(unknown), std::nullopt) << unknown;
    }
    EXPECT_EQ(directionTypeFromRawValue("fullscreen"), std::nullopt);
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
}

TEST(WindowDirectionTest, CustomIsStoredAsTypeAndFourNumbers) {
    EXPECT_EQ(writeJson(toJson(WindowDirection::custom({10, 20, 300.5, 400})), JsonStyle::compact),
              R"({"type":"custom","rect":[10.0,20.0,300.5,400.0]})");
    EXPECT_EQ(writeJson(toJson(SnapPosition(SnapPosition::Case::fullscreen)), JsonStyle::compact),
              R"({"type":"fullscreen"})");
    EXPECT_EQ(toJson(WindowDirection(WindowDirection::Case::topLeft)),
              toJson(WindowDirection(DirectionType::topLeft)));
    EXPECT_NE(toJson(WindowDirection(WindowDirection::Case::topLeft)),
              toJson(WindowDirection(WindowDirection::Case::topLeftQuarter)));
}

TEST(WindowDirectionTest, DamagedStoredFormsAreRefused) {
    struct Case {
        const char* json;
        // Exact error text, or empty when only the refusal matters.
        std::string message;
    };
    const std::vector<Case> cases = {
        {R"({"type":"custom","rect":[1,2,3]})", "Expected 4 values for rect"},
        {R"({"type":"custom","rect":[1,2,3,4,5]})", "Expected 4 values for rect"},
        {R"({"type":"custom","rect":[1,2,"3",4]})", "Expected 4 values for rect"},
        {R"({"type":"custom","rect":{"x":1}})", "Expected 4 values for rect"},
        {R"({"type":"custom","rect":[[1,2],[3,4]]})", "Expected 4 values for rect"},
        {R"({"type":"custom"})", ""},
        {R"({"type":"fullscreen"})", ""},
        {R"({"type":"sideways"})", ""},
        {R"({"rect":[1,2,3,4]})", ""},
        {R"({"type":3})", ""},
        {R"(["leftHalf"])", ""},
    };
    for (const auto& c : cases) {
        const Json value = parseJson(c.json).value();
        try {
            windowDirectionFromJson(value, "panes[0]");
            ADD_FAILURE() << "accepted " << c.json;
        } catch (const JsonDecodeError& error) {
            if (!c.message.empty()) {
                EXPECT_EQ(std::string(error.what()), c.message) << c.json;
            }
        }
    }
    EXPECT_THROW(snapPositionFromJson(parseJson(R"({"type":"maximize"})").value()),
                 JsonDecodeError);
    EXPECT_THROW(snapPositionFromJson(parseJson(R"({"type":"custom","rect":[]})").value()),
                 JsonDecodeError);
}

std::vector<std::string> describe(const auto& titles) {
    std::vector<std::string> rows;
    for (const auto& row : titles) {
        rows.push_back(std::string(row.title) + "=" + std::string(row.keyName));
    }
    return rows;
}

TEST(ActionTitlesTest, FourGroupsInDisplayOrder) {
    EXPECT_THAT(describe(halvesActionTitles()),
                ElementsAreArray({"Left Half=leftHalf", "Right Half=rightHalf", "Top Half=topHalf",
                                  "Bottom Half=bottomHalf"}));
    EXPECT_THAT(
        describe(quartersActionTitles()),
        ElementsAreArray({"Top Left Quarter=topLeftQuarter", "Top Right Quarter=topRightQuarter",
                          "Bottom Left Quarter=bottomLeftQuarter",
                          "Bottom Right Quarter=bottomRightQuarter"}));
    EXPECT_THAT(describe(thirdsActionTitles()),
                ElementsAreArray(
                    {"Left Third=leftThird", "Center Third=centerThird", "Right Third=rightThird",
                     "Left Two Thirds=leftTwoThirds", "Center Two Thirds=centerTwoThirds",
                     "Right Two Thirds=rightTwoThirds", "Top Third=topThird",
                     "Center Vertical Third=centerVerticalThird", "Bottom Third=bottomThird"}));
    EXPECT_THAT(describe(otherActionTitles()),
                ElementsAreArray({"Fullscreen=fullscreen", "Center=center",
                                  "Previous Display=moveToPreviousDisplay",
                                  "Next Display=moveToNextDisplay"}));
}

TEST(ActionTitlesTest, KeyNamesOfPositionsAreStoredPositionNames) {
    // Every row but the display moves names a snap position, so a menu row can be stored.
    for (const auto* group :
         {&halvesActionTitles(), &quartersActionTitles(), &otherActionTitles()}) {
        for (const auto& row : *group) {
            const bool displayMove = row.keyName.starts_with("moveTo");
            EXPECT_EQ(positionTypeFromRawValue(row.keyName).has_value(), !displayMove)
                << row.keyName;
        }
    }
    for (const auto& row : thirdsActionTitles()) {
        EXPECT_TRUE(positionTypeFromRawValue(row.keyName).has_value()) << row.keyName;
        EXPECT_TRUE(directionTypeFromRawValue(row.keyName).has_value()) << row.keyName;
    }
}

}  // namespace
}  // namespace corvetta
