#include "TessaruneCore/text/ISO8601Date.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <limits>

namespace tessarune {
namespace {

TEST(ISO8601DateTests, WritesTheDatesOfTheSystemsCalendarAndReadsThemBack) {
    for (double t = -62135596800; t <= 253402300799; t += 86400.0 * 29.37) { // years 1 to 9999
        const auto seconds = static_cast<std::time_t>(std::floor(t));
        std::tm utc{};
        gmtime_r(&seconds, &utc);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%04d-%02d-%02dT%02d:%02d:%02dZ",
                      utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min,
                      utc.tm_sec);
        ASSERT_EQ(ISO8601Date::text(t), expected);
        ASSERT_EQ(ISO8601Date::parse(expected), static_cast<double>(seconds));
    }
    EXPECT_EQ(ISO8601Date::text(-0.5), "1969-12-31T23:59:59Z");
    EXPECT_EQ(ISO8601Date::text(1e300), "9999-12-31T23:59:59Z");
    EXPECT_EQ(ISO8601Date::text(-1e300), "0001-01-01T00:00:00Z");
    EXPECT_EQ(ISO8601Date::text(std::numeric_limits<double>::quiet_NaN()), "1970-01-01T00:00:00Z");
}

TEST(ISO8601DateTests, ReadsOffsetsAndFractionsAndRefusesOtherForms) {
    EXPECT_EQ(ISO8601Date::parse("1970-01-01T02:00:00.25+02:00"), 0.25);
    EXPECT_EQ(ISO8601Date::parse("1969-12-31T19:30:00-0430"), 0);
    EXPECT_EQ(ISO8601Date::parse("2024-02-29T00:00:00Z"), 1709164800);
    for (const char* text :
         {"", "2025-10-09", "2025-10-09 12:00:00Z", "2025-10-09T12:00:00", "2025-10-09T12:00:00.Z",
          "2025-02-29T00:00:00Z", "2025-13-01T00:00:00Z", "2025-00-01T00:00:00Z",
          "0000-01-01T00:00:00Z", "2025-01-01T24:00:00Z", "2025-01-01T00:60:00Z",
          "2025-10-09T12:00:00Z ", "2025-10-09T12:00:00+24:00", "+025-10-09T12:00:00Z"})
        EXPECT_FALSE(ISO8601Date::parse(text)) << text;
}

} // namespace
} // namespace tessarune
