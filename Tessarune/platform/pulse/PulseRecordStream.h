#pragma once

#include "Tessarune/platform/pulse/PulseConnection.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tessarune {

/// A record stream on one source. The loop's thread fills buffers of 10 ms and passes them to the
/// stream's executor; the listener sees an even flow, whatever the size of the server's pieces.
class PulseRecordStream final : public RecordStream {
  public:
    static constexpr double bufferSeconds = 0.01;

    PulseRecordStream(std::shared_ptr<PulseConnection> connection, RecordHandlers handlers,
                      Executor executor);
    ~PulseRecordStream() override;
    PulseRecordStream(const PulseRecordStream&) = delete;
    PulseRecordStream& operator=(const PulseRecordStream&) = delete;

    /// Requests the stream from the server; call it once. `opened` tells the outcome.
    void open(const RecordRequest& request, OneShot<PulseOutcome> opened);

    AudioFormat format() const override { return format_; }

  private:
    /// Checked by handlers on their way to the executor, since the stream itself may be gone.
    struct Line {
        Line(RecordHandlers told, Executor where)
            : handlers(std::move(told)), executor(std::move(where)) {}
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
    std::shared_ptr<Line> line_;
    AudioFormat format_;

    // Under the loop's lock:
    PulseStreamPtr stream_;
    PulseTimer timer_;
    std::optional<OneShot<PulseOutcome>> opened_; // until it is answered
    std::vector<float> filling_;
    std::size_t samplesPerBuffer_ = 0;
};

} // namespace tessarune
