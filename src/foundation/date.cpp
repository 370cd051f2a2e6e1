#include "foundation/date.h"

#include <cctype>
#include <charconv>
#include <cstdio>
#include <ctime>

namespace corvetta {

namespace {

using std::chrono::floor;
using std::chrono::seconds;

std::tm brokenDown(Date date, TimeZoneChoice zone) {
    const std::time_t t = std::chrono::system_clock::to_time_t(floor<seconds>(date));
    std::tm tm{};
    if (zone == TimeZoneChoice::utc) {
        gmtime_r(&t, &tm);
    } else {
        localtime_r(&t, &tm);
    }
    return tm;
}

class Cursor {
public:
    explicit Cursor(std::string_view text) : text_(text) {}

    bool digits(int count, int& out) {
        if (pos_ + count > text_.size()) {
            return false;
        }
        int value = 0;
        for (int i = 0; i < count; ++i) {
            const char c = text_[pos_ + i];
            if (!std::isdigit(static_cast<unsigned char>(c))) {
                return false;
            }
            value = value * 10 + (c - '0');
        }
        pos_ += count;
        out = value;
        return true;
    }
    bool literal(char c) {
        if (pos_ < text_.size() && text_[pos_] == c) {
            ++pos_;
            return true;
        }
        return false;
    }
    std::optional<char> peek() const {
        return pos_ < text_.size() ? std::optional<char>(text_[pos_]) : std::nullopt;
    }
    bool atEnd() const { return pos_ == text_.size(); }

private:
    std::string_view text_;
    std::size_t pos_ = 0;
};

bool isLeapYear(int y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

int daysInMonth(int year, int month) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

}  // namespace

std::string formatIso8601(Date date) {
    const std::tm tm = brokenDown(date, TimeZoneChoice::utc);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &tm);
    return buffer;
}

std::optional<Date> parseIso8601(std::string_view text) {
    Cursor in(text);
    int year, month, day, hour, minute, second;
    if (!in.digits(4, year) || !in.literal('-') || !in.digits(2, month) || !in.literal('-') ||
        !in.digits(2, day)) {
        return std::nullopt;
    }
    if (!in.literal('T') && !in.literal('t')) {
        return std::nullopt;
    }
    if (!in.digits(2, hour) || !in.literal(':') || !in.digits(2, minute) || !in.literal(':') ||
        !in.digits(2, second)) {
        return std::nullopt;
    }
    std::chrono::nanoseconds fraction{0};
    if (in.literal('.')) {
        long long scale = 100'000'000;
        int digit;
        int count = 0;
        while (in.digits(1, digit)) {
            fraction += std::chrono::nanoseconds(digit * scale);
            scale /= 10;
            ++count;
        }
        if (count == 0) {
            return std::nullopt;
        }
    }
    int offsetMinutes = 0;
    if (in.literal('Z') || in.literal('z')) {
        // UTC.
    } else if (auto sign = in.peek(); sign == '+' || sign == '-') {
        in.literal(*sign);
        int oh, om;
        if (!in.digits(2, oh)) {
            return std::nullopt;
        }
        in.literal(':');
        if (!in.digits(2, om) || oh > 23 || om > 59) {
            return std::nullopt;
        }
        offsetMinutes = (oh * 60 + om) * (*sign == '-' ? -1 : 1);
    } else {
        return std::nullopt;
    }
    if (!in.atEnd()) {
        return std::nullopt;
    }
    if (month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month) || hour > 23 ||
        minute > 59 || second > 60) {
        return std::nullopt;
    }
    using namespace std::chrono;
    const sys_days days =
        year_month_day{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    const auto local = days + hours(hour) + minutes(minute) + seconds(second) + fraction;
    return time_point_cast<system_clock::duration>(local - minutes(offsetMinutes));
}

std::string formatMediumDateTime(Date date, TimeZoneChoice zone) {
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::tm tm = brokenDown(date, zone);
    const int hour12 = tm.tm_hour % 12 == 0 ? 12 : tm.tm_hour % 12;
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%s %d, %d at %d:%02d:%02d %s", kMonths[tm.tm_mon],
                  tm.tm_mday, tm.tm_year + 1900, hour12, tm.tm_min, tm.tm_sec,
                  tm.tm_hour < 12 ? "AM" : "PM");
    return buffer;
}

std::string fileNameTimestamp(Date date) {
    std::string text = formatIso8601(date);
    for (char& c : text) {
        if (c == ':') {
            c = '-';
        }
    }
    return text;
}

}  // namespace corvetta
