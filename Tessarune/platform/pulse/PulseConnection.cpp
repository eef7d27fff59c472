#include "Tessarune/platform/pulse/PulseConnection.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tessarune {

PulseConnection::PulseConnection(std::string address, std::function<void()> onChange)
    : address_(std::move(address)),
      onChange_(std::move(onChange)),
      loop_(pa_threaded_mainloop_new()),
      list_([this](PulseDeviceList::Answer answer) { handleDevices(std::move(answer)); }) {
    if (!loop_)
        throw std::runtime_error("no main loop for the sound server");
    pa_threaded_mainloop_set_name(loop_, "sound server");
    timer_ = std::make_unique<PulseTimer>(loop_);
    if (pa_threaded_mainloop_start(loop_) != 0) {
        timer_.reset();
        pa_threaded_mainloop_free(loop_);
        throw std::runtime_error("no thread for the sound server");
    }
}

PulseConnection::~PulseConnection() {
    {
        PulseLock lock(loop_);
        timer_.reset();
        dropContext();
    }
    pa_threaded_mainloop_stop(loop_);
    pa_threaded_mainloop_free(loop_);
}

void PulseConnection::connect(OneShot<PulseOutcome> done) {
    PulseLock lock(loop_);
    if (state() == SoundServerState::connected) {
        done.resume({});
        return;
    }
    waiters_.push_back(std::move(done));
    if (state() == SoundServerState::disconnected)
        attempt();
}

SoundServerState PulseConnection::state() const {
    const MutexLock lock(snapshotMutex_);
    return state_;
}

SoundDevices PulseConnection::devices() const {
    const MutexLock lock(snapshotMutex_);
    return devices_;
}

const pa_channel_map* PulseConnection::channelMap(const std::string& sourceID) const {
    const auto found = channelMaps_.find(sourceID);
    return found == channelMaps_.end() ? nullptr : &found->second;
}

PulseOutcome PulseConnection::failure() const {
    const int status = context_ ? pa_context_errno(context_) : PA_ERR_CONNECTIONTERMINATED;
    return pulseOutcome(status != 0 ? status : PA_ERR_CONNECTIONTERMINATED);
}

void PulseConnection::attempt() {
    dropContext();
    publish(SoundServerState::connecting, {});
    context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "Tessarune");
    if (!context_) {
        lose(pulseOutcome(PA_ERR_INTERNAL));
        return;
    }
    pa_context_set_state_callback(
        context_,
        [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->handleState(); }, this);
    pa_context_set_subscribe_callback(
        context_,
        [](pa_context* context, pa_subscription_event_type_t, std::uint32_t, void* self) {
            static_cast<PulseConnection*>(self)->list_.refresh(context);
        },
        this);
    timer_->set(connectTimeoutSeconds, [this] { lose(pulseOutcome(PA_ERR_TIMEOUT)); });
    // A failed call may already have reported the failure to `handleState`, which drops the
    // context.
    if (pa_context_connect(context_, address_.empty() ? nullptr : address_.c_str(),
                           PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 &&
        context_)
        lose(failure());
}

void PulseConnection::handleState() {
    switch (pa_context_get_state(context_)) {
    case PA_CONTEXT_READY:
        isReady_ = true;
        begin(pa_context_subscribe(context_,
                                   static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SINK |
                                                                       PA_SUBSCRIPTION_MASK_SOURCE |
                                                                       PA_SUBSCRIPTION_MASK_SERVER),
                                   nullptr, nullptr));
        list_.refresh(context_);
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        lose(failure());
        break;
    default:
        break;
    }
}

void PulseConnection::handleDevices(PulseDeviceList::Answer answer) {
    channelMaps_ = std::move(answer.channelMaps);
    const bool isFirst = state() != SoundServerState::connected;
    if (!isFirst && answer.devices == devices())
        return;
    if (isFirst) {
        timer_->cancel();
        pauseSeconds_ = 0;
        isMaintained_ = true;
        TessaruneLog::capture.info([] { return std::string("connected to the sound server"); });
    }
    publish(SoundServerState::connected, std::move(answer.devices));
    resumeWaiters({});
}

void PulseConnection::lose(const PulseOutcome& reason) {
    TessaruneLog::capture.info([&] { return "no connection to the sound server: " + reason.text; });
    dropContext();
    if (isMaintained_) {
        pauseSeconds_ = std::clamp(pauseSeconds_ * 2, shortestPauseSeconds, longestPauseSeconds);
        timer_->set(pauseSeconds_, [this] { attempt(); });
    } else {
        timer_->cancel();
    }
    publish(SoundServerState::disconnected, {});
    resumeWaiters(reason);
}

void PulseConnection::dropContext() {
    isReady_ = false;
    list_.reset();
    channelMaps_.clear();
    pa_context* context = std::exchange(context_, nullptr);
    if (!context)
        return;
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context); // ends the streams, which report it to their owners
    pa_context_unref(context);
}

void PulseConnection::publish(SoundServerState state, SoundDevices devices) {
    {
        const MutexLock lock(snapshotMutex_);
        if (state_ == state && devices_ == devices)
            return;
        state_ = state;
        devices_ = std::move(devices);
    }
    onChange_();
}

void PulseConnection::resumeWaiters(const PulseOutcome& outcome) {
    for (const auto& waiter : std::exchange(waiters_, {}))
        waiter.resume(outcome);
}

} // namespace tessarune
