#include "Tessarune/playback/AudioPlayer.h"
#include "tests/simulation/ScriptedSoundServer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tessarune {
namespace {

using testing::ScriptedSoundServer;

constexpr double frameRate = 1000;
constexpr float reference = 0.05F;
constexpr float stepOfFrame = 1e-6F;

/// Sound that says where it is: the second channel over the first is the number of the frame.
class NumberedFile final : public MediaFile {
  public:
    explicit NumberedFile(std::size_t frames) : frames_(frames) {}
    AudioFormat format() const override { return {frameRate, 2}; }
    std::optional<double> duration() const override {
        return static_cast<double>(frames_) / frameRate;
    }
    AudioBufferPtr read() override {
        constexpr std::size_t most = 130;
        auto block = std::make_shared<AudioBuffer>(AudioBuffer{format(), {}});
        for (const std::size_t end = std::min(next_ + most, frames_); next_ < end; ++next_)
            block->samples.insert(block->samples.end(),
                                  {reference, stepOfFrame * static_cast<float>(next_)});
        return block->samples.empty() ? nullptr : block;
    }
    void seek(double seconds) override {
        next_ = static_cast<std::size_t>(std::llround(seconds * frameRate));
    }

  private:
    std::size_t frames_;
    std::size_t next_ = 0;
};

/// Leaves frames out, or gives them twice.
class FrameSkipper final : public AudioConverter {
  public:
    FrameSkipper(AudioFormat format, double rate) : format_(format), rate_(rate) {}
    AudioFormat outputFormat() const override { return format_; }
    AudioBuffer convert(const AudioBuffer& input) override {
        AudioBuffer output{format_, {}};
        for (std::size_t i = 0; i < input.frames(); ++i, taken_ += 1) {
            for (; given_ * rate_ <= taken_; given_ += 1)
                output.samples.insert(output.samples.end(),
                                      {input.samples[2 * i], input.samples[2 * i + 1]});
        }
        return output;
    }
    AudioBuffer flush() override { return {format_, {}}; }

  private:
    AudioFormat format_;
    double rate_;
    double taken_ = 0;
    double given_ = 0;
};

/// A player on a simulated computer, and somebody who hears what comes out.
struct PlayerFixture {
    explicit PlayerFixture(std::uint64_t seed = 0) : host(1e9, seed) {
        server.setDevices({{}, {ScriptedSoundServer::output("a")}, "", "a"});
        server.heard = [this](const AudioBuffer& sound) { hear(sound); };
    }
    ~PlayerFixture() {
        player.reset();
        host.end();
    }

    void hear(const AudioBuffer& sound) {
        const float first = sound.samples[0];
        if (first == 0) {
            ++silences;
            return;
        }
        const double frame =
            static_cast<double>(sound.samples[1] / first * reference / stepOfFrame);
        positions.push_back(frame / frameRate);
        if (onHeard)
            onHeard(positions.back());
    }
    void pass(double seconds) { host.advanceBy(seconds); }
    void play() {
        player->load("a");
        player->startPlayback();
        pass(0.5);
    }
    /// The largest step between what followed itself; 5 ms for sound without a gap at rate 1.
    double largestStep(std::size_t from = 0) const {
        double largest = 0;
        for (std::size_t i = from + 1; i < positions.size(); ++i)
            largest = std::max(largest, positions[i] - positions[i - 1]);
        return largest;
    }

    SimulatedHost host;
    ScriptedSoundServer server{host};
    std::size_t fileFrames = 120'000;
    std::unique_ptr<AudioPlayer> player = std::make_unique<AudioPlayer>(
        host, PlaybackParts{server,
                            [this](const std::filesystem::path& path) {
                                if (path == "missing")
                                    throw MediaFileError(MediaFileError::Kind::cannotOpen, "gone");
                                return std::make_unique<NumberedFile>(path == "short" ? 2'000
                                                                                      : fileFrames);
                            },
                            [](AudioFormat format, double rate) {
                                return std::make_unique<FrameSkipper>(format, rate);
                            }});
    std::vector<double> positions; ///< that were heard, each 5 ms
    std::function<void(double)> onHeard;
    int silences = 0;
};

TEST(AudioPlayerTests, ShowsWhatIsHeardWhateverIsDone) {
    for (std::uint64_t seed = 1; seed <= 25; ++seed) {
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
                settledAt = fixture.host.now() + 0.03; // the shown place jumps back a little later
            if (fixture.host.now() < settledAt || !isServerUp || !*player.isPlaying)
                return;
            const double tolerance = 0.03 * *player.rate + 0.006;
            ASSERT_NEAR(heard, *player.currentTime, tolerance) << "seed " << seed << trace.str();
            if (!*player.repeatsBoundedPlayback)
                ASSERT_NEAR(heard - before, 0.005 * *player.rate, 0.003)
                    << "a gap, seed " << seed << trace.str();
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
        ASSERT_GT(fixture.positions.size(), 200U) << "plays no more, seed " << seed << trace.str();
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
    EXPECT_NEAR(fixture.positions.back(), 21.495, 0.002) << "not a sample of the next sentence";

    player.repeatBounded(7, 20, 21.5);
    fixture.positions.clear();
    fixture.silences = 0;
    fixture.pass(6);
    EXPECT_TRUE(*player.isPlaying);
    EXPECT_EQ(fixture.silences, 0) << "a gap between two rounds";
    EXPECT_LT(fixture.largestStep(), 0.007);
    EXPECT_GE(std::ranges::count_if(fixture.positions, [](double at) { return at < 20.0025; }), 3);
    player.clearBounds();
    fixture.pass(3);
    EXPECT_GT(*player.currentTime, 21.6) << "goes on behind the sentence";
}

TEST(AudioPlayerTests, TheEndIsTheEndAndTheNextStartBeginsAgain) {
    PlayerFixture fixture;
    AudioPlayer& player = *fixture.player;
    player.load("missing");
    player.load("a");
    player.load("short"); // what was chosen last
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
    player.load("missing");
    player.startPlayback();
    fixture.pass(1);
    EXPECT_EQ(*player.problem, "gone");
    EXPECT_FALSE(*player.isPlaying);
}

TEST(AudioPlayerTests, GoesOnWhereItWasWhenTheServerComesBackAndFailsWithoutOne) {
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
    EXPECT_LT(sound.samples[1], 0.94) << "loud moments of a quiet recording are not cut";
    EXPECT_GT(sound.samples[1], 0.8);
    EXPECT_EQ(sound.samples[2], -sound.samples[1]);
}

} // namespace
} // namespace tessarune
