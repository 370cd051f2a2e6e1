// Dates, UUIDs and base64 come from files and sockets; each parser must refuse garbage cleanly and
// round-trip what it accepts.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "foundation/base64.h"
#include "foundation/date.h"
#include "foundation/uuid.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const std::string text(reinterpret_cast<const char*>(data), size);

    if (const auto date = parseIso8601(text)) {
        const auto whole = std::chrono::floor<std::chrono::seconds>(*date);
        // Years outside 0...9999 have no four-digit form to come back through.
        const auto days = std::chrono::floor<std::chrono::days>(whole);
        const int year = static_cast<int>(std::chrono::year_month_day(days).year());
        if (year >= 0 && year <= 9999 && parseIso8601(formatIso8601(whole)) != whole) {
            std::abort();
        }
    }
    if (const auto id = Uuid::parse(text)) {
        if (Uuid::parse(id->string()) != id) {
            std::abort();
        }
    }
    if (const auto bytes = base64Decode(text)) {
        if (base64Decode(base64Encode(*bytes)) != bytes) {
            std::abort();
        }
    }
    return 0;
}
