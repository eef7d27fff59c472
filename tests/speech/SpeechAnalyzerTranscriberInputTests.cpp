#include "tests/speech/TranscriberFixture.h"

namespace tessarune {
namespace {

using Texts = std::vector<std::string>;

struct SpeechAnalyzerTranscriberInputTests : TranscriberFixture {
    /// Lets the recogniser take what is queued; returns the frames of each batch so far, at the
    /// engine's 16,000 Hz.
    std::vector<std::size_t> takenBatches() {
        host.runDue(host.now());
        std::vector<std::size_t> frames;
        for (const auto& input : engine.session().inputs)
            frames.push_back(input->frames());
        return frames;
    }
    std::vector<AppleSpeechAnalyzerSummaryRecord> summaries; ///< if the test collects them
};

TEST_F(SpeechAnalyzerTranscriberInputTests, TinyBuffersAreJoinedUpTo85Milliseconds) {
    const struct {
        const char* name;
        double sampleRate;
        std::vector<int> buffers;         ///< frames at `sampleRate`
        std::vector<std::size_t> batches; ///< frames at 16,000 Hz; the stop sends the last batch
    } cases[] = {
        // 85 ms are 1,360 frames at 16,000 Hz.
        {"buffers that fill a batch exactly", 16000, std::vector<int>(17, 170), {1360, 1360, 170}},
        {"the next buffer would not fit", 16000, std::vector<int>(10, 160), {1280, 320}},
        {"buffers larger than a batch", 16000, {2000, 2000}, {2000, 2000}},
        {"a large buffer after a small one", 16000, {100, 2000}, {100, 2000}},
        {"empty buffers", 16000, {0, 1360, 0}, {1360}},
        {"frames longer than a batch", 10, {1, 1, 1}, {1600, 1600, 1600}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        start();
        double fed = 0;
        for (const int frames : c.buffers) {
            append(frames / c.sampleRate, {c.sampleRate, 1});
            fed += frames / c.sampleRate;
        }
        transcriber->stop();
        EXPECT_EQ(takenBatches(), c.batches);
        EXPECT_EQ(perf("analyzerInputSourceBuffers"), static_cast<double>(c.buffers.size()));
        EXPECT_EQ(perf("analyzerInputBatches"), static_cast<double>(c.batches.size()));
        EXPECT_NEAR(perf("fedAudioSeconds"), fed, 1e-9);
        EXPECT_NEAR(perf("convertedAudioSeconds"), fed, 1e-9);
    }
}

TEST_F(SpeechAnalyzerTranscriberInputTests, ARecogniserThatHangsLeavesAtMost3600BatchesQueued) {
    start();
    // The recogniser takes nothing until `takenBatches` runs the host. A buffer of 0.1 s fills a
    // batch; at 100 Hz, five thousand buffers are quickly made.
    for (int i = 0; i < 5000; ++i)
        append(0.1, {100, 1});
    EXPECT_EQ(takenBatches().size(), 3600U);
    EXPECT_EQ(log.events("speechAnalyzer.input.full").size(), 1U) << "reported once";
    append(0.1, {100, 1});
    EXPECT_EQ(takenBatches().size(), 3601U)
        << "sound is accepted again once the recogniser resumes";
}

TEST_F(SpeechAnalyzerTranscriberInputTests, SoundWithoutASessionIsDropped) {
    append(1);
    start();
    transcriber->stop();
    append(1);
    host.runUntilIdle();
    EXPECT_TRUE(engine.session().inputs.empty());
    EXPECT_EQ(perf("fedAudioSeconds"), 0);
    EXPECT_EQ(perf("analyzerInputFlushes"), 0);
}

TEST_F(SpeechAnalyzerTranscriberInputTests, ABatchEndsWhereTheFormatChanges) {
    start();
    append(0.05, {48000, 2});
    append(0.04, {44100, 1});
    append(0.03, {48000, 2});
    transcriber->stop();
    EXPECT_EQ(takenBatches(), (std::vector<std::size_t>{800, 640, 480}));
    EXPECT_EQ(converters.made, (std::vector<AudioFormat>{{48000, 2}, {44100, 1}, {48000, 2}}));
    EXPECT_EQ(perf("analyzerInputBatchFrames"), 2400 + 1764 + 1440);
    const auto flush = log.lines("speechAnalyzer.input.flush");
    ASSERT_EQ(flush.size(), 1u);
    EXPECT_EQ(flush[0]["reason"], "stop");
    EXPECT_EQ(flush[0]["frames"], 1440);
    EXPECT_EQ(flush[0]["sampleRate"], 48000.0);
}

TEST_F(SpeechAnalyzerTranscriberInputTests, ABatchThatCannotBeConvertedIsLostAndTheNextIsNot) {
    start();
    converters.failures = 1;
    append(0.5);
    append(0.25);
    EXPECT_EQ(perf("secondsBehind"), 0.25) << "the engine has not taken the second batch yet";
    EXPECT_EQ(takenBatches(), std::vector<std::size_t>{4000});
    EXPECT_EQ(perf("secondsBehind"), 0);
    EXPECT_EQ(perf("fedAudioSeconds"), 0.75);
    EXPECT_EQ(perf("convertedAudioSeconds"), 0.25);
}

TEST_F(SpeechAnalyzerTranscriberInputTests, LostSoundCountsInTheTimesOfLaterWords) {
    struct Step {
        const char* name;
        std::function<void()> lose; ///< after ten seconds of sound
        double lost;                ///< seconds
    };
    const Step steps[] = {
        {"a gap in the capture",
         [&] {
             append(0.04); // not a full batch yet
             transcriber->skip(60);
         },
         60},
        {"a batch that cannot be converted",
         [&] {
             converters.failures = 1;
             append(0.5, {48000, 1}); // another format, so that a converter is made
         },
         0.5},
        {"a recogniser that hangs",
         [&] {
             // Ten of the 3600 places in the queue are taken; twenty batches of 0.1 s do not fit.
             for (int i = 0; i < 3600 - 10 + 20; ++i)
                 append(0.1);
         },
         2},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.name);
        finals.clear();
        summaries.clear();
        make();
        transcriber->onSummaryResult = [&](const AppleSpeechAnalyzerSummaryRecord& record) {
            summaries.push_back(record);
        };
        // A gap while the model is loading counts like any other.
        engine.script.prepareSeconds = 3;
        begin(transcriber->start("en-US"));
        const double epoch = host.now() - 1; // the first buffer lasts one second and ends now
        for (int i = 0; i < 10; ++i)
            append(1);
        step.lose();
        host.advanceBy(3);
        append(1);
        host.runDue(host.now());
        ASSERT_EQ(outcome, "done");
        const double heard = engine.session().heardSeconds;
        give(simulation::spoken(true, "before", 9, 0.5));
        give(simulation::spoken(true, "after", heard - 0.75, 0.5));
        ASSERT_EQ(finals.size(), 2u);
        EXPECT_NEAR(finals[0].start, epoch + 9, 1e-6);
        EXPECT_NEAR(finals[1].start, epoch + heard - 0.75 + step.lost, 1e-6);
        EXPECT_NEAR(finals[1].words.value().at(0).end, epoch + heard - 0.25 + step.lost, 1e-6);
        EXPECT_NEAR(summaries.back().mappedEndEpochSeconds.value(), finals[1].end, 1e-6)
            << "the diagnostics record has the same times";
        transcriber->stop();
        host.runUntilIdle();
    }
}

TEST_F(SpeechAnalyzerTranscriberInputTests, FinalizationIsThrottledByAudioAndByWallTime) {
    const struct {
        const char* name;
        double firstAudio, laterAudio, wait; ///< seconds; the wait precedes the later audio
        Texts logged;
    } cases[] = {
        {"no sound", 0, 0, 5, {}},
        {"too little sound: the cutoff, 0.45 s before the end, is not above 0.2", 0.65, 0, 0, {}},
        {"just enough", 0.6875, 0, 0, {"request", "done"}},
        {"two requests, 0.89 s of sound and 1.19 s apart", 1.01, 0.89, 1.19, {"request", "done"}},
        {"two, 0.9 s of sound apart", 1.01, 0.9, 0, {"request", "done", "request", "done"}},
        {"two, 1.2 s apart", 1.01, 0, 1.2, {"request", "done", "request", "done"}},
    };
    std::size_t before = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        start();
        if (c.firstAudio > 0)
            append(c.firstAudio);
        transcriber->requestFinalization("sentence");
        host.advanceBy(c.wait);
        if (c.laterAudio > 0)
            append(c.laterAudio);
        transcriber->requestFinalization("sentence");
        host.runDue(host.now());
        transcriber->stop();
        host.runUntilIdle();
        const auto events = log.events("speechAnalyzer.finalize.");
        EXPECT_EQ(Texts(events.begin() + static_cast<std::ptrdiff_t>(before), events.end()),
                  c.logged);
        EXPECT_EQ(engine.session().finalizeCutoffs.size(), c.logged.size() / 2);
        before = events.size();
    }
    transcriber->requestFinalization("without a session");
    host.runUntilIdle();
    EXPECT_EQ(log.events("speechAnalyzer.finalize.").size(), before);
}

TEST_F(SpeechAnalyzerTranscriberInputTests, AfterAFinalizationTheEngineMayDropOlderSound) {
    start();
    append(6);
    transcriber->requestFinalization("sentence");
    host.runDue(host.now());
    // The cutoff is 0.45 s before the end of the sound. Sound is dropped if it is more than 1.5 s
    // older than the cutoff.
    EXPECT_EQ(engine.session().finalizeCutoffs, std::vector<double>{5.55});
    EXPECT_EQ(engine.session().cancelCutoffs, (std::vector<double>{5.55 - 1.5}));
    const auto request = log.lines("speechAnalyzer.cancel.request").at(0);
    EXPECT_EQ(request["reason"], "finalize.sentence");
    EXPECT_EQ(request["latestAudioTime"], 6.0);
    EXPECT_EQ(perf("cancelDone"), 1);
    EXPECT_NEAR(perf("canceledAudioSeconds"), 4.05, 1e-9);
}

TEST_F(SpeechAnalyzerTranscriberInputTests, FailuresOfFinalizeAndCancelAreOnlyLogged) {
    engine.script.finalizeFailure = "not now";
    engine.script.cancelFailure = "nor that";
    start();
    append(8);
    transcriber->requestFinalization("sentence");
    give(simulation::spoken(true, "seven seconds", 0, 3.5));
    EXPECT_EQ(log.lines("speechAnalyzer.finalize.failed").at(0)["error"], "not now");
    EXPECT_EQ(log.lines("speechAnalyzer.cancel.failed").at(0)["error"], "nor that");
    EXPECT_EQ(perf("cancelRequests"), 1);
    EXPECT_EQ(perf("cancelDone"), 0);
    EXPECT_EQ(sent, Texts{"= seven seconds"});
}

TEST_F(SpeechAnalyzerTranscriberInputTests, OldSoundIsDroppedInStepsOfAtLeastFourSeconds) {
    start();
    append(20);
    const struct {
        double finalEnd;             ///< sound more than 1.5 s before it is dropped
        std::vector<double> cutoffs; ///< so far
    } steps[] = {
        {5.4375, {}}, {5.5, {4.0}}, {9.4375, {4.0}}, {9.5, {4.0, 8.0}}, {9.75, {4.0, 8.0}},
    };
    for (const auto& step : steps) {
        give(simulation::spoken(true, "word", step.finalEnd - 0.25));
        EXPECT_EQ(engine.session().cancelCutoffs, step.cutoffs) << step.finalEnd << " s";
    }
    EXPECT_EQ(perf("canceledAudioSeconds"), 8);
    EXPECT_EQ(log.lines("speechAnalyzer.cancel.request").at(0)["reason"], "engineFinal");
}

} // namespace
} // namespace tessarune
