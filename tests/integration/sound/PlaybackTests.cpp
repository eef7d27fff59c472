// Recordings played through real servers, and heard at their outputs.
#include "Tessarune/platform/media/AtempoConverter.h"
#include "Tessarune/playback/AudioPlayer.h"
#include "tests/integration/sound/Chirp.h"
#include "tests/integration/sound/PrivateServerTest.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace tessarune {
namespace {

using testing::Chirp;

class PlaybackTests : public PrivateServerTest {
  protected:
    /// The position heard at one moment and the position shown then, in seconds of the recording.
    struct Moment {
        double heard;
        double shown;
    };
    static constexpr double momentSeconds = 0.01; // the buffer length of a record stream
    static constexpr double nearSeconds = 0.03;   // three moments

    void SetUp() override {
        PrivateServerTest::SetUp();
        if (IsSkipped())
            return;
        player = std::make_unique<AudioPlayer>(
            host, PlaybackParts{
                      *server,
                      [used = used](const auto&) { return std::make_unique<testing::ChirpFile>(); },
                      makeAtempoConverter});
        player->load("chirp");
        player->startPlayback();
    }

    void TearDown() override {
        player.reset();
        EXPECT_EQ(used.use_count(), 1) << "playback ends with its player";
        PrivateServerTest::TearDown();
    }

    /// Listens to the output from now on.
    void listenAt(const std::string& outputID) {
        stream.reset();
        ASSERT_TRUE(eventually([&] {
            if (!stream && !isOpening)
                spawn(Executor::main(host), open(this, outputID + ".monitor"));
            return stream != nullptr;
        }));
        forget();
    }
    void forget() {
        moments.clear();
        silences = 0;
    }
    bool hear(double seconds) {
        return eventually(
            [&] { return static_cast<double>(moments.size()) * momentSeconds >= seconds; });
    }
    /// Seeks to a position and waits until the sound heard has settled there.
    void settleAt(double place) {
        constexpr double settlingSeconds = 0.3;
        player->seek(place);
        player->startPlayback();
        forget();
        EXPECT_TRUE(eventually([&] {
            return !moments.empty() &&
                   moments.back().heard > place + settlingSeconds * *player->rate &&
                   moments.back().heard < place + 2 * *player->rate;
        }));
        forget();
    }
    /// Plays and compares the position shown with the one heard. A delayed server causes gaps at
    /// random, so the check retries; a fault of ours would occur each time.
    ::testing::AssertionResult showsWhatIsHeard(double near, double largestStep) {
        constexpr int takes = 4;
        for (int take = 0; take < takes; ++take) {
            settleAt(1);
            if (hear(0.6) && silences == 0 && typicalDifference() <= near &&
                stepTooLarge() <= largestStep)
                return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure()
               << "shown and heard differ by " << typicalDifference() << " s, " << silences
               << " hundredths of a second are silent, a step is " << stepTooLarge()
               << " s too large";
    }

    /// The player and its playback hold copies, so that the use count shows when both are gone.
    const std::shared_ptr<int> used = std::make_shared<int>();
    std::unique_ptr<AudioPlayer> player;
    std::unique_ptr<RecordStream> stream;
    bool isOpening = false;
    std::vector<Moment> moments;
    int silences = 0; ///< silent moments after the first audible one

  private:
    /// The median over all moments.
    double typicalDifference() const {
        std::vector<double> differences;
        for (const Moment& moment : moments)
            differences.push_back(std::abs(moment.heard - moment.shown));
        std::ranges::sort(differences);
        return differences.empty() ? Chirp::seconds : differences[differences.size() / 2];
    }
    /// By how much the largest step between two moments exceeds the expected one.
    double stepTooLarge() const {
        double largest = 0;
        for (std::size_t i = 1; i < moments.size(); ++i)
            largest = std::max(largest, moments[i].heard - moments[i - 1].heard);
        return largest - momentSeconds * *player->rate;
    }
    void take(const AudioBuffer& sound) {
        constexpr double leastAmplitude = Chirp::amplitude / 3;
        if (testing::amplitudeOf(sound.samples) < leastAmplitude) {
            silences += moments.empty() ? 0 : 1;
            return;
        }
        const double middle =
            Chirp::placeOf(testing::frequencyOf(sound.samples, sound.format.sampleRate));
        moments.push_back({middle + sound.seconds() / 2 * *player->rate, *player->currentTime});
    }
    static Task<void> open(PlaybackTests* self, std::string sourceID) {
        self->isOpening = true;
        const Executor main = Executor::main(self->host);
        try {
            Task<void> connecting = self->server->connect(main);
            co_await connecting;
            RecordRequest request;
            request.sourceID = sourceID;
            request.channels = 1;
            RecordHandlers handlers;
            handlers.onBuffer = [self](const AudioBufferPtr& sound) { self->take(*sound); };
            auto opening = self->server->openRecordStream(request, handlers, main);
            self->stream = co_await opening;
        } catch (const SoundServerError&) { // the server has just restarted; the caller retries
        }
        self->isOpening = false;
    }
};

TEST_P(PlaybackTests, ShowsWhatIsHeardWithoutAGapAtAnySpeed) {
    listenAt(PrivateSoundServer::outputID);
    for (const double rate : {1.0, 0.5, 2.0, 3.0}) {
        SCOPED_TRACE(rate);
        player->setRate(rate);
        // The filter that changes the speed joins windows of this length.
        constexpr double windowSeconds = 0.064;
        const bool isFiltered = rate != 1;
        EXPECT_TRUE(showsWhatIsHeard(nearSeconds * std::max(1.0, rate) +
                                         (isFiltered ? windowSeconds / 2 : 0),
                                     isFiltered ? windowSeconds : 0.02));
    }
}

TEST_P(PlaybackTests, FollowsTheDefaultOutputAndSurvivesARestartOfTheServer) {
    const auto expectItAt = [this](const std::string& outputID) {
        SCOPED_TRACE(outputID);
        listenAt(outputID);
        EXPECT_TRUE(showsWhatIsHeard(nearSeconds, 0.02));
    };
    expectItAt(PrivateSoundServer::outputID);
    const std::string module = control("load-module module-null-sink sink_name=second rate=44100");
    control("set-default-sink second");
    expectItAt("second");
    control("unload-module " + module);
    expectItAt(PrivateSoundServer::outputID);

    daemon->kill();
    EXPECT_TRUE(eventually([&] { return !player->problem->empty(); }));
    const double brokenOffAt = *player->currentTime;
    EXPECT_LT(brokenOffAt, 3) << "the position shown stops with the sound";
    daemon->restart();
    listenAt(PrivateSoundServer::outputID);
    EXPECT_TRUE(hear(0.1));
    EXPECT_GT(moments.front().heard, brokenOffAt - 0.3) << "playback resumes where it broke off";
    EXPECT_EQ(*player->problem, "");
    expectItAt(PrivateSoundServer::outputID);
}

INSTANTIATE_TEST_SUITE_P(Servers, PlaybackTests, PrivateServerTest::kinds(),
                         PrivateServerTest::nameOf);

} // namespace
} // namespace tessarune
