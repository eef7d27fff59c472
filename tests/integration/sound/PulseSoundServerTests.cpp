#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/audio/MicrophoneCapture.h"
#include "Tessarune/audio/SystemAudioCapture.h"
#include "tests/integration/sound/PrivateServerTest.h"
#include "tests/integration/sound/Tones.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace tessarune {
namespace {

using testing::strength;
using testing::tone;
using testing::toneOfSecond;

/// Collects what a capture delivers, on any thread.
class Recording final : public SystemAudioCaptureDelegate {
  public:
    void systemAudioCapture(SystemAudioCapture&, AudioBufferPtr buffer) override { add(buffer); }
    void systemAudioCaptureDidMeasure(SystemAudioCapture&, double level) override {
        std::lock_guard lock(mutex_);
        loudest_ = std::max(loudest_, level);
    }
    void systemAudioCaptureDidStaySilent(SystemAudioCapture&) override {}
    void systemAudioCaptureDidChange(SystemAudioCapture&, const CaptureEvent& event) override {
        add(event);
    }

    void add(const AudioBufferPtr& buffer) {
        std::lock_guard lock(mutex_);
        const auto channels = static_cast<std::size_t>(buffer->format.channels);
        for (std::size_t i = 0; i < buffer->samples.size(); i += channels)
            samples_.push_back(buffer->samples[i]);
        format_ = buffer->format;
        longest_ = std::max(longest_, buffer->seconds());
    }
    void add(const CaptureEvent& event) {
        std::lock_guard lock(mutex_);
        events_.push_back(event);
    }
    void clear() {
        std::lock_guard lock(mutex_);
        samples_.clear();
        events_.clear();
    }
    std::vector<float> samples() const { return copy(samples_); }
    std::vector<CaptureEvent> events() const { return copy(events_); }
    AudioFormat format() const { return copy(format_); }
    double longest() const { return copy(longest_); }
    double loudest() const { return copy(loudest_); }

    double seconds() const {
        std::lock_guard lock(mutex_);
        return format_.sampleRate > 0 ? static_cast<double>(samples_.size()) / format_.sampleRate
                                      : 0;
    }
    bool has(CaptureEvent::Kind kind) const {
        const auto all = events();
        return std::any_of(all.begin(), all.end(),
                           [&](const auto& event) { return event.kind == kind; });
    }
    /// Whether this tone fills the last half second.
    bool hears(double frequency) const {
        const auto sound = samples();
        const double rate = format().sampleRate;
        const auto half = static_cast<std::size_t>(rate / 2);
        return half > 0 && sound.size() > half &&
               strength(sound, sound.size() - half, half, frequency, rate) > 0.2;
    }

  private:
    template <typename T>
    T copy(const T& value) const {
        std::lock_guard lock(mutex_);
        return value;
    }
    mutable std::mutex mutex_;
    std::vector<float> samples_;
    std::vector<CaptureEvent> events_;
    AudioFormat format_;
    double longest_ = 0;
    double loudest_ = 0;
};

struct Outcome {
    bool isDone = false;
    std::string failure;
    int status = 0;
};

Task<void> finish(Task<void> task, std::shared_ptr<Outcome> outcome) {
    try {
        co_await task;
    } catch (const SoundServerError& error) {
        outcome->failure = error.what();
        outcome->status = error.status();
    } catch (const std::exception& error) {
        outcome->failure = error.what();
    }
    outcome->isDone = true;
}

Task<void> play(SoundServer& server, Executor executor, std::vector<AudioBufferPtr> buffers) {
    PlaybackRequest request{"", buffers.front()->format, "test"};
    auto opening = server.openPlaybackStream(request, executor);
    const std::unique_ptr<PlaybackStream> stream = co_await opening;
    for (const auto& buffer : buffers) {
        auto writing = stream->write(buffer);
        co_await writing;
    }
    auto draining = stream->drain();
    co_await draining;
}

class PulseSoundServerTests : public PrivateServerTest {
  protected:
    void SetUp() override {
        PrivateServerTest::SetUp();
        if (IsSkipped())
            return;
        capture = SystemAudioCapture::create(host, *server);
        capture->delegate = recording;
    }

    std::shared_ptr<Outcome> begin(Task<void> task) {
        auto outcome = std::make_shared<Outcome>();
        spawn(Executor::main(host), finish(std::move(task), outcome));
        return outcome;
    }
    Outcome complete(Task<void> task) {
        const auto outcome = begin(std::move(task));
        if (!eventually([&] { return outcome->isDone; }))
            return {false, "did not end", 0};
        return *outcome;
    }
    void startCapture() {
        const Outcome outcome = complete(capture->start());
        ASSERT_TRUE(outcome.isDone) << outcome.failure;
        ASSERT_EQ(outcome.failure, "");
        ASSERT_TRUE(eventually([&] { return recording->seconds() > 0.05; }));
    }
    /// Plays a tone, repeatedly if necessary, until the capture hears it. The tone's channels are
    /// in opposite phase, so the server's own mix would cancel them.
    bool isHeard(double frequency) {
        auto sound = std::make_shared<AudioBuffer>(*tone(frequency, 0.8, {48000, 2}));
        for (std::size_t i = 1; i < sound->samples.size(); i += 2)
            sound->samples[i] *= -1;
        bool heard = false;
        const double deadline = host.now() + patience;
        while (!heard && host.now() < deadline) {
            const auto playing = begin(play(*server, Executor::main(host), {sound}));
            eventually([&] {
                heard = heard || recording->hears(frequency);
                return playing->isDone;
            });
            EXPECT_EQ(playing->failure, "");
        }
        return heard;
    }

    std::shared_ptr<SystemAudioCapture> capture;
    std::shared_ptr<Recording> recording = std::make_shared<Recording>();
};

TEST_P(PulseSoundServerTests, EverySecondThatIsPlayedArrivesInOrder) {
    startCapture();
    constexpr int seconds = 4;
    std::vector<AudioBufferPtr> buffers;
    for (int second = 0; second < seconds; ++second)
        buffers.push_back(tone(toneOfSecond(second), 1, {16000, 1}));
    // A delayed server loses sound at random, before any client can hear it; a loss on this side
    // would occur in each take.
    constexpr int takes = 3;
    std::ptrdiff_t least = 0;
    for (int take = 0; take < takes && least < 95; ++take) {
        recording->clear();
        const Outcome played = complete(play(*server, Executor::main(host), buffers));
        ASSERT_TRUE(played.isDone && played.failure.empty()) << played.failure;
        eventually(
            [&] {
                const std::vector<float> samples = recording->samples();
                return samples.size() > testing::onset(samples) + 48000 * seconds;
            },
            seconds);
        const std::vector<int> heard = testing::secondsHeard(recording->samples(), 48000, seconds);
        EXPECT_TRUE(std::is_sorted(heard.begin(), heard.end()));
        least = std::count(heard.begin(), heard.end(), 0);
        for (int second = 1; second < seconds; ++second)
            least = std::min(least, std::count(heard.begin(), heard.end(), second));
    }
    EXPECT_GE(least, 95) << "of the worst second's 100 windows of 10 ms";
    EXPECT_EQ(recording->format(), (AudioFormat{48000, 1}));
    EXPECT_NEAR(recording->longest(), 0.01, 1e-9);
    EXPECT_GT(recording->loudest(), 0.8);
    EXPECT_TRUE(recording->events().empty());
}

TEST_P(PulseSoundServerTests, FollowsTheDefaultOutputAndSurvivesItsUnplugging) {
    startCapture();
    const std::string module = control("load-module module-null-sink sink_name=second rate=44100 "
                                       "sink_properties=device.description=Second");
    control("set-default-sink second");
    EXPECT_TRUE(eventually([&] { return recording->has(CaptureEvent::Kind::deviceChanged); }));
    EXPECT_TRUE(isHeard(700));
    EXPECT_FALSE(recording->has(CaptureEvent::Kind::interrupted));

    recording->clear();
    control("unload-module " + module);
    EXPECT_TRUE(eventually([&] { return recording->has(CaptureEvent::Kind::resumed); }));
    EXPECT_TRUE(isHeard(900));
    for (const auto& event : recording->events()) {
        EXPECT_LT(event.gapSeconds, patience / 4);
    }
}

TEST_P(PulseSoundServerTests, ReconnectsAfterTheServerWasKilledAndReportsTheGap) {
    startCapture();
    const double killedAt = host.now();
    daemon->kill();
    EXPECT_TRUE(eventually([&] { return recording->has(CaptureEvent::Kind::interrupted); }));
    EXPECT_TRUE(eventually([&] { return server->state() == SoundServerState::disconnected; }));
    EXPECT_TRUE(server->devices().outputs.empty());
    recording->clear();
    daemon->restart();
    EXPECT_TRUE(eventually([&] { return recording->has(CaptureEvent::Kind::resumed); }));
    ASSERT_FALSE(recording->events().empty());
    const double gap = recording->events().back().gapSeconds;
    EXPECT_GT(gap, 0.0);
    EXPECT_LE(gap, host.now() - killedAt + 0.5);
    EXPECT_TRUE(isHeard(700));
}

TEST_P(PulseSoundServerTests, ListsMicrophonesAndLetsOneBeChosen) {
    ASSERT_EQ(complete(server->connect(Executor::main(host))).failure, "");
    EXPECT_TRUE(AudioInputDevices::inputDevices(*server).empty()) << "a monitor is no microphone";
    // A virtual microphone hears what is played.
    const std::string output = PrivateSoundServer::outputID;
    const std::string module =
        control("load-module module-remap-source master=" + output +
                ".monitor source_name=desk source_properties=device.description=Desk");
    control("set-default-source desk");
    const std::vector<AudioInputDevices::Device> expected = {{"desk", "Desk", true}};
    EXPECT_TRUE(eventually([&] { return AudioInputDevices::inputDevices(*server) == expected; }));

    const auto microphone = MicrophoneCapture::create(host, *server, nullptr, "desk");
    microphone->onBuffer = [this](AudioBufferPtr buffer) { recording->add(buffer); };
    microphone->onEvent = [this](const CaptureEvent& event) { recording->add(event); };
    ASSERT_EQ(complete(microphone->start(std::nullopt)).failure, "");
    EXPECT_TRUE(isHeard(700));
    EXPECT_EQ(recording->format().channels, 2);
    control("unload-module " + module);
    EXPECT_TRUE(eventually([&] { return recording->has(CaptureEvent::Kind::interrupted); }));
    EXPECT_TRUE(eventually([&] { return AudioInputDevices::inputDevices(*server).empty(); }));
    EXPECT_TRUE(complete(microphone->stop()).isDone);
}

TEST_P(PulseSoundServerTests, StartsAndStopsInAnyOrderWithoutAStreamLeftBehind) {
    for (int round = 0; round < 6; ++round) {
        const auto outcome = begin(capture->start());
        if (round % 2 == 0)
            eventually([&] { return outcome->isDone; });
        capture->stop();
        EXPECT_TRUE(eventually([&] { return outcome->isDone; }));
    }
    startCapture();
    capture->stop();
    capture->stop();
    EXPECT_TRUE(eventually([&] { return control("list short source-outputs").empty(); }))
        << "no stream stays open that was abandoned while the server opened it";
    capture.reset();
    server.reset();
}

} // namespace
} // namespace tessarune

/// The server's client library is not built with the thread sanitizer, which therefore does not see
/// how the library synchronizes its packets.
extern "C" const char* __tsan_default_suppressions() {
    return "race:libpulse\n";
}

namespace tessarune {
namespace {

INSTANTIATE_TEST_SUITE_P(Servers, PulseSoundServerTests, PrivateServerTest::kinds(),
                         PrivateServerTest::nameOf);

TEST(PulseConnectionTests, EachAttemptToConnectReportsAMissingServer) {
    LoopHost host;
    PulseSoundServer server("unix:/nonexistent/tessarune");
    for (int round = 0; round < 2; ++round) {
        auto outcome = std::make_shared<Outcome>();
        spawn(Executor::main(host), finish(server.connect(Executor::main(host)), outcome));
        std::function<void()> look = [&] {
            outcome->isDone ? host.quit() : void(host.after(0.01, look));
        };
        look();
        host.run();
        EXPECT_EQ(outcome->status, SoundServerError::connectionRefused) << outcome->failure;
        EXPECT_EQ(server.state(), SoundServerState::disconnected);
    }
}

} // namespace
} // namespace tessarune
