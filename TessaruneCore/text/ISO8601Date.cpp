#include "TessaruneCore/text/ISO8601Date.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace tessarune::ISO8601Date {

namespace {

constexpr std::int64_t secondsPerDay = 86400;
constexpr double earliest = -62135596800.0; // 0001-01-01T00:00:00Z
constexpr double latest = 253402300799.0;   // 9999-12-31T23:59:59Z

bool isLeapYear(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(int year, int month) {
    static constexpr std::array<int, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : days[static_cast<std::size_t>(month - 1)];
}

/// Days from 1970-01-01 to January 1st of `year`, which is at least 1.
std::int64_t daysBeforeYear(int year) {
    constexpr std::int64_t daysTo1970 = 719162;
    const std::int64_t fullYears = year - 1;
    return fullYears * 365 + fullYears / 4 - fullYears / 100 + fullYears / 400 - daysTo1970;
}

/// Parses a text front to back; `isGood` is false after the first mismatch.
struct Reader {
    std::string_view rest;
    bool isGood = true;

    int number(std::size_t digits) {
        int value = 0;
        for (std::size_t i = 0; i < digits; ++i) {
            if (rest.empty() || rest.front() < '0' || rest.front() > '9') {
                isGood = false;
                return 0;
            }
            value = value * 10 + (rest.front() - '0');
            rest.remove_prefix(1);
        }
        return value;
    }
    bool take(char expected) {
        if (rest.empty() || rest.front() != expected)
            return false;
        rest.remove_prefix(1);
        return true;
    }
    void expect(char expected) { isGood = take(expected) && isGood; }

    double fraction() {
        double value = 0;
        double place = 0.1;
        if (!take('.'))
            return value;
        isGood = isGood && !rest.empty() && rest.front() >= '0' && rest.front() <= '9';
        for (; !rest.empty() && rest.front() >= '0' && rest.front() <= '9'; place /= 10) {
            value += place * (rest.front() - '0');
            rest.remove_prefix(1);
        }
        return value;
    }
    int offsetSeconds() {
        if (take('Z'))
            return 0;
        const int sign = take('-') ? -1 : 1;
        if (sign > 0)
            expect('+');
        const int hours = number(2);
        take(':');
        const int minutes = number(2);
        isGood = isGood && hours < 24 && minutes < 60;
        return sign * (hours * 3600 + minutes * 60);
    }
};

} // namespace

std::string text(double secondsSince1970) {
    const double inRange =
        std::isnan(secondsSince1970) ? 0.0 : std::clamp(secondsSince1970, earliest, latest);
    const auto seconds = static_cast<std::int64_t>(std::floor(inRange));
    std::int64_t days = seconds / secondsPerDay;
    if (seconds % secondsPerDay < 0)
        --days;
    const auto secondOfDay = static_cast<int>(seconds - days * secondsPerDay);
    // A year has at most 366 days, so this estimate is never too late.
    int year = 1 + static_cast<int>((days - daysBeforeYear(1)) / 366);
    while (year < 9999 && daysBeforeYear(year + 1) <= days)
        ++year;
    auto dayOfYear = static_cast<int>(days - daysBeforeYear(year));
    int month = 1;
    for (; dayOfYear >= daysInMonth(year, month); ++month)
        dayOfYear -= daysInMonth(year, month);
    char line[96];
    std::snprintf(line, sizeof line, "%04d-%02d-%02dT%02d:%02d:%02dZ", year, month, dayOfYear + 1,
                  secondOfDay / 3600, secondOfDay / 60 % 60, secondOfDay % 60);
    return line;
}

std::optional<double> parse(std::string_view text) {
    Reader reader{text};
    const int year = reader.number(4);
    reader.expect('-');
    const int month = reader.number(2);
    reader.expect('-');
    const int day = reader.number(2);
    reader.expect('T');
    const int hour = reader.number(2);
    reader.expect(':');
    const int minute = reader.number(2);
    reader.expect(':');
    const int second = reader.number(2);
    const double fraction = reader.fraction();
    const int offset = reader.offsetSeconds();
    if (!reader.isGood || !reader.rest.empty() || year < 1 || month < 1 || month > 12 || day < 1 ||
        day > daysInMonth(year, month) || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    std::int64_t days = daysBeforeYear(year) + day - 1;
    for (int before = 1; before < month; ++before)
        days += daysInMonth(year, before);
    const int secondOfDay = hour * 3600 + minute * 60 + second;
    return static_cast<double>(days * secondsPerDay + secondOfDay - offset) + fraction;
}

} // namespace tessarune::ISO8601Date
