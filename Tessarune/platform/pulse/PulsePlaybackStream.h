#pragma once

#include "Tessarune/platform/pulse/PulseConnection.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace tessarune {

/// A playback stream. The server buffers about 0.2 s; a write ends when its last sample has been
/// passed to the server.
///
/// The heard position comes from timing answers of the server; between two answers, it advances
/// with the clock. An answer is requested whenever a caller asks for the position. The library's
/// own interpolation is not used, because it needs up to a second to notice a stall, such as after
/// each flush.
class PulsePlaybackStream final : public PlaybackStream {
  public:
    static constexpr double serverSeconds = 0.2;
    static constexpr double openTimeoutSeconds = 5.0;

    PulsePlaybackStream(std::shared_ptr<PulseConnection> connection, Executor executor);
    ~PulsePlaybackStream() override;
    PulsePlaybackStream(const PulsePlaybackStream&) = delete;
    PulsePlaybackStream& operator=(const PulsePlaybackStream&) = delete;

    /// Requests the stream from the server; call it once. `opened` receives the outcome.
    void open(const PlaybackRequest& request, OneShot<PulseOutcome> opened);

    Task<void> write(AudioBufferPtr buffer) override;
    Task<void> drain() override;
    void setPaused(bool paused) override;
    void flush() override;
    double heardSeconds() const override;

  private:
    static Task<void> writeAll(PulsePlaybackStream* self, AudioBufferPtr buffer);
    static Task<void> drainAll(PulsePlaybackStream* self);

    PulseOutcome create(const PlaybackRequest& request);
    void handleState();
    void requestOrigin();
    void measure();
    void requestTiming() const;
    double streamSeconds() const;
    void feed();
    void dropOperations();
    void answer(const PulseOutcome& outcome);
    void end(const PulseOutcome& reason);

    std::shared_ptr<PulseConnection> connection_;
    Executor executor_;
    AudioFormat format_;
    pa_sample_spec spec_{};

    // Under the loop's lock; times are in seconds:
    PulseStreamPtr stream_;
    PulseTimer timer_;
    std::optional<OneShot<PulseOutcome>> waiter_; // for the running `open`, `write` or `drain`
    std::optional<PulseOutcome> endReason_;
    AudioBufferPtr feeding_;
    std::size_t fed_ = 0;    // samples of `feeding_` that the server has
    std::uint64_t sent_ = 0; // samples since the stream was opened or flushed
    PulseOperationPtr draining_;
    PulseOperationPtr flushing_;          // nothing is written while the server flushes
    mutable PulseOperationPtr measuring_; // a running timing request
    double origin_ = 0;                   // where `heardSeconds` is 0, in the stream's time
    double measured_ = 0;                 // the stream's time in the last answer
    double ahead_ = 0;                    // the stream's time minus the clock's, while it plays
    bool isSounding_ = false;             // as of the last answer; unset by `setPaused`
    mutable double heard_ = 0;            // the last result of `heardSeconds`
};

} // namespace tessarune
