#include "bench/replay/HourLog.h"
#include "bench/stability/StabilityMeasure.h"
#include "bench/stability/StabilityPlot.h"
#include "bench/support/Statistics.h"
#include "tests/core/CaptionCoreFixture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tessarune {
namespace {

std::vector<ASREventRecord> log(const std::string& script) {
    std::vector<ASREventRecord> records;
    for (const ScriptStep& step : scriptSteps(script)) {
        records.emplace_back(
            step.at, step.kind == 'f'
                         ? ASREvent::final(step.text, step.at, step.at, EndpointReason::engineFinal)
                         : ASREvent::partial(step.text, 0, step.at));
    }
    return records;
}

MeasuredText captions(const std::vector<ASREventRecord>& records, double freeze) {
    CaptionCore::Config config(true, true, false);
    config.freezeStableSeconds = freeze;
    return StabilityMeasure::ofCaptions(records, config, {});
}

// A sentence that the recogniser thinks better of only after 0.6 seconds.
const char* const secondThoughts = "10 p One two. And;"
                                   "10.6 p One two. And so;"
                                   "12 p One too. And so on;"
                                   "13 f One too. And so on.;"
                                   "14 p More";

TEST(StabilityMeasureTests, TheRecogniserIsMeasuredByItsOwnEvents) {
    const MeasuredText text = StabilityMeasure::ofRecogniser(log(secondThoughts));
    EXPECT_EQ(text.spoken.words, 6u); // one too and so on more
    EXPECT_EQ(text.spoken.erased, 3u);
    EXPECT_EQ(text.printed.erased, 4u); // "on" got its full stop
    EXPECT_EQ(text.spoken.unstable, 1u);
    EXPECT_EQ(text.spoken.untilSettled, (std::vector<double>{3, 3, 3, 13 - 10.6, 1}));
    EXPECT_EQ(text.finalWords, 5u);
}

TEST(StabilityMeasureTests, AnEarlyFreezeSettlesSoonerAndMayDifferFromTheFinal) {
    const auto records = log(secondThoughts);
    const MeasuredText late = captions(records, 5);
    const MeasuredText recogniser = StabilityMeasure::ofRecogniser(records);
    EXPECT_EQ(late.spoken.erased, recogniser.spoken.erased);
    EXPECT_EQ(late.spoken.untilSettled, recogniser.spoken.untilSettled);
    EXPECT_EQ(late.unlike, 0u);

    const MeasuredText early = captions(records, 0.5);
    EXPECT_DOUBLE_EQ(early.spoken.untilSettled.front(), 10.6 - 10);
    // "One two." is on the screen for good, and the final's "One too." comes after it.
    EXPECT_EQ(early.unlike, 2u);
    EXPECT_DOUBLE_EQ(early.unlikeShare(), 0.4);
}

TEST(StabilityReportTests, TheTableHasALineForEachRowAndSaysWhatIsOpen) {
    const auto records = log(secondThoughts);
    const StabilityReport report{"two & more",
                                 {{"recogniser", StabilityMeasure::ofRecogniser(records), true}}};
    EXPECT_EQ(report.table(),
              "two & more\n\n"
              "             updates   erased  per word  unstable  steady   after  settled   after"
              "  unlike\n"
              "            per word  printed    spoken     words  median    90 %   median    90 %"
              "  finals\n"
              "recogniser      0.83     0.67      0.50    16.7 %  0.00 s  2.00 s   3.00 s  3.00 s"
              "       –\n"
              "\nUp to 1 words were still open at the end.\n");
}

TEST(StabilityPlotTests, HasACurveForEachRowAndEscapesNames) {
    const auto records = log(secondThoughts);
    StabilityReport report{"<a> & b", {}};
    for (const char* name : {"one", "two", "nothing settled"})
        report.rows.push_back({name, StabilityMeasure::ofRecogniser(records), true});
    report.rows.back().text = {};
    const std::string svg = StabilityPlot::svg(report);
    const auto count = [&](const std::string& part) {
        std::size_t found = 0;
        for (auto at = svg.find(part); at != std::string::npos; at = svg.find(part, at + 1))
            ++found;
        return found;
    };
    EXPECT_EQ(count("<polyline"), 2u);
    EXPECT_EQ(count("&lt;a&gt; &amp; b"), 1u);
    EXPECT_EQ(count("nothing settled"), 2u); // beside its bar and in the legend
    EXPECT_EQ(count("<text"), count("</text>"));
    EXPECT_EQ(count("nan") + count("inf"), 0u);
}

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

TEST(HourLogTests, EndsAsItBeganAndKeepsItsSize) {
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
