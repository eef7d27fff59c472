#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/CaptureStream.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Captures a microphone: the one with the given id, or the default one, following the default.
///
/// `start` and `stop` may be called from any thread; the callbacks run on the capture's own queue
/// and are set before `start`. The host and the server must outlive it.
class MicrophoneCapture : public std::enable_shared_from_this<MicrophoneCapture> {
  public:
    static constexpr const char* errorDomain = "Tessarune.MicrophoneCapture";
    static constexpr int deviceNotSelectable = 1;
    static constexpr int deviceNotAvailable = 2;

    static std::shared_ptr<MicrophoneCapture>
    create(Host& host, SoundServer& server, MakeAudioConverter makeConverter,
           std::optional<std::string> deviceID = std::nullopt);
    ~MicrophoneCapture();
    MicrophoneCapture(const MicrophoneCapture&) = delete;
    MicrophoneCapture& operator=(const MicrophoneCapture&) = delete;

    std::function<void(AudioBufferPtr)> onBuffer;
    /// The linear level of each eighth buffer, 0 to 1.
    std::function<void(double)> onLevel;
    std::function<void(const CaptureEvent&)> onEvent;

    /// With a sample rate the buffers are one channel at that rate, else as the device gives them.
    /// Goes on on the main queue. Throws DomainError of `errorDomain`, or SoundServerError where
    /// the server refuses the stream.
    Task<void> start(std::optional<double> sampleRate);
    /// Goes on on the main queue; no callback runs after that.
    Task<void> stop();

  private:
    MicrophoneCapture(Host& host, SoundServer& server, MakeAudioConverter makeConverter,
                      std::optional<std::string> deviceID);

    static Task<void> startOnQueue(std::shared_ptr<MicrophoneCapture> self,
                                   std::optional<double> sampleRate);
    static Task<void> stopOnQueue(std::shared_ptr<MicrophoneCapture> self);
    static Task<void> open(std::shared_ptr<MicrophoneCapture> self,
                           std::optional<double> sampleRate);
    void stopSync();
    void process(AudioBufferPtr buffer);
    AudioBufferPtr converted(AudioBufferPtr buffer);

    Host& host_;
    SoundServer& server_;
    MakeAudioConverter makeConverter_;
    AudioSource source_;
    std::shared_ptr<SerialQueue> queue_;
    Executor executor_;
    // On the queue:
    std::shared_ptr<CaptureStream> stream_;
    std::optional<AudioFormat> targetFormat_;
    std::unique_ptr<AudioConverter> converter_;
    AudioFormat converterInput_;
    int levelTick_ = 0;
    int startCount_ = 0;
};

} // namespace tessarune
