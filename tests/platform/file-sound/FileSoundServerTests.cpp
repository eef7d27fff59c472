#include "Tessarune/audio/SystemAudioCapture.h"
#include "Tessarune/platform/file-sound/FileSoundServer.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/Await.h"

#include <gtest/gtest.h>

#include <string>

namespace tessarune {
namespace {

/// Stereo sound of the given length; one channel is loud, the other has half its level.
class Stereo final : public MediaFile {
  public:
    explicit Stereo(double seconds) : blocks_(static_cast<int>(seconds * 10)) {}
    AudioFormat format() const override { return {8000, 2}; }
    std::optional<double> duration() const override { return std::nullopt; }
    AudioBufferPtr read() override {
        if (blocks_-- <= 0)
            return nullptr;
        auto block = std::make_shared<AudioBuffer>(AudioBuffer{format(), {}});
        for (int frame = 0; frame < 800; ++frame)
            block->samples.insert(block->samples.end(), {1.0F, 0.5F});
        return block;
    }

  private:
    int blocks_; ///< not read yet, a tenth of a second each
};

class Ears final : public SystemAudioCaptureDelegate {
  public:
    void systemAudioCapture(SystemAudioCapture&, AudioBufferPtr buffer) override {
        heard += buffer->seconds();
        last = buffer;
    }
    void systemAudioCaptureDidMeasure(SystemAudioCapture&, double) override {}
    void systemAudioCaptureDidStaySilent(SystemAudioCapture&) override {}
    void systemAudioCaptureDidChange(SystemAudioCapture&, const CaptureEvent&) override {
        ++events;
    }
    double heard = 0;
    AudioBufferPtr last;
    int events = 0;
};

struct FileSoundServerTests : ::testing::Test {
    void play(FileSoundServer::Pace pace) {
        server = std::make_unique<FileSoundServer>(
            host,
            FileSoundServer::Media{[this](const std::filesystem::path&, std::stop_token) {
                                       ++opened;
                                       return std::make_unique<Stereo>(seconds);
                                   },
                                   makeSwresampleConverter},
            "talk.wav", std::move(pace), [this](std::exception_ptr) { endedAt = host.now(); });
        capture = SystemAudioCapture::create(host, *server);
        capture->delegate = ears;
        run(server->connect(Executor::main(host)));
        run(capture->start());
    }
    void run(Task<void> task) {
        std::string outcome;
        spawn(Executor::main(host), testing::noteOutcome(std::move(task), &outcome));
        host.advanceBy(0);
        EXPECT_EQ(outcome, "done");
    }

    SimulatedHost host{1000};
    double seconds = 3;
    int opened = 0;
    double endedAt = 0;
    std::shared_ptr<Ears> ears = std::make_shared<Ears>();
    std::unique_ptr<FileSoundServer> server;
    std::shared_ptr<SystemAudioCapture> capture;
};

TEST_F(FileSoundServerTests, PlaysOnceInTheRequestedChannelsWithoutGaps) {
    play(FileSoundServer::Pace::realTime());
    host.advanceBy(1);
    EXPECT_NEAR(ears->heard, 1, 0.02);
    host.sleepComputer(60); // stands for any delay
    host.runUntilIdle();
    EXPECT_NEAR(ears->heard, seconds, 1e-6);
    EXPECT_GT(endedAt, 0);
    EXPECT_EQ(opened, 1) << "a pipe cannot be opened again";
    EXPECT_EQ(ears->events, 0);
    EXPECT_EQ(ears->last->format, (AudioFormat{8000, 1}));
    EXPECT_NEAR(ears->last->samples.front(), 0.75, 1e-3);
    run(capture->start());
    EXPECT_EQ(opened, 2);
    capture->stop();
    host.runUntilIdle();
}

TEST_F(FileSoundServerTests, FollowsItsListenerAndWaitsOnlyForASlowOne) {
    seconds = 100;
    double lag = 0;
    int asked = 0;
    play(FileSoundServer::Pace::following(
        [&] {
            ++asked;
            return ears->heard - lag;
        },
        5));
    host.runUntilIdle();
    EXPECT_NEAR(ears->heard, seconds, 1e-6);
    EXPECT_EQ(endedAt, 1000) << "a quick listener is never waited for";
    EXPECT_LT(asked, 50) << "the listener is not asked for each buffer";

    lag = 6;
    ears->heard = 0;
    run(capture->start());
    host.advanceBy(10);
    EXPECT_LT(ears->heard, 6) << "the file plays at most five seconds ahead of its listener";
    capture->stop();
    host.runUntilIdle();
}

} // namespace
} // namespace tessarune
