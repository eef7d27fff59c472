#pragma once

#include "Tessarune/audio/AudioCapture.h"
#include "Tessarune/audio/SystemAudioCaptureError.h"

#include <memory>

namespace tessarune {

class SystemAudioCapture;

/// Receives the sound and events of a `SystemAudioCapture`. The comment of each operation names the
/// queue on which it is called. Operations on the capture queue must return soon.
class SystemAudioCaptureDelegate {
  public:
    virtual ~SystemAudioCaptureDelegate() = default;

    /// One buffer, in order. Capture queue.
    virtual void systemAudioCapture(SystemAudioCapture& capture, AudioBufferPtr didOutput) = 0;
    /// The level of the first buffer and of every eighth one: 0 to 1. Capture queue.
    virtual void systemAudioCaptureDidMeasure(SystemAudioCapture& capture, double level) = 0;
    /// Nothing has arrived since the start. Main queue, at most once per start.
    virtual void systemAudioCaptureDidStaySilent(SystemAudioCapture& capture) = 0;
    /// The sound was interrupted, has resumed, or comes from another output. Capture queue.
    virtual void systemAudioCaptureDidChange(SystemAudioCapture&, const CaptureEvent&) {}
};

/// Captures the computer's sound: the monitor of the default output, as one channel. Follows the
/// default output as it changes.
///
/// `start` and `stop` may be called from any thread; the work is done on the capture queue. The
/// host and the server must outlive it.
class SystemAudioCapture final : public AudioCapture {
  public:
    static constexpr double silentStartTimeoutSeconds = 10.0;

    static std::shared_ptr<SystemAudioCapture> create(Host& host, SoundServer& server);
    ~SystemAudioCapture() override;

    /// Set it before `start`, and do not change it while a capture runs.
    std::weak_ptr<SystemAudioCaptureDelegate> delegate;

    /// Begins a capture, after ending one that is still running. Resumes on the main queue. On
    /// failure, throws SystemAudioCaptureError, or MediaFileError if the server plays a file, and
    /// leaves nothing open.
    Task<void> start() { return begin(); }
    /// Ends the capture later, on the capture queue; until then, sound may still arrive.
    void stop() { endLater(); }
    /// Ends the capture and resumes on the main queue. No sound or event follows.
    Task<void> finish() { return end(); }

    /// The loudness of a buffer on a scale of 60 decibels: 0 at -60 dB and below, 1 at full scale.
    static double audioLevel(const AudioBuffer& buffer);

  private:
    SystemAudioCapture(Host& host, SoundServer& server);

    void prepare(const std::optional<CaptureStream::Source>& device) override;
    void didOpen() override;
    void willClose() override { silentStartCheck_.cancel(); }
    [[noreturn]] void fail(Step step, const SoundServerError& error) override;
    void handleInput(AudioBufferPtr buffer) override;
    void handleEvent(const CaptureEvent& event) override;
    void checkForSilentStart(int start);

    // On the capture queue:
    int bufferCount_ = 0; // since the start
    DelayedCall silentStartCheck_;
};

} // namespace tessarune
