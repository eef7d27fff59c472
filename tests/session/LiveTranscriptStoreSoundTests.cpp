#include "Tessarune/audio/WAVHeader.h"
#include "Tessarune/history/HistoryWordTimeline.h"
#include "tests/simulation/SimulatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using simulation::SimulatedSession;

/// The longest stretch of silence in a WAV, in seconds.
double longestSilence(const std::string& wav) {
    const auto header = WAVHeader::decoded(wav).value();
    std::size_t longest = 0;
    std::size_t run = 0;
    for (std::size_t at = header.dataOffset; at + 1 < wav.size(); at += 2) {
        run = wav[at] == 0 && wav[at + 1] == 0 ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return static_cast<double>(longest) / header.sampleRate;
}

TEST(LiveTranscriptStoreInterruptionTests, ASessionContinuesWithCorrectTimesAfterAnyInterruption) {
    using Session = SimulatedSession;
    const std::string interrupted = "声音已中断，正在等待恢复…";
    const struct {
        const char* name;
        std::function<void(Session&)> takeAway;
        double away; ///< seconds without the sound
        std::function<void(Session&)> giveBack;
        double gap;
        std::string status; ///< while the sound is away
    } cases[] = {
        {"output unplugged, another one later", [](Session& s) { s.setOutputs({}); }, 10,
         [](Session& s) { s.setOutputs({"b"}); }, 10, interrupted},
        {"server restarted", [](Session& s) { s.server.goDown(); }, 7,
         [](Session& s) { s.server.comeBack(); }, 7, interrupted},
        {"computer asleep", [](Session& s) { s.host.sleepComputer(3600); }, 1, [](Session&) {},
         3600, "正在收听：Output a"},
        {"another default output",
         [](Session& s) {
             s.setOutputs({"b", "a"});
         },
         5, [](Session&) {}, 0, "正在收听：Output b"},
        {"another sample rate", [](Session& s) { s.setOutputs({"b"}, {}, 4800); }, 5,
         [](Session&) {}, 0, "正在收听：Output b"},
        {"clock set back", [](Session& s) { s.host.shiftWallClock(-86400); }, 5, [](Session&) {}, 0,
         ""},
        {"clock set ahead", [](Session& s) { s.host.shiftWallClock(86400); }, 5, [](Session&) {}, 0,
         ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Session session;
        session.settings.recordLosslessAudio = true;
        session.host.shiftWallClock(7200); // the wall clock differs from the one that times words
        session.launch();
        session.start();
        session.hear(2);
        session.say(true, "Before.");
        session.server.keepDelivering(0.5F, 0.1);
        c.takeAway(session);
        session.host.advanceBy(std::min(c.away, 1.0));
        if (c.status == interrupted)
            session.say(false, "Aft"); // a guess must not hide the status
        EXPECT_EQ(session.status(), c.status) << "the status within a second";
        session.host.advanceBy(c.away - std::min(c.away, 1.0));
        c.giveBack(session);
        session.host.advanceBy(3);
        session.say(true, "After."); // `say` dates the words a second back
        EXPECT_EQ(session.phase(), LiveSessionPhase::listening);
        EXPECT_EQ(session.status(), "");
        EXPECT_EQ(session.store->view().captions.committedSegments->size(), 2U);
        const double elapsed =
            session.host.now() - *session.store->recordingTracker().currentStartedAt();
        session.stop();
        session.host.advanceBy(20);

        EXPECT_EQ(session.phase(), LiveSessionPhase::idle);
        EXPECT_EQ(session.status(), "点击开始，或按空格");
        const auto recording = session.catalog->recordings().at(0);
        EXPECT_EQ(session.transcript(recording.id), "Before.\nAfter.");
        EXPECT_NEAR(recording.duration, elapsed, 0.5);
        EXPECT_NEAR(recording.endedAt.value_or(0) - recording.startedAt, elapsed, 1);
        EXPECT_NEAR(longestSilence(session.files.contentsOf(recording.filePath)), c.gap, 0.4);
        const auto timeline = HistoryWordTimeline::decoded(
            session.files.contentsOf(session.catalog->wordTimelineURL(recording.id)));
        ASSERT_TRUE(timeline && timeline->sentences.size() == 2);
        EXPECT_LT(timeline->sentences[0].end, 2.2);
        EXPECT_NEAR(timeline->sentences[1].start, elapsed - 1.1, 0.5);
    }
}

TEST(LiveTranscriptStoreTimeTests, WordTimesCountFromTheStartOfTheFileHoweverLateSoundBegins) {
    for (const double openSeconds : {0.0, 1.5}) {
        for (const double quietSeconds : {0.0, 0.7, 5.0}) { // the last is filled with silence
            for (const bool isKilled : {false, true}) {
                SCOPED_TRACE(::testing::Message()
                             << "opened after " << openSeconds << " s, quiet for " << quietSeconds
                             << " s, " << (isKilled ? "killed" : "stopped"));
                SimulatedSession session;
                session.settings.recordLosslessAudio = true;
                session.launch();
                session.server.openDelay = openSeconds;
                session.start();
                session.host.advanceBy(openSeconds + quietSeconds);
                session.hear(3);
                session.say(true, "Said two seconds later.");
                if (isKilled) // nothing reaches the disk any more
                    session.files.failFrom = session.files.operations + 1;
                session.stop();
                session.host.advanceBy(20);
                session.store.reset(); // so that it does not save again
                session.files.recover();
                session.launch();
                const auto recording = session.catalog->recordings().at(0);
                const double silence = longestSilence(session.files.contentsOf(recording.filePath));
                const auto timeline = HistoryWordTimeline::decoded(
                    session.files.contentsOf(session.catalog->wordTimelineURL(recording.id)));
                ASSERT_TRUE(timeline && timeline->sentences.size() == 1);
                EXPECT_NEAR(timeline->sentences[0].start, silence + 2, 0.15);
            }
        }
    }
}

} // namespace
} // namespace tessarune
