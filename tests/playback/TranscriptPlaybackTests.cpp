#include "Tessarune/playback/PlaybackTelemetry.h"
#include "Tessarune/shell/AppSettings.h"
#include "tests/playback/PlayerFixture.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RuntimeLog.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

/// A player with a transcript of three sentences, two of which begin together.
struct TranscriptFixture : testing::PlayerFixture {
    TranscriptFixture() {
        HistoryWordTimeline timeline;
        timeline.sentences = {{"First words.", 2, 4, {}, "audioWord"},
                              {"Said together.", 10, 12, {}, "audioWord"},
                              {"Said, too.", 10, 13, {}, "audioWord"}};
        timeline.words = {{"First", 2, {}}, {"words.", 3, {}}, {"Said,", 10, {}}, {"too.", 11, {}}};
        playback.show(TimedSentences(timeline));
    }
    std::optional<std::size_t> activeAt(double place) {
        player->seek(place);
        pass(0.5);
        return *playback.activeSentenceIndex;
    }

    TranscriptPlayback playback{*player};
};

TEST(TranscriptPlaybackTests, TheSentenceAndTheWordThatAreHeardAreMarked) {
    TranscriptFixture fixture;
    TranscriptPlayback& playback = fixture.playback;
    fixture.play();
    EXPECT_EQ(fixture.activeAt(1), std::nullopt);
    EXPECT_EQ(fixture.activeAt(3), 0U);
    EXPECT_EQ(*playback.activeTokenIndex, 1U);
    EXPECT_EQ(fixture.activeAt(10.2), 2U) << "of two that begin together, the later one is marked";
}

TEST(TranscriptPlaybackTests, StepsGoFromSentenceToSentence) {
    TranscriptFixture fixture;
    fixture.play();
    struct Step {
        double from;
        int direction;
        double to;
    };
    for (const Step& step : {Step{1, -1, 0}, Step{1, 1, 2}, Step{2.5, -1, 2}, Step{3.8, -1, 2},
                             Step{3, 1, 10}, Step{10.2, -1, 2}, Step{12.5, -1, 10}}) {
        fixture.activeAt(step.from);
        fixture.playback.stepSentence(step.direction);
        EXPECT_EQ(*fixture.player->currentTime, step.to) << step.from;
    }
    fixture.playback.playSentences(0, 0);
    fixture.playback.focus(3);
    EXPECT_EQ(fixture.playback.highlightedIndex(), 0U) << "there is no fourth sentence";
    fixture.pass(4);
    EXPECT_FALSE(*fixture.player->isPlaying);
    EXPECT_NEAR(*fixture.player->currentTime, 4, 0.001);
}

TEST(TranscriptPlaybackTests, RepeatsASentenceOfTheTranscriptThatIsShownNow) {
    TranscriptFixture fixture;
    fixture.play();
    fixture.playback.playSentences(2, 2);
    HistoryWordTimeline refined;
    refined.sentences = {{"Words said together.", 2, 13, {}, "audioWord"}};
    fixture.playback.show(TimedSentences(refined));
    fixture.playback.toggleRepeat();
    EXPECT_EQ(*fixture.player->boundedPlaybackSentenceIndex, 0U);
}

TEST(PlaybackTelemetryTests, LogsJumpsAndCountsOnlyTimeThatIsHeard) {
    TranscriptFixture fixture;
    testing::RuntimeLog log(fixture.host);
    testing::MemoryUserDefaults defaults;
    AppSettings settings{defaults};
    settings.historyPlaybackDiagnosticsEnabled = true;
    const PlaybackTelemetry telemetry(fixture.host, log.logger,
                                      settings.historyPlaybackDiagnosticsEnabled, fixture.playback);
    fixture.play();
    fixture.pass(6);
    fixture.player->pausePlayback();
    fixture.pass(100);
    fixture.player->startPlayback();
    fixture.pass(1);
    const auto summaries = log.lines("history.playback.progressSummary");
    ASSERT_EQ(summaries.size(), 1U);
    EXPECT_NEAR(summaries[0]["playedWallSeconds"].get<double>(), 6.5, 0.1);
    EXPECT_NEAR(summaries[0]["timeDeltaSinceLastProgress"].get<double>(), 6.5, 0.3);
    fixture.player->seek(60);
    const auto jumps = log.lines("history.playback.seekDetected");
    ASSERT_EQ(jumps.size(), 1U);
    EXPECT_EQ(jumps[0]["newTime"], 60);
    const auto changes = log.lines("history.playback.sentenceChanged");
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0]["previousSentenceIndex"], -1);
    EXPECT_EQ(changes[1]["activeSentenceIndex"], 2);
    settings.historyPlaybackDiagnosticsEnabled = false;
    fixture.player->seek(1);
    EXPECT_EQ(log.lines("history.playback.seekDetected").size(), 1U);
}

} // namespace
} // namespace tessarune
