#include "windowing/action_titles.h"

namespace corvetta {

const std::array<ActionTitle, 4>& halvesActionTitles() {
    static constexpr std::array<ActionTitle, 4> titles{{
        {"Left Half", "leftHalf"},
        {"Right Half", "rightHalf"},
        {"Top Half", "topHalf"},
        {"Bottom Half", "bottomHalf"},
    }};
    return titles;
}

const std::array<ActionTitle, 4>& quartersActionTitles() {
    static constexpr std::array<ActionTitle, 4> titles{{
        {"Top Left Quarter", "topLeftQuarter"},
        {"Top Right Quarter", "topRightQuarter"},
        {"Bottom Left Quarter", "bottomLeftQuarter"},
        {"Bottom Right Quarter", "bottomRightQuarter"},
    }};
    return titles;
}

const std::array<ActionTitle, 9>& thirdsActionTitles() {
    static constexpr std::array<ActionTitle, 9> titles{{
        {"Left Third", "leftThird"},
        {"Center Third", "centerThird"},
        {"Right Third", "rightThird"},
        {"Left Two Thirds", "leftTwoThirds"},
        {"Center Two Thirds", "centerTwoThirds"},
        {"Right Two Thirds", "rightTwoThirds"},
        {"Top Third", "topThird"},
        {"Center Vertical Third", "centerVerticalThird"},
        {"Bottom Third", "bottomThird"},
    }};
    return titles;
}

const std::array<ActionTitle, 4>& otherActionTitles() {
    static constexpr std::array<ActionTitle, 4> titles{{
        {"Fullscreen", "fullscreen"},
        {"Center", "center"},
        {"Previous Display", "moveToPreviousDisplay"},
        {"Next Display", "moveToNextDisplay"},
    }};
    return titles;
}

}  // namespace corvetta
