#pragma once

#include "Tessarune/playback/AudioPlayer.h"
#include "tests/simulation/ScriptedSoundServer.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessarune::testing {

inline constexpr double frameRate = 1000;
inline constexpr float reference = 0.05F;
inline constexpr float stepOfFrame = 1e-6F;

/// Sound that encodes its position: the second channel divided by the first gives the frame.
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

/// Changes the speed by dropping or repeating frames.
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

/// A player on a simulated computer, and a listener at its output.
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
    /// The largest step between successive positions; 5 ms for gapless sound at rate 1.
    double largestStep() const {
        double largest = 0;
        for (std::size_t i = 1; i < positions.size(); ++i)
            largest = std::max(largest, positions[i] - positions[i - 1]);
        return largest;
    }

    SimulatedHost host;
    ScriptedSoundServer server{host};
    std::filesystem::path missing = "missing";
    bool changesTempo = true;
    std::unique_ptr<AudioPlayer> player = std::make_unique<AudioPlayer>(
        host,
        PlaybackParts{server,
                      [this](const std::filesystem::path& path) {
                          if (path == missing)
                              throw MediaFileError(MediaFileError::Kind::cannotOpen, "gone");
                          return std::make_unique<NumberedFile>(path == "short" ? 2'000 : 120'000);
                      },
                      [this](AudioFormat format, double rate) {
                          if (!changesTempo)
                              throw AudioConversionError("no filter");
                          return std::make_unique<FrameSkipper>(format, rate);
                      }});
    std::vector<double> positions; ///< positions heard, one per 5 ms
    std::function<void(double)> onHeard;
    int silences = 0;
};

} // namespace tessarune::testing
