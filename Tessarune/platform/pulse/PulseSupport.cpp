#include "Tessarune/platform/pulse/PulseSupport.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace tessarune {

static_assert(SoundServerError::accessDenied == PA_ERR_ACCESS);
static_assert(SoundServerError::noSuchDevice == PA_ERR_NOENTITY);
static_assert(SoundServerError::connectionRefused == PA_ERR_CONNECTIONREFUSED);
static_assert(SoundServerError::timeout == PA_ERR_TIMEOUT);
static_assert(SoundServerError::connectionTerminated == PA_ERR_CONNECTIONTERMINATED);
static_assert(SoundServerError::streamKilled == PA_ERR_KILLED);

namespace {

constexpr std::pair<int, std::string_view> knownMessages[] = {
    {PA_ERR_ACCESS, localizationKey("access denied")},
    {PA_ERR_NOENTITY, localizationKey("there is no such device")},
    {PA_ERR_CONNECTIONREFUSED, localizationKey("connection refused")},
    {PA_ERR_TIMEOUT, localizationKey("no answer in time")},
    {PA_ERR_CONNECTIONTERMINATED, localizationKey("the connection was closed")},
    {PA_ERR_KILLED, localizationKey("the stream was ended by the server")},
};

} // namespace

PulseOutcome pulseOutcome(int status) {
    const auto* known =
        std::ranges::find(knownMessages, status, [](const auto& message) { return message.first; });
    if (known != std::end(knownMessages))
        return {status, localized(known->second)};
    const char* text = pa_strerror(status);
    return {status, text ? text : localized("unknown error")};
}

void PulseTimer::set(double seconds, std::function<void()> action) {
    cancel();
    action_ = std::move(action);
    timeval due{};
    pa_timeval_add(pa_gettimeofday(&due), static_cast<pa_usec_t>(seconds * 1e6));
    event_ = api_->time_new(
        api_, &due,
        [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
            auto* timer = static_cast<PulseTimer*>(self);
            const auto call = std::move(timer->action_);
            timer->cancel();
            call();
        },
        this);
}

void PulseTimer::cancel() {
    action_ = nullptr;
    if (auto* event = std::exchange(event_, nullptr))
        api_->time_free(event);
}

std::optional<PulseOutcome> outcomeOf(pa_stream* stream) {
    switch (pa_stream_get_state(stream)) {
    case PA_STREAM_READY:
        return PulseOutcome();
    case PA_STREAM_FAILED:
    case PA_STREAM_TERMINATED: {
        const int status = pa_context_errno(pa_stream_get_context(stream));
        return pulseOutcome(status != 0 ? status : PA_ERR_KILLED);
    }
    default:
        return std::nullopt;
    }
}

void closeStream(PulseStreamPtr stream) {
    if (!stream)
        return;
    pa_stream_set_read_callback(stream.get(), nullptr, nullptr);
    pa_stream_set_write_callback(stream.get(), nullptr, nullptr);
    pa_stream_set_moved_callback(stream.get(), nullptr, nullptr);
    pa_stream_set_latency_update_callback(stream.get(), nullptr, nullptr);
    pa_stream_set_state_callback(stream.get(), nullptr, nullptr);
    if (pa_stream_get_state(stream.get()) != PA_STREAM_CREATING) {
        pa_stream_disconnect(stream.get());
        return;
    }
    // Ends the stream when it is ready; the context keeps it alive until then.
    pa_stream_set_state_callback(
        stream.get(),
        [](pa_stream* created, void*) {
            if (pa_stream_get_state(created) == PA_STREAM_READY)
                pa_stream_disconnect(created);
        },
        nullptr);
}

} // namespace tessarune
