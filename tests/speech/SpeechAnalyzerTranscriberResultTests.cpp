#include "tests/speech/TranscriberFixture.h"

namespace tessarune {
namespace {

using simulation::spoken;
using Texts = std::vector<std::string>;

struct SpeechAnalyzerTranscriberResultTests : TranscriberFixture {};

TEST_F(SpeechAnalyzerTranscriberResultTests, AtMostOnePartialLeavesPerWindowAndItIsTheNewest) {
    start();
    append(1);
    const struct {
        double at;
        const char* text;
    } results[] = {{1000, "a"},          {1000.02, "a b"}, {1000.05, "a b c"},
                   {1000.06, "a b c d"}, {1000.06, " "},   {1000.3, "a b c d e"}};
    for (const auto& result : results) {
        host.advanceTo(result.at);
        give(spoken(false, result.text));
    }
    host.advanceBy(1);
    EXPECT_EQ(sent, (Texts{"~3 a b c", "~4 a b c d", "~5 a b c d e"}));
    EXPECT_EQ(times, (std::vector<double>{1000 + 0.055, 1000.06 + 0.055, 1000.3 + 0.055}));
    EXPECT_EQ(partials[0].timestamp, 999) << "the sound that arrived at 1000 began a second before";
    EXPECT_EQ(perf("rawPartialResults"), 5);
    EXPECT_EQ(perf("coalescedPartialResults"), 2);
    EXPECT_EQ(perf("partialEvents"), 3);
}

/// A partial that overrules a final of one word with confidence 0.4. Its eight words end at 2 s.
const std::string talk = "we are going to talk about it now";

TEST_F(SpeechAnalyzerTranscriberResultTests, FinalsAreArbitratedAgainstTheLastPartialAndTheMark) {
    const auto partial = [](const std::string& text, double start = 0) {
        return spoken(false, text, start);
    };
    const auto fragment = [](double end) { return spoken(true, "about it", end - 0.5, 0.25, 0.4); };
    const auto poor = spoken(true, "we", 0, 0.25, 0.4);
    const struct {
        const char* name;
        std::vector<SpeechResult> results;
        Texts sent;
        Texts decisions;
    } cases[] = {
        {"an ordinary final",
         {partial("hello"), spoken(true, "Hello.")},
         {"= Hello."},
         {"useFinal"}},
        {"a poor final: the partial is used, and fragments before its end are dropped",
         {partial(talk), poor, fragment(1.0), fragment(1.5)},
         {"= " + talk},
         {"useLastPartial", "dropSuppressedFinal", "dropSuppressedFinal"}},
        {"a fragment that ends just before the mark clears it",
         {partial(talk), poor, fragment(1.88), fragment(2.1)},
         {"= " + talk, "= about it"},
         {"useLastPartial", "dropSuppressedFinal", "useFinal"}},
        {"a final that ends past the mark is used",
         {partial(talk), poor, fragment(2.125)},
         {"= " + talk, "= about it"},
         {"useLastPartial", "useFinal"}},
        {"a partial that ends just past the mark keeps it",
         {partial(talk), poor, partial("and", 2.0), fragment(2.0)},
         {"= " + talk, "~1 and"},
         {"useLastPartial", "dropSuppressedFinal"}},
        {"a partial that ends well past the mark clears it",
         {partial(talk), poor, partial("and", 2.0625), fragment(2.0)},
         {"= " + talk, "= about it"},
         {"useLastPartial", "useFinal"}},
        {"after a final of punctuation only, the partial no longer overrules a final",
         {partial(talk), spoken(true, "..."), poor},
         {"= we"},
         {"dropSuppressedFinal", "useFinal"}},
        {"a final of punctuation only does not withdraw a pending partial",
         {partial("hello there"), spoken(true, "...")},
         {"~1 hello there"},
         {"dropSuppressedFinal"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        start();
        append(4);
        sent.clear();
        decisions.clear();
        for (const auto& result : c.results)
            give(result);
        host.advanceBy(1);
        EXPECT_EQ(sent, c.sent);
        EXPECT_EQ(decisions, c.decisions);
        const auto count = [&](const char* decision) {
            return static_cast<double>(std::count(decisions.begin(), decisions.end(), decision));
        };
        EXPECT_EQ(perf("appleReconcileUseFinal"), count("useFinal"));
        EXPECT_EQ(perf("appleReconcileUseLastPartial"), count("useLastPartial"));
        EXPECT_EQ(perf("appleReconcileDropSuppressed"), count("dropSuppressedFinal"));
        transcriber->stop();
        host.runUntilIdle();
    }
}

TEST_F(SpeechAnalyzerTranscriberResultTests, AnEmptyFinalWithdrawsTheGuessAtOnce) {
    int withdrawn = 0;
    transcriber->onGuessWithdrawn = [&] { ++withdrawn; };
    start();
    append(4);
    give(spoken(true, "")); // there is no guess to withdraw
    EXPECT_EQ(withdrawn, 0);
    give(spoken(false, "um"));
    give(spoken(true, ""));
    EXPECT_EQ(withdrawn, 1);
    host.advanceBy(1);
    EXPECT_TRUE(sent.empty()) << "a pending guess is not sent after its withdrawal";
}

TEST_F(SpeechAnalyzerTranscriberResultTests, AFinalCarriesTheTimesOfTheTextThatWasChosen) {
    start();
    host.advanceTo(1004);
    append(4); // audio time 0 is 1000
    auto untimed = spoken(true, "no times");
    for (auto& run : untimed.runs)
        run.audioStart = run.audioEnd = std::nullopt;
    give(spoken(true, "Hello world.", 0.5));
    give(untimed);
    host.advanceTo(1005);
    give(untimed);
    give(spoken(false, talk, 5));
    give(spoken(true, "we", 5, 0.25, 0.4));
    ASSERT_EQ(finals.size(), 4u);
    EXPECT_EQ(finals[0], (ASREvent::Final{"Hello world.", 1000.5, 1001, EndpointReason::engineFinal,
                                          std::vector<ASRWordTiming>{{"Hello", 1000.5, 1000.75},
                                                                     {"world.", 1000.75, 1001}}}));
    EXPECT_EQ(finals[1].start, 1001) << "where the previous utterance ended";
    EXPECT_EQ(finals[1].end, 1004) << "when it arrived";
    EXPECT_EQ(finals[1].words, std::nullopt);
    EXPECT_EQ(finals[2].start, 1004);
    EXPECT_EQ(finals[3], (ASREvent::Final{talk, 1005, 1007, EndpointReason::engineFinal, {}}));
    EXPECT_EQ(perf("finalEvents"), 4);
    EXPECT_EQ(perf("finalCharacters"), 12 + 8 + 8 + 33);
    EXPECT_EQ(perf("timingRuns"), 2 + 2 + 2 + 1);
    EXPECT_EQ(perf("timedWords"), 3);
}

TEST_F(SpeechAnalyzerTranscriberResultTests, AResetBeginsANewUtterance) {
    start();
    append(4);
    give(spoken(false, talk));
    give(spoken(true, "we", 0, 0.25, 0.4)); // sets the mark
    give(spoken(false, talk, 2));
    host.advanceTo(1005);
    transcriber->reset();
    auto untimed = spoken(true, "about it", 1);
    untimed.runs[0].audioStart = untimed.runs[1].audioStart = std::nullopt;
    give(untimed);
    EXPECT_EQ(decisions.back(), "useFinal");
    EXPECT_EQ(finals.back().start, 1005);
}

TEST_F(SpeechAnalyzerTranscriberResultTests, TheCallbacksDecideWhichOptionsAreRequested) {
    const struct {
        bool summary, raw;
        Texts options;
    } cases[] = {
        {false,
         false,
         {"reporting.volatileResults", "reporting.fastResults", "attribute.audioTimeRange"}},
        {true,
         false,
         {"reporting.volatileResults", "reporting.fastResults", "attribute.audioTimeRange",
          "attribute.transcriptionConfidence"}},
        {true,
         true,
         {"reporting.volatileResults", "reporting.fastResults",
          "reporting.alternativeTranscriptions", "attribute.audioTimeRange",
          "attribute.transcriptionConfidence"}},
    };
    for (const auto& c : cases) {
        make();
        std::vector<AppleSpeechAnalyzerSummaryRecord> summaries;
        std::vector<AppleSpeechAnalyzerRawResultRecord> raws;
        std::vector<AppleFinalReconcileDecisionRecord> records;
        if (c.summary)
            transcriber->onSummaryResult = [&](const auto& record) { summaries.push_back(record); };
        if (c.raw)
            transcriber->onRawResult = [&](const auto& record) { raws.push_back(record); };
        transcriber->onReconcileDecision = [&](const auto& r) { records.push_back(r); };
        start();
        host.advanceBy(1);
        append(1);
        give(spoken(false, "hel"));
        give(spoken(true, "Hello you ", 0.25, 0.25, 0.5));
        const auto& asked = engine.session().options();
        EXPECT_EQ(asked.localeIdentifier, "en-US");
        EXPECT_EQ(asked.reporting.size() + asked.attributes.size(), c.options.size());
        EXPECT_EQ(records.at(0).final.requestedSpeechOptions, c.options);
        ASSERT_EQ(summaries.size(), c.summary ? 2u : 0u);
        ASSERT_EQ(raws.size(), c.raw ? 2u : 0u);
        EXPECT_EQ(perf("appleSummaryResults"), c.summary ? 2 : 0);
        EXPECT_EQ(perf("appleFullRawResults"), c.raw ? 2 : 0);
        if (c.summary) {
            const auto& summary = summaries[1];
            EXPECT_EQ(summary.sequence, 2);
            EXPECT_EQ(summary.textPreview, "Hello you");
            EXPECT_EQ(summary.minConfidence, 0.5);
            EXPECT_EQ(summary.mappedStartEpochSeconds, host.now() - 0.75);
            EXPECT_EQ(summary.revisionBeforeTessaruneProcessing, 1);
            EXPECT_TRUE(summary.pendingPartialBeforeTessaruneProcessing);
        }
        if (c.raw) {
            const auto& raw = raws[1];
            EXPECT_EQ(raw.text, "Hello you ");
            EXPECT_EQ(raw.runs.at(1).characterStart, 6);
            EXPECT_EQ(raw.runs.at(1).audioStartCMTimeValue, 500);
            EXPECT_EQ(raw.alternatives.at(0).wordCount, 2);
            EXPECT_EQ(raw.engineState.partialCoalesceWindowSeconds, 0.055);
        }
    }
}

TEST_F(SpeechAnalyzerTranscriberResultTests, AFailureOfTheEngineIsReportedOnceAndOnlyInItsSession) {
    start();
    engine.session().fail("the engine broke");
    host.runUntilIdle();
    EXPECT_EQ(sent, Texts{"! the engine broke"});
    transcriber->stop();
    start();
    auto old = engine.sessions.back();
    transcriber->stop();
    old->fail("too late");
    host.runUntilIdle();
    EXPECT_EQ(sent.size(), 1u);
}

} // namespace
} // namespace tessarune
