#include "tests/speech/TranscriberFixture.h"

namespace tessarune {
namespace {

using simulation::spoken;
using Texts = std::vector<std::string>;

struct SpeechAnalyzerTranscriberSessionTests : TranscriberFixture {};

TEST_F(SpeechAnalyzerTranscriberSessionTests, AFailedStartLeavesNoSession) {
    const struct {
        const char* name;
        std::string download, prepare, begin;
        bool hadSession;
    } cases[] = {
        {"the model cannot be fetched", "no network", "", "", false},
        {"the model cannot be loaded", "", "broken file", "", true},
        {"the engine refuses", "", "", "no memory", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        assets.installed = c.download.empty();
        assets.failure = c.download;
        engine.script.prepareFailure = c.prepare;
        engine.script.startFailure = c.begin;
        engine.sessions.clear();
        begin(transcriber->start("en-US"));
        host.runUntilIdle();
        EXPECT_EQ(outcome, c.download + c.prepare + c.begin);
        EXPECT_EQ(engine.sessions.size(), c.hadSession ? 1u : 0u);
        if (c.hadSession) {
            EXPECT_TRUE(engine.session().cancelled);
            append(1);
            engine.session().give(spoken(true, "a late word"));
            host.runUntilIdle();
            EXPECT_TRUE(engine.session().inputs.empty());
        }
    }
    EXPECT_EQ(log.lines("speechAnalyzer.assets.install.failed").at(0)["reason"], "start");
    EXPECT_TRUE(sent.empty());
}

TEST_F(SpeechAnalyzerTranscriberSessionTests, AStopDuringTheStartEndsTheStart) {
    engine.script.prepareSeconds = 2;
    begin(transcriber->start("en-US"));
    host.advanceBy(1);
    transcriber->stop();
    host.runUntilIdle();
    EXPECT_NE(outcome, "done");
    EXPECT_TRUE(engine.session().cancelled);
    EXPECT_TRUE(engine.session().inputs.empty());
}

TEST_F(SpeechAnalyzerTranscriberSessionTests, NothingOfAStoppedSessionReachesTheNext) {
    engine.script.finalizeSeconds = 1;
    start();
    append(8);
    give(spoken(false, "an old partial"));
    transcriber->requestFinalization("sentence");
    host.runDue(host.now());
    const auto old = engine.sessions.back();
    old->give(spoken(true, "an old final")); // pending when the session stops
    transcriber->stop();
    start();
    append(1);
    give(spoken(false, "new"));
    old->give(spoken(false, "an old word"));
    host.runUntilIdle();
    EXPECT_EQ(sent, Texts{"~1 new"});
    EXPECT_TRUE(old->cancelled);
    EXPECT_EQ(log.events("speechAnalyzer.finalize."), Texts{"request"});
    EXPECT_TRUE(old->cancelCutoffs.empty());
    EXPECT_EQ(perf("fedAudioSeconds"), 1) << "each session counts from zero";
}

TEST_F(SpeechAnalyzerTranscriberSessionTests, ADrainWaitsForTheLastWords) {
    engine.script.lines = {{9, spoken(false, "last")}, {9, spoken(true, "last words")}};
    start();
    append(0.5);
    append(0.03);
    give(spoken(false, "la"));
    begin(transcriber->finishDrainingAndStop());
    host.runDue(host.now());
    EXPECT_EQ(outcome, "done");
    host.runUntilIdle();
    EXPECT_EQ(sent, Texts{"= last words"}) << "the final replaces the pending partial";
    EXPECT_NEAR(engine.session().heardSeconds, 0.53, 1e-9);
    EXPECT_FALSE(engine.session().cancelled);
    EXPECT_EQ(perf("drainTimeouts"), 0);
    EXPECT_EQ(log.lines("speechAnalyzer.input.flush").at(0)["reason"], "finishDraining");
    EXPECT_EQ(host.now(), 1000) << "the finished drain leaves no timer";

    begin(transcriber->finishDrainingAndStop());
    EXPECT_EQ(outcome, "done") << "without a session there is nothing to wait for";
}

TEST_F(SpeechAnalyzerTranscriberSessionTests, ADrainIsBoundedAndNothingComesAfterIt) {
    engine.script.finishNeverEnds = true;
    start();
    append(0.5);
    begin(transcriber->finishDrainingAndStop());
    host.advanceTo(1002.99);
    EXPECT_EQ(outcome, "running");
    give(spoken(true, "still in time"));
    give(spoken(false, "due after the end"));
    host.advanceTo(1003);
    EXPECT_EQ(outcome, "done");
    EXPECT_EQ(perf("drainTimeouts"), 1);
    engine.session().give(spoken(true, "too late"));
    host.runUntilIdle();
    EXPECT_EQ(sent, Texts{"= still in time"});
    EXPECT_TRUE(engine.session().cancelled);
    const auto timeout = log.lines("speechAnalyzer.drain.timeout");
    ASSERT_EQ(timeout.size(), 1u);
    EXPECT_EQ(timeout[0]["latestAudioTime"], 0.5);
    start();
    EXPECT_EQ(perf("drainTimeouts"), 0);
}

TEST_F(SpeechAnalyzerTranscriberSessionTests, DroppingTheTranscriberEndsItsSession) {
    start();
    append(0.5);
    give(spoken(false, "hello"));
    transcriber.reset();
    host.runUntilIdle();
    EXPECT_TRUE(engine.session().cancelled);
    EXPECT_TRUE(sent.empty());
}

} // namespace
} // namespace tessarune
