// date.h: Dates as text: ISO 8601 to store, a medium form to show, file-name stamps.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace corvetta {

// A moment in time, as the wall clock gives it.
using Date = std::chrono::system_clock::time_point;

// Internet date-time in UTC, whole seconds: "2026-11-21T10:15:30Z".
std::string formatIso8601(Date date);
// Internet date-time with a time zone ("Z", "+02:00" or "+0200"); fractional seconds are
// accepted. Anything else, including an impossible calendar date, has no value.
std::optional<Date> parseIso8601(std::string_view text);

enum class TimeZoneChoice { local, utc };

// The medium date-and-time form shown to people: "Nov 21, 2026 at 10:15:30 AM".
std::string formatMediumDateTime(Date date, TimeZoneChoice zone = TimeZoneChoice::local);

// The ISO form with every ":" replaced by "-", safe inside a file name.
std::string fileNameTimestamp(Date date);

}  // namespace corvetta
