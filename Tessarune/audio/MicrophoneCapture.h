#pragma once

#include "Tessarune/audio/AudioCapture.h"
#include "Tessarune/audio/AudioConverter.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Captures the microphone with the given id or, without an id, always the current default one.
///
/// `start` and `stop` may be called from any thread; the callbacks run on the capture's own queue
/// and are set before `start`. The host and the server must outlive it.
class MicrophoneCapture final : public AudioCapture {
  public:
    static constexpr const char* errorDomain = "Tessarune.MicrophoneCapture";
    static constexpr int deviceNotSelectable = 1;
    static constexpr int deviceNotAvailable = 2;

    static std::shared_ptr<MicrophoneCapture>
    create(Host& host, SoundServer& server, MakeAudioConverter makeConverter,
           std::optional<std::string> deviceID = std::nullopt);

    std::function<void(AudioBufferPtr)> onBuffer;
    /// The linear level of every eighth buffer, 0 to 1.
    std::function<void(double)> onLevel;
    std::function<void(const CaptureEvent&)> onEvent;

    /// With a sample rate, buffers have one channel at that rate; otherwise, they have the device's
    /// format. Resumes on the main queue. Throws LocalizedError of `errorDomain`, or
    /// SoundServerError if the server refuses the stream.
    Task<void> start(std::optional<double> sampleRate);
    /// Resumes on the main queue; no callback runs after that.
    Task<void> stop() { return end(); }

  private:
    MicrophoneCapture(Host& host, SoundServer& server, MakeAudioConverter makeConverter,
                      std::optional<std::string> deviceID);

    void prepare(const std::optional<CaptureStream::Source>& device) override;
    void willClose() override { converter_.reset(); }
    [[noreturn]] void fail(Step step, const SoundServerError& error) override;
    void handleInput(AudioBufferPtr buffer) override;
    void handleEvent(const CaptureEvent& event) override;
    AudioBufferPtr converted(AudioBufferPtr buffer);

    const MakeAudioConverter makeConverter_;
    // On the queue:
    std::optional<AudioFormat> targetFormat_;
    std::unique_ptr<AudioConverter> converter_;
    AudioFormat converterInput_;
    int levelTick_ = 0;
};

} // namespace tessarune
