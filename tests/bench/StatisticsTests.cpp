#include "TessaruneCore/text/Text.h"
#include "bench/replay/HourLog.h"
#include "bench/support/Statistics.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tessarune {
namespace {

TEST(StatisticsTests, MediansAndPercentiles) {
    using namespace Statistics;
    EXPECT_EQ(median({}), 0);
    EXPECT_EQ(median({3, 1, 2}), 2);
    EXPECT_EQ(median({4, 1, 2, 3}), 2.5);
    EXPECT_EQ(percentile({}, 0.9), 0);
    EXPECT_EQ(percentile({5, 4, 3, 2, 1}, 0), 1);
    EXPECT_EQ(percentile({5, 4, 3, 2, 1}, 0.5), 3);
    EXPECT_EQ(percentile({5, 4, 3, 2, 1}, 0.8), 4);
    EXPECT_EQ(percentile({5, 4, 3, 2, 1}, 0.81), 5);
}

TEST(HourLogTests, HasTheEventsOfAnHourAndRepeatsItsBeginningAtItsEnd) {
    for (const auto language : {HourLog::Language::english, HourLog::Language::chinese}) {
        const auto records = HourLog::make(language);
        EXPECT_EQ(std::count_if(records.begin(), records.end(),
                                [](const auto& record) { return record.kind == "partial"; }),
                  36'000);
        EXPECT_EQ(records.size(), 36'600u);
        EXPECT_TRUE(std::is_sorted(records.begin(), records.end(),
                                   [](const auto& a, const auto& b) { return a.t < b.t; }));
        std::size_t longest = 0;
        for (const auto& record : records)
            longest = std::max(longest, Text::length(record.text));
        EXPECT_LE(longest, HourLog::longestText);
        EXPECT_GT(longest, HourLog::longestText - 10);
        const std::size_t repeated =
            HourLog::repeatedUtterances * (HourLog::partialsPerUtterance + 1);
        EXPECT_TRUE(std::equal(records.begin(),
                               records.begin() + static_cast<std::ptrdiff_t>(repeated),
                               records.end() - static_cast<std::ptrdiff_t>(repeated),
                               [](const auto& a, const auto& b) { return a.text == b.text; }));
    }
}

} // namespace
} // namespace tessarune
