#include "Tessarune/platform/pulse/PulseRecordStream.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

PulseRecordStream::PulseRecordStream(std::shared_ptr<PulseConnection> connection,
                                     RecordHandlers handlers, Executor executor)
    : connection_(std::move(connection)),
      listener_(std::make_shared<Listener>(std::move(handlers), std::move(executor))),
      timer_(connection_->loop()) {}

PulseRecordStream::~PulseRecordStream() {
    listener_->isClosed = true;
    PulseLock lock(connection_->loop());
    timer_.cancel();
    closeStream(std::move(stream_));
}

void PulseRecordStream::open(const RecordRequest& request, OneShot<PulseOutcome> opened) {
    PulseLock lock(connection_->loop());
    opened_ = std::move(opened);
    timer_.set(request.timeoutSeconds, [this] { end(pulseOutcome(PA_ERR_TIMEOUT)); });
    if (const PulseOutcome outcome = create(request); outcome.status != 0)
        end(outcome);
}

std::optional<AudioFormat> PulseRecordStream::sourceFormat(const std::string& sourceID) const {
    const SoundDevices devices = connection_->devices();
    if (const SoundInput* input = devices.input(sourceID))
        return input->format;
    for (const auto& output : devices.outputs) {
        if (output.monitorID == sourceID)
            return output.format;
    }
    return std::nullopt;
}

PulseOutcome PulseRecordStream::create(const RecordRequest& request) {
    pa_context* context = connection_->context();
    if (!context)
        return pulseOutcome(PA_ERR_CONNECTIONTERMINATED);
    const std::optional<AudioFormat> native = sourceFormat(request.sourceID);
    const pa_channel_map* nativeMap = connection_->channelMap(request.sourceID);
    if (!native || !nativeMap)
        return pulseOutcome(PA_ERR_NOENTITY);

    format_ = {native->sampleRate, request.channels > 0 ? request.channels : nativeMap->channels};
    serverFormat_ = format_;
    // The server's own mix would cancel opposite phases. It is kept for channels without a side,
    // such as AUX, which the server would not map to left and right.
    if (format_.channels == 1 && pa_channel_map_can_balance(nativeMap)) {
        mix_.emplace();
        serverFormat_.channels = 2;
    }
    pa_channel_map map = *nativeMap;
    if (map.channels != serverFormat_.channels) {
        pa_channel_map_init_extend(&map, static_cast<unsigned>(serverFormat_.channels),
                                   PA_CHANNEL_MAP_DEFAULT);
    }
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(format_.sampleRate),
                              static_cast<std::uint8_t>(serverFormat_.channels)};
    const double frames = std::max(1.0, std::round(format_.sampleRate * bufferSeconds));
    samplesPerBuffer_ =
        static_cast<std::size_t>(frames) * static_cast<std::size_t>(serverFormat_.channels);
    stream_.reset(pa_stream_new(context, request.name.c_str(), &spec, &map));
    if (!stream_)
        return pulseOutcome(pa_context_errno(context));

    pa_stream_set_state_callback(
        stream_.get(),
        [](pa_stream*, void* self) { static_cast<PulseRecordStream*>(self)->handleState(); }, this);
    pa_stream_set_read_callback(
        stream_.get(),
        [](pa_stream*, std::size_t, void* self) {
            static_cast<PulseRecordStream*>(self)->handleData();
        },
        this);
    // The server may move the stream despite DONT_MOVE. The stream ends then, because it would
    // deliver the sound of another source.
    pa_stream_set_moved_callback(
        stream_.get(),
        [](pa_stream*, void* self) {
            static_cast<PulseRecordStream*>(self)->end(pulseOutcome(PA_ERR_NOENTITY));
        },
        this);

    pa_buffer_attr attributes{};
    attributes.maxlength = attributes.tlength = attributes.prebuf = attributes.minreq =
        static_cast<std::uint32_t>(-1);
    attributes.fragsize = static_cast<std::uint32_t>(samplesPerBuffer_ * sizeof(float));
    // DONT_MOVE: otherwise the default input would replace a removed monitor and record the room
    // instead of the computer. START_UNMUTED: otherwise the stream would record silence if the
    // server remembers that an earlier stream of the program was muted.
    constexpr auto flags = static_cast<pa_stream_flags_t>(
        PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY | PA_STREAM_START_UNMUTED);
    if (pa_stream_connect_record(stream_.get(), request.sourceID.c_str(), &attributes, flags) < 0)
        return pulseOutcome(pa_context_errno(context));
    return {};
}

void PulseRecordStream::handleState() {
    const std::optional<PulseOutcome> outcome = outcomeOf(stream_.get());
    if (!outcome)
        return;
    if (outcome->status != 0) {
        end(*outcome);
        return;
    }
    timer_.cancel();
    if (auto opened = std::exchange(opened_, std::nullopt))
        opened->resume({});
}

void PulseRecordStream::handleData() {
    while (pa_stream_readable_size(stream_.get()) > 0) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_.get(), &data, &bytes) < 0 || bytes == 0)
            return;
        append(static_cast<const float*>(data), bytes / sizeof(float));
        pa_stream_drop(stream_.get());
    }
}

void PulseRecordStream::append(const float* samples, std::size_t count) {
    while (count > 0) {
        const std::size_t taken = std::min(count, samplesPerBuffer_ - filling_.size());
        if (samples) {
            filling_.insert(filling_.end(), samples, samples + taken);
            samples += taken;
        } else {
            filling_.resize(filling_.size() + taken); // a hole in the record becomes silence
        }
        count -= taken;
        if (filling_.size() == samplesPerBuffer_)
            deliver();
    }
}

void PulseRecordStream::deliver() {
    AudioBuffer buffer{serverFormat_, std::move(filling_)};
    if (mix_)
        buffer = {format_, mix_->mixed(buffer)};
    filling_ = {};
    filling_.reserve(samplesPerBuffer_);
    listener_->executor.run(
        [listener = listener_, shared = std::make_shared<const AudioBuffer>(std::move(buffer))] {
            if (!listener->isClosed && listener->handlers.onBuffer)
                listener->handlers.onBuffer(shared);
        });
}

void PulseRecordStream::end(const PulseOutcome& reason) {
    timer_.cancel();
    closeStream(std::move(stream_));
    if (auto opened = std::exchange(opened_, std::nullopt)) {
        opened->resume(reason);
        return;
    }
    listener_->executor.run([listener = listener_, reason] {
        if (!listener->isClosed.exchange(true) && listener->handlers.onEnd)
            listener->handlers.onEnd(SoundServerError(reason.status, reason.text));
    });
}

} // namespace tessarune
