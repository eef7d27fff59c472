#pragma once

#include "Tessarune/audio/StereoMix.h"
#include "Tessarune/platform/pulse/PulseConnection.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tessarune {

/// A record stream on one source. The loop's thread fills buffers of 10 ms and passes them to the
/// stream's executor; the listener sees an even flow, independent of the server's block sizes.
class PulseRecordStream final : public RecordStream {
  public:
    static constexpr double bufferSeconds = 0.01;

    PulseRecordStream(std::shared_ptr<PulseConnection> connection, RecordHandlers handlers,
                      Executor executor);
    ~PulseRecordStream() override;
    PulseRecordStream(const PulseRecordStream&) = delete;
    PulseRecordStream& operator=(const PulseRecordStream&) = delete;

    /// Requests the stream from the server; call it once. `opened` receives the outcome.
    void open(const RecordRequest& request, OneShot<PulseOutcome> opened);

    AudioFormat format() const override { return format_; }

  private:
    /// Shared with calls that are queued on the executor and may run after the stream is destroyed.
    struct Listener {
        Listener(RecordHandlers itsHandlers, Executor itsExecutor)
            : handlers(std::move(itsHandlers)), executor(std::move(itsExecutor)) {}
        RecordHandlers handlers;
        Executor executor;
        std::atomic<bool> isClosed = false;
    };

    PulseOutcome create(const RecordRequest& request);
    std::optional<AudioFormat> sourceFormat(const std::string& sourceID) const;
    void handleState();
    void handleData();
    void append(const float* samples, std::size_t count);
    void deliver();
    void end(const PulseOutcome& reason);

    std::shared_ptr<PulseConnection> connection_;
    std::shared_ptr<Listener> listener_;
    AudioFormat format_;
    AudioFormat serverFormat_;

    // Under the loop's lock:
    PulseStreamPtr stream_;
    PulseTimer timer_;
    std::optional<OneShot<PulseOutcome>> opened_; // until the outcome is known
    std::vector<float> filling_;                  ///< in `serverFormat_`
    std::optional<StereoMix> mix_;
    std::size_t samplesPerBuffer_ = 0;
};

} // namespace tessarune
