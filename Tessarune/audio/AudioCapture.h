#pragma once

#include "Tessarune/audio/CaptureStream.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <memory>
#include <optional>
#include <string_view>

namespace tessarune {

/// The common part of the captures of system audio and of a microphone: a capture stream on its own
/// queue, started and stopped from any thread. Derived classes define how the sound is used and how
/// a failure is reported.
///
/// Host and server must outlive it.
class AudioCapture : public std::enable_shared_from_this<AudioCapture> {
  public:
    virtual ~AudioCapture();
    AudioCapture(const AudioCapture&) = delete;
    AudioCapture& operator=(const AudioCapture&) = delete;

  protected:
    /// The step of the start that failed.
    enum class Step { connecting, opening };

    AudioCapture(Host& host, SoundServer& server, AudioSource source, std::string_view queueLabel);

    /// Begins a capture, after ending one that is still running. Resumes on the main queue. Throws
    /// what `prepare` and `fail` throw, or MediaFileError if the server plays a file; nothing is
    /// open after a failure.
    Task<void> begin();
    /// Queues the end of the capture and returns at once.
    void endLater();
    /// Ends the capture and resumes on the main queue. No sound or event follows.
    Task<void> end();

    // Hooks, all on the queue.

    /// Called when the server is connected. `device` is the source's device, `nullopt` if absent.
    /// Throws if the device is absent or unsuitable.
    virtual void prepare(const std::optional<CaptureStream::Source>& device) = 0;
    virtual void didOpen() {}
    virtual void willClose() {}
    /// Throws the failure in the form that the caller of the start expects.
    [[noreturn]] virtual void fail(Step step, const SoundServerError& error) = 0;
    virtual void handleInput(AudioBufferPtr buffer) = 0;
    virtual void handleEvent(const CaptureEvent& event) = 0;

    /// A level is computed for every eighth buffer, about twelve times a second.
    static constexpr int buffersPerLevel = 8;
    /// The root mean square over all channels and frames: 0 for an empty buffer, 1 for full scale.
    static double rms(const AudioBuffer& buffer);

    const AudioSource& source() const { return source_; }
    Host& host() const { return host_; }
    SerialQueue& queue() const { return *queue_; }
    /// A number that changes with each start and end. Call it on the queue.
    int startCount() const { return startCount_; }

  private:
    using Self = std::shared_ptr<AudioCapture>;

    static Task<void> endOnQueue(Self self);
    static Task<void> open(Self self);
    std::shared_ptr<CaptureStream> makeStream();
    void close();

    Host& host_;
    SoundServer& server_;
    const AudioSource source_;
    std::shared_ptr<SerialQueue> queue_;
    Executor executor_;
    // On the queue:
    std::shared_ptr<CaptureStream> stream_;
    int startCount_ = 0;
};

} // namespace tessarune
