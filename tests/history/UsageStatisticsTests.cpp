#include "Tessarune/history/UsageStatistics.h"
#include "tests/history/CatalogFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

namespace tessarune {
namespace {

/// Sets the process's time zone. The destructor sets the zone that `testing::Catalogued` uses.
class TimeZone {
  public:
    explicit TimeZone(const char* name) {
        setenv("TZ", name, 1);
        tzset();
    }
    ~TimeZone() {
        setenv("TZ", "Asia/Shanghai", 1);
        tzset();
    }
};

/// One line per period: "date hours seconds sessions words".
std::string listed(const std::vector<UsagePeriod>& periods) {
    std::string text;
    for (const auto& period : periods)
        text += period.date + " " +
                std::to_string(std::lround((period.end - period.start) / 3600)) + "h " +
                std::to_string(std::lround(period.listeningSeconds)) + " " +
                std::to_string(period.sessions) + " " + std::to_string(period.words) + "\n";
    return text;
}

TEST(UsageStatisticsTests, DaysAreLocalDaysAcrossDaylightSaving) {
    struct Case {
        const char* zone;
        std::vector<UsageStatistics::Session> sessions;
        UsagePeriodKind kind;
        const char* expected;
    };
    const Case cases[] = {
        // 29 March 2025, 23:30 to 30 March, 03:30 in Berlin, where the clock skips 02:00 to 03:00
        {"Europe/Berlin",
         {{1743287400, 3 * 3600, 50}},
         UsagePeriodKind::day,
         "2025-03-29 24h 1800 1 50\n2025-03-30 23h 9000 0 0\n"},
        // 26 October has 25 hours; days without sessions are listed, too
        {"Europe/Berlin",
         {{1761429600, 25 * 3600, 0}, {1761700000, 60, 7}},
         UsagePeriodKind::day,
         "2025-10-26 25h 90000 1 0\n2025-10-27 24h 0 0 0\n2025-10-28 24h 0 0 0\n"
         "2025-10-29 24h 60 1 7\n"},
        // the midnight of 4 November 2018 does not exist in São Paulo, that of 5 November 2023
        // comes twice in Havana
        {"America/Sao_Paulo",
         {{1541300400 - 10, 20, 1}},
         UsagePeriodKind::day,
         "2018-11-03 24h 10 1 1\n2018-11-04 23h 10 0 0\n"},
        {"America/Havana",
         {{1699156800 - 10, 20, 1}},
         UsagePeriodKind::day,
         "2023-11-04 24h 10 1 1\n2023-11-05 25h 10 0 0\n"},
        // a Sunday evening and the Monday after it; the end of summer time lengthens the week
        {"Europe/Berlin",
         {{1761503400, 3600, 1}, {1761519600, 60, 1}},
         UsagePeriodKind::week,
         "2025-10-20 169h 3600 1 1\n2025-10-27 168h 60 1 1\n"},
        {"Asia/Shanghai",
         {{1735660800 - 60, 120, 3}},
         UsagePeriodKind::month,
         "2024-12-01 744h 60 1 3\n2025-01-01 744h 60 0 0\n"},
        // a session that ends at midnight, and one recorded with a clock that was never set
        {"UTC",
         {{86400.0 * 20000 - 60, 60, 1}, {5, 60, 1}},
         UsagePeriodKind::day,
         "2024-10-03 24h 60 1 1\n"},
        {"UTC", {}, UsagePeriodKind::day, ""},
    };
    for (const auto& c : cases) {
        const TimeZone zone(c.zone);
        EXPECT_EQ(listed(UsageStatistics::periods(c.sessions, c.kind)), c.expected) << c.zone;
    }
}

TEST(UsageStatisticsTests, SumsTheRecordingsOfTheCatalog) {
    testing::Catalogued computer;
    const UUID first = computer.add(1'760'000'000, "a.wav");
    computer.add(1'760'000'100, "b.wav");
    computer.catalog.saveTranscript("It was the best\nof times.\n", first);
    RecordingMetadata imported = computer.recording(1'760'000'200, "c.mp3", computer.makeID());
    imported.audioFormat = "mp3"; // nobody listened to an import
    computer.catalog.upsert(imported);
    const TimeZone zone("UTC");
    const auto sum = UsageStatistics::total(UsageStatistics::periods(
        UsageStatistics::sessions(computer.catalog, computer.disk), UsagePeriodKind::week));
    EXPECT_EQ(sum.date, "2025-10-06");
    EXPECT_EQ(sum.sessions, 3);
    EXPECT_EQ(sum.words, 6);
    EXPECT_EQ(sum.listeningSeconds, 4);
    EXPECT_EQ(
        UsageStatistics::problemOf(UsageStatistics::sessions(computer.catalog, computer.disk)), "");
    computer.disk.refused = first.text() + ".txt";
    EXPECT_EQ(
        UsageStatistics::problemOf(UsageStatistics::sessions(computer.catalog, computer.disk)),
        "Recordings whose texts cannot be read: 1.");
}

} // namespace
} // namespace tessarune
