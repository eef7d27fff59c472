#include "tests/playback/PlayerFixture.h"
#include "tests/support/Rounds.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tessarune {
namespace {

using testing::PlayerFixture;

TEST(AudioPlayerTests, ShowsTheHeardPositionWhateverTheUserDoes) {
    for (std::uint64_t seed = 1; seed <= testing::rounds(25); ++seed) {
        PlayerFixture fixture(seed);
        AudioPlayer& player = *fixture.player;
        auto& random = fixture.host.random();
        const auto number = [&](double most) {
            return std::uniform_real_distribution<>(0, most)(random);
        };
        std::ostringstream trace;
        double settledAt = fixture.host.now() + 0.5;
        double last = 0;
        bool isServerUp = true;
        fixture.onHeard = [&](double heard) {
            const double before = std::exchange(last, heard);
            if (*player.repeatsBoundedPlayback && heard < before)
                settledAt = fixture.host.now() + 0.03; // the display jumps back a little later
            if (fixture.host.now() < settledAt || !isServerUp || !*player.isPlaying)
                return;
            const double tolerance = 0.03 * *player.rate + 0.006;
            ASSERT_NEAR(heard, *player.currentTime, tolerance)
                << "the position shown is not the one heard, seed " << seed << trace.str();
            if (!*player.repeatsBoundedPlayback)
                ASSERT_NEAR(heard - before, 0.005 * *player.rate, 0.003)
                    << "a gap or a jump, seed " << seed << trace.str();
        };
        fixture.play();
        for (int step = 0; step < 40 && !::testing::Test::HasFatalFailure(); ++step) {
            const int action = static_cast<int>(number(9));
            trace << "\n" << fixture.host.now() - 1e9 << ": action " << action;
            settledAt = fixture.host.now() + 0.5;
            const double start = number(110);
            switch (action) {
            case 0:
                player.togglePlayback();
                break;
            case 1:
                player.seek(number(130) - 5);
                break;
            case 2:
                player.setRate(0.3 + number(3.5));
                break;
            case 3:
                player.playBounded(1, start, start + number(4));
                break;
            case 4:
                player.repeatBounded(2, *player.currentTime, *player.currentTime + 1 + number(2));
                break;
            case 5:
                player.clearBounds();
                break;
            case 6:
                isServerUp = !isServerUp;
                isServerUp ? fixture.server.comeBack() : fixture.server.goDown();
                break;
            case 7:
                player.load("a");
                player.startPlayback();
                break;
            default:
                break;
            }
            fixture.pass(number(3));
        }
        if (!isServerUp)
            fixture.server.comeBack();
        settledAt = fixture.host.now() + 0.5;
        player.seek(10);
        player.startPlayback();
        fixture.positions.clear();
        fixture.pass(2);
        ASSERT_GT(fixture.positions.size(), 200U)
            << "playback has stopped, seed " << seed << trace.str();
    }
}

TEST(AudioPlayerTests, ASentenceIsPlayedToItsEndAndAgainFromItsBeginning) {
    PlayerFixture fixture;
    AudioPlayer& player = *fixture.player;
    fixture.play();
    for (int click = 0; click < 2; ++click) {
        player.playBounded(7, 20, 21.5);
        EXPECT_EQ(*player.boundedPlaybackSentenceIndex, 7U);
        fixture.pass(0.1);
        fixture.positions.clear();
        fixture.pass(click == 0 ? 0.3 : 3); // the first is interrupted by the second
    }
    EXPECT_FALSE(*player.isPlaying);
    EXPECT_FALSE(player.boundedPlaybackSentenceIndex->has_value());
    EXPECT_NEAR(*player.currentTime, 21.5, 0.001);
    EXPECT_NEAR(fixture.positions.back(), 21.495, 0.002) << "playback ends with the sentence";

    player.repeatBounded(7, 20, 21.5);
    fixture.positions.clear();
    fixture.silences = 0;
    fixture.pass(6);
    EXPECT_TRUE(*player.isPlaying);
    EXPECT_EQ(fixture.silences, 0) << "no gap between two rounds";
    EXPECT_LT(fixture.largestStep(), 0.007);
    EXPECT_GE(std::ranges::count_if(fixture.positions, [](double at) { return at < 20.0025; }), 3);
    player.clearBounds();
    fixture.pass(3);
    EXPECT_GT(*player.currentTime, 21.6) << "playback continues after the sentence";
}

TEST(AudioPlayerTests, PlaybackStopsAtTheEndAndThenStartsFromTheBeginning) {
    PlayerFixture fixture;
    AudioPlayer& player = *fixture.player;
    player.load("missing");
    player.load("a");
    player.load("short"); // the last choice counts
    player.setRate(2);
    player.startPlayback();
    fixture.pass(5);
    EXPECT_FALSE(*player.isPlaying);
    EXPECT_EQ(*player.problem, "");
    EXPECT_NEAR(*player.duration, 2, 0.01);
    EXPECT_NEAR(*player.currentTime, 2, 0.01);
    EXPECT_NEAR(fixture.positions.back(), 2, 0.03);
    player.startPlayback();
    fixture.pass(0.5);
    EXPECT_NEAR(*player.currentTime, 1, 0.1);
    player.repeatBounded(0, 1, 0);
    fixture.pass(3);
    EXPECT_TRUE(*player.isPlaying) << "repeats the last sentence, whose end is unknown";
}

TEST(AudioPlayerTests, AFailedPlaybackSaysWhyAndCanBeRetried) {
    PlayerFixture fixture;
    AudioPlayer& player = *fixture.player;
    const auto expectPlaying = [&](bool isPlaying, const std::string& problem) {
        player.startPlayback();
        fixture.pass(1);
        EXPECT_EQ(*player.isPlaying, isPlaying);
        EXPECT_EQ(*player.problem, problem);
    };
    player.load("missing");
    player.seek(30);
    expectPlaying(false, "gone");
    expectPlaying(false, "gone");
    fixture.missing.clear();
    expectPlaying(true, "");
    EXPECT_NEAR(*player.currentTime, 31, 0.1);
    fixture.changesTempo = false;
    player.setRate(2);
    expectPlaying(false, "no filter");
    player.repeatBounded(0, 10, 12);
    expectPlaying(false, "no filter");
    player.setRate(1);
    expectPlaying(true, "");
    fixture.missing = "missing";
    player.load("missing");
    fixture.pass(1);
    fixture.missing.clear();
    player.playBounded(7, 20, 21.5);
    fixture.pass(3);
    EXPECT_NEAR(*player.currentTime, 21.5, 0.001) << "a retried sentence stops at its end";
}

TEST(AudioPlayerTests, ResumesWhereItStoppedWhenTheServerReturnsAndFailsWithoutAServer) {
    PlayerFixture fixture;
    AudioPlayer& player = *fixture.player;
    fixture.play();
    for (const bool isPausedMeanwhile : {false, true}) {
        fixture.server.goDown();
        fixture.pass(1);
        EXPECT_NE(*player.problem, "");
        EXPECT_TRUE(*player.isPlaying);
        const double broken = *player.currentTime;
        if (isPausedMeanwhile)
            player.pausePlayback();
        fixture.positions.clear();
        fixture.server.comeBack();
        fixture.pass(1);
        EXPECT_EQ(fixture.positions.empty(), isPausedMeanwhile);
        player.startPlayback();
        fixture.pass(1);
        EXPECT_EQ(*player.problem, "");
        EXPECT_NEAR(fixture.positions.front(), broken, 0.03);
    }
    PlayerFixture silent;
    silent.server.connectFailure = SoundServerError(SoundServerError::connectionRefused, "none");
    silent.play();
    EXPECT_FALSE(*silent.player->isPlaying);
    EXPECT_EQ(*silent.player->problem, "none");
}

TEST(LoudnessTests, BringsRecordingsToOneLevel) {
    for (const auto& [meanSquare, gain] :
         {std::pair(0.01, 0.0), {0.001, 10.0}, {0.1, -10.0}, {1e-9, 24.0}, {0.0, 0.0}})
        EXPECT_NEAR(Loudness::gainFor(meanSquare), gain, 1e-9) << meanSquare;

    LevelControl level;
    level.setGain(24, true);
    AudioBuffer sound{{1000, 1}, {0.01F, 0.06F, -0.06F}};
    level.apply(sound);
    EXPECT_NEAR(sound.samples[0], 0.158, 0.001);
    EXPECT_LT(sound.samples[1], 0.94) << "loud moments of a quiet recording are limited";
    EXPECT_GT(sound.samples[1], 0.8);
    EXPECT_EQ(sound.samples[2], -sound.samples[1]);
}

} // namespace
} // namespace tessarune
