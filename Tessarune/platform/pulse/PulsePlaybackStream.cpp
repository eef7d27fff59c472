#include "Tessarune/platform/pulse/PulsePlaybackStream.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

namespace {

/// The maximum deviation of a timing answer from the average of the answers before it. The answers
/// of a server that counts only whole periods of its device deviate less; a larger deviation means
/// that the stream has stalled or jumped.
constexpr double maximumJitterSeconds = 0.04;
/// The weight of a new answer in the running average.
constexpr double answerWeight = 0.1;

double clockSeconds() {
    return static_cast<double>(pa_rtclock_now()) / 1e6;
}

} // namespace

PulsePlaybackStream::PulsePlaybackStream(std::shared_ptr<PulseConnection> connection,
                                         Executor executor)
    : connection_(std::move(connection)),
      executor_(std::move(executor)),
      timer_(connection_->loop()) {}

PulsePlaybackStream::~PulsePlaybackStream() {
    PulseLock lock(connection_->loop());
    timer_.cancel();
    dropOperations();
    closeStream(std::move(stream_));
}

void PulsePlaybackStream::dropOperations() {
    draining_.reset();
    flushing_.reset();
    measuring_.reset();
}

void PulsePlaybackStream::open(const PlaybackRequest& request, OneShot<PulseOutcome> opened) {
    PulseLock lock(connection_->loop());
    waiter_ = std::move(opened);
    timer_.set(openTimeoutSeconds, [this] { end(pulseOutcome(PA_ERR_TIMEOUT)); });
    if (const PulseOutcome outcome = create(request); outcome.status != 0)
        end(outcome);
}

PulseOutcome PulsePlaybackStream::create(const PlaybackRequest& request) {
    pa_context* context = connection_->context();
    if (!context)
        return pulseOutcome(PA_ERR_CONNECTIONTERMINATED);
    format_ = request.format;
    spec_ = {PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(format_.sampleRate),
             static_cast<std::uint8_t>(format_.channels)};
    pa_channel_map map;
    if (!pa_sample_spec_valid(&spec_) ||
        !pa_channel_map_init_extend(&map, spec_.channels, PA_CHANNEL_MAP_WAVEEX))
        return pulseOutcome(PA_ERR_INVALID);
    stream_.reset(pa_stream_new(context, request.name.c_str(), &spec_, &map));
    if (!stream_)
        return pulseOutcome(pa_context_errno(context));

    pa_stream_set_state_callback(
        stream_.get(),
        [](pa_stream*, void* self) { static_cast<PulsePlaybackStream*>(self)->handleState(); },
        this);
    pa_stream_set_write_callback(
        stream_.get(),
        [](pa_stream*, std::size_t, void* self) {
            static_cast<PulsePlaybackStream*>(self)->feed();
        },
        this);
    pa_stream_set_latency_update_callback(
        stream_.get(),
        [](pa_stream*, void* self) { static_cast<PulsePlaybackStream*>(self)->measure(); }, this);
    pa_buffer_attr attributes{};
    attributes.maxlength = attributes.prebuf = attributes.minreq = attributes.fragsize =
        static_cast<std::uint32_t>(-1);
    attributes.tlength = static_cast<std::uint32_t>(
        pa_usec_to_bytes(static_cast<pa_usec_t>(serverSeconds * 1e6), &spec_));
    constexpr auto flags =
        static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE);
    const char* output = request.outputID.empty() ? nullptr : request.outputID.c_str();
    if (pa_stream_connect_playback(stream_.get(), output, &attributes, flags, nullptr, nullptr) < 0)
        return pulseOutcome(pa_context_errno(context));
    return {};
}

void PulsePlaybackStream::handleState() {
    const std::optional<PulseOutcome> outcome = outcomeOf(stream_.get());
    if (!outcome)
        return;
    if (outcome->status != 0) {
        end(*outcome);
        return;
    }
    timer_.cancel();
    answer({});
}

void PulsePlaybackStream::feed() {
    if (!feeding_ || flushing_)
        return;
    const std::size_t frameSamples = static_cast<std::size_t>(format_.channels);
    const std::size_t room = pa_stream_writable_size(stream_.get()) / sizeof(float);
    if (room == static_cast<std::size_t>(-1) / sizeof(float))
        return; // the stream has failed, which `handleState` handles
    std::size_t count = std::min(room, feeding_->samples.size() - fed_);
    count -= count % frameSamples;
    if (count > 0 && pa_stream_write(stream_.get(), feeding_->samples.data() + fed_,
                                     count * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE) == 0) {
        fed_ += count;
        sent_ += count;
    }
    if (fed_ == feeding_->samples.size()) {
        feeding_.reset();
        answer({});
    }
}

void PulsePlaybackStream::answer(const PulseOutcome& outcome) {
    if (auto waiter = std::exchange(waiter_, std::nullopt))
        waiter->resume(outcome);
}

void PulsePlaybackStream::end(const PulseOutcome& reason) {
    timer_.cancel();
    endReason_ = reason;
    feeding_.reset();
    dropOperations();
    closeStream(std::move(stream_));
    answer(reason);
}

Task<void> PulsePlaybackStream::write(AudioBufferPtr buffer) {
    return writeAll(this, std::move(buffer));
}

Task<void> PulsePlaybackStream::drain() {
    return drainAll(this);
}

Task<void> PulsePlaybackStream::writeAll(PulsePlaybackStream* self, AudioBufferPtr buffer) {
    if (buffer->format != self->format_)
        pulseOutcome(PA_ERR_INVALID).throwIfFailed();
    OneShot<PulseOutcome> done(self->executor_);
    {
        PulseLock lock(self->connection_->loop());
        if (self->endReason_)
            self->endReason_->throwIfFailed();
        self->waiter_ = done;
        self->feeding_ = std::move(buffer);
        self->fed_ = 0;
        self->feed();
    }
    const PulseOutcome outcome = co_await done;
    outcome.throwIfFailed();
}

Task<void> PulsePlaybackStream::drainAll(PulsePlaybackStream* self) {
    OneShot<PulseOutcome> done(self->executor_);
    {
        PulseLock lock(self->connection_->loop());
        if (self->endReason_)
            self->endReason_->throwIfFailed();
        self->waiter_ = done;
        self->draining_.reset(pa_stream_drain(
            self->stream_.get(),
            [](pa_stream* stream, int success, void* owner) {
                const int status = pa_context_errno(pa_stream_get_context(stream));
                static_cast<PulsePlaybackStream*>(owner)->answer(
                    pulseOutcome(success != 0 ? 0 : status));
            },
            self));
        if (!self->draining_)
            self->answer(pulseOutcome(PA_ERR_BADSTATE));
    }
    const PulseOutcome outcome = co_await done;
    outcome.throwIfFailed();
}

void PulsePlaybackStream::setPaused(bool paused) {
    PulseLock lock(connection_->loop());
    if (endReason_)
        return;
    // The position does not advance until the server reports that the stream plays.
    measured_ = streamSeconds();
    isSounding_ = false;
    begin(pa_stream_cork(stream_.get(), paused ? 1 : 0, nullptr, nullptr));
}

void PulsePlaybackStream::flush() {
    PulseLock lock(connection_->loop());
    heard_ = 0;
    sent_ = 0;
    if (endReason_)
        return;
    feeding_.reset();
    draining_.reset();
    answer({});
    flushing_.reset(pa_stream_flush(
        stream_.get(),
        [](pa_stream*, int, void* self) {
            static_cast<PulsePlaybackStream*>(self)->requestOrigin();
        },
        this));
}

/// Asks for the server's write position. The sound that is written after the flush begins there.
void PulsePlaybackStream::requestOrigin() {
    flushing_.reset(pa_stream_update_timing_info(
        stream_.get(),
        [](pa_stream* stream, int, void* self) {
            auto* flushed = static_cast<PulsePlaybackStream*>(self);
            flushed->flushing_.reset();
            if (const pa_timing_info* timing = pa_stream_get_timing_info(stream))
                flushed->origin_ =
                    static_cast<double>(pa_bytes_to_usec(
                        static_cast<std::uint64_t>(std::max<std::int64_t>(timing->write_index, 0)),
                        &flushed->spec_)) /
                    1e6;
            flushed->feed();
        },
        this));
}

/// Evaluates the server's answer: how much sound the server has passed to the device, and the
/// device's latency.
void PulsePlaybackStream::measure() {
    const pa_timing_info* const timing = pa_stream_get_timing_info(stream_.get());
    if (!timing || timing->read_index_corrupt)
        return;
    const auto passed = static_cast<std::uint64_t>(std::max<std::int64_t>(timing->read_index, 0));
    measured_ = (static_cast<double>(pa_bytes_to_usec(passed, &spec_)) -
                 static_cast<double>(timing->sink_usec)) /
                1e6;
    const double at = clockSeconds() - static_cast<double>(timing->transport_usec) / 1e6;
    const double change = measured_ - at - ahead_;
    const bool wasSounding = std::exchange(isSounding_, timing->playing != 0);
    const bool isSteady = wasSounding && std::abs(change) < maximumJitterSeconds;
    ahead_ += isSteady ? answerWeight * change : change;
}

/// The stream's time now.
double PulsePlaybackStream::streamSeconds() const {
    return isSounding_ ? clockSeconds() + ahead_ : measured_;
}

void PulsePlaybackStream::requestTiming() const {
    if (measuring_)
        return;
    measuring_.reset(pa_stream_update_timing_info(
        stream_.get(),
        [](pa_stream*, int, void* measuring) {
            static_cast<PulseOperationPtr*>(measuring)->reset();
        },
        &measuring_));
}

double PulsePlaybackStream::heardSeconds() const {
    PulseLock lock(connection_->loop());
    if (endReason_ || !stream_ || flushing_)
        return heard_;
    requestTiming();
    // The server may have run out of sound while this process was suspended. The position is
    // therefore limited to the sound that was sent.
    const double sentSeconds = static_cast<double>(sent_) / format_.channels / format_.sampleRate;
    heard_ = std::clamp(streamSeconds() - origin_, 0.0, sentSeconds);
    return heard_;
}

} // namespace tessarune
