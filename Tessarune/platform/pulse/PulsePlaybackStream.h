#pragma once

#include "Tessarune/platform/pulse/PulseConnection.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace tessarune {

/// A playback stream. The server buffers about 0.2 s; a write resumes when the loop's thread has
/// passed its last sample to the server.
///
/// The heard position is the server's answer, requested whenever a caller wants to know it, and
/// advances with the clock in between. The library's own interpolation needs up to a second to
/// notice that a stream has stalled, as after each flush.
class PulsePlaybackStream final : public PlaybackStream {
  public:
    static constexpr double serverSeconds = 0.2;
    static constexpr double openTimeoutSeconds = 5.0;

    PulsePlaybackStream(std::shared_ptr<PulseConnection> connection, Executor executor);
    ~PulsePlaybackStream() override;
    PulsePlaybackStream(const PulsePlaybackStream&) = delete;
    PulsePlaybackStream& operator=(const PulsePlaybackStream&) = delete;

    /// Requests the stream from the server; call it once. `opened` tells the outcome.
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
    void askWhereItIs();
    void measure();
    void keepMeasuring() const;
    double place() const;
    void feed();
    void dropOperations();
    void answer(const PulseOutcome& outcome);
    void end(const PulseOutcome& reason);

    std::shared_ptr<PulseConnection> connection_;
    Executor executor_;
    AudioFormat format_;
    pa_sample_spec spec_{};

    // Under the loop's lock:
    PulseStreamPtr stream_;
    PulseTimer timer_;
    std::optional<OneShot<PulseOutcome>> waiter_; // of the opening, the write or the drain
    std::optional<PulseOutcome> ended_;
    AudioBufferPtr feeding_;
    std::size_t fed_ = 0;    // samples of `feeding_` that the server has
    std::uint64_t sent_ = 0; // samples since the stream was opened or flushed
    PulseOperationPtr draining_;
    PulseOperationPtr flushing_;          // nothing is fed while the server flushes
    mutable PulseOperationPtr measuring_; // the server is asked
    double origin_ = 0;                   // of `heardSeconds`, in the stream's own time
    double measured_ = 0;                 // the stream's time, as last answered
    double ahead_ = 0;                    // of the clock, while the stream plays
    bool isSounding_ = false;             // the server is playing some of it
    mutable double heard_ = 0;            // as last asked
};

} // namespace tessarune
