#include "foundation/date.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

using namespace std::chrono;

Date at(int y, unsigned m, unsigned d, int h, int min, int s) {
    return sys_days{year{y} / month{m} / day{d}} + hours{h} + minutes{min} + seconds{s};
}

TEST(Iso8601, WritesUtcWholeSeconds) {
    EXPECT_EQ(formatIso8601(at(2026, 11, 21, 10, 15, 30)), "2026-11-21T10:15:30Z");
    EXPECT_EQ(formatIso8601(at(2026, 11, 21, 10, 15, 30) + milliseconds(999)),
              "2026-11-21T10:15:30Z");
    EXPECT_EQ(formatIso8601(at(1999, 1, 2, 3, 4, 5)), "1999-01-02T03:04:05Z");
    const Date now = floor<seconds>(system_clock::now());
    EXPECT_EQ(parseIso8601(formatIso8601(now)), now);
    // File names carry no colons.
    EXPECT_EQ(fileNameTimestamp(at(2026, 11, 21, 10, 15, 30)), "2026-11-21T10-15-30Z");
}

TEST(Iso8601, ReadsZonesAndFractions) {
    const Date expected = at(2026, 11, 21, 10, 15, 30);
    EXPECT_EQ(parseIso8601("2026-11-21T10:15:30Z"), expected);
    EXPECT_EQ(parseIso8601("2026-11-21T12:15:30+02:00"), expected);
    EXPECT_EQ(parseIso8601("2026-11-21T05:45:30-0430"), expected);
    EXPECT_EQ(parseIso8601("2026-11-21T10:15:30.250Z"), expected + milliseconds(250));
    // Crossing midnight with an offset.
    EXPECT_EQ(parseIso8601("2026-11-22T00:15:30+14:00"), expected);
}

TEST(Iso8601, RefusesTextWithoutZoneOrWithImpossibleValues) {
    for (const char* bad :
         {"", "2026-11-21", "2026-11-21T10:15:30", "2026-11-21 10:15:30Z", "2026-13-01T00:00:00Z",
          "2026-02-29T00:00:00Z", "2026-04-31T00:00:00Z", "2026-11-21T24:00:00Z",
          "2026-11-21T10:15:30Zjunk", "2026-11-21T10:15:30.Z", "2026-11-21T10:15:30+2:00",
          "26-11-21T10:15:30Z"}) {
        EXPECT_FALSE(parseIso8601(bad)) << bad;
    }
    EXPECT_TRUE(parseIso8601("2028-02-29T00:00:00Z"));
}

TEST(MediumDateTime, ShowsMonthNameAndTwelveHourClock) {
    EXPECT_EQ(formatMediumDateTime(at(2026, 11, 21, 10, 15, 30), TimeZoneChoice::utc),
              "Nov 21, 2026 at 10:15:30 AM");
    EXPECT_EQ(formatMediumDateTime(at(2026, 1, 5, 0, 7, 9), TimeZoneChoice::utc),
              "Jan 5, 2026 at 12:07:09 AM");
    EXPECT_EQ(formatMediumDateTime(at(2026, 7, 4, 13, 0, 0), TimeZoneChoice::utc),
              "Jul 4, 2026 at 1:00:00 PM");
}

}  // namespace
}  // namespace corvetta
