#include "Tessarune/audio/CaptureStream.h"

#include "Tessarune/audio/LateSound.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tessarune {

namespace {

std::optional<CaptureStream::Source> sourceOf(const SoundInput* input) {
    if (!input)
        return std::nullopt;
    return CaptureStream::Source{input->id, input->name, input->format};
}

std::optional<CaptureStream::Source> monitorOf(const SoundOutput* output) {
    if (!output || output->monitorID.empty())
        return std::nullopt;
    return CaptureStream::Source{output->monitorID, output->name, {output->format.sampleRate, 1}};
}

/// The seconds between two checks of late sound, and the maximum number of checks.
constexpr double paceCheckSeconds = 0.25;
constexpr int maximumPaceChecks = 20;
/// If a check for a stall runs late by more than this, the program itself was suspended, and the
/// server may still have sound for it.
constexpr double lateCheckSeconds = 0.5;

SoundServerError noSound() {
    return {SoundServerError::timeout, "the device delivers no sound"};
}

} // namespace

/// The state of a capture. Pending operations share it and may outlive the capture. The answer to a
/// request is obsolete if `attempt_` has changed in the meantime.
class CaptureStream::Keeper : public std::enable_shared_from_this<Keeper> {
  public:
    Keeper(SoundServer& server, Executor executor, AudioSource source, Handlers handlers)
        : server_(server),
          executor_(std::move(executor)),
          wanted_(std::move(source)),
          handlers_(std::move(handlers)) {}

    static Task<void> start(std::shared_ptr<Keeper> self);
    void stop();

  private:
    static Task<void> open(std::shared_ptr<Keeper> self, Source source, std::uint64_t attempt);
    static Task<void> reopen(std::shared_ptr<Keeper> self, Source source, std::uint64_t attempt);

    void adopt(Source source, std::unique_ptr<RecordStream> stream);
    void handleBuffer(AudioBufferPtr buffer);
    void deliver(AudioBufferPtr buffer);
    void reportGap(double seconds, bool tookOver);
    void watchPace();
    void checkPace();
    void releaseHeld();
    void handleEnd(const SoundServerError& error);
    void interrupt(const SoundServerError& error);
    void follow();
    void retryLater();
    void watchForStall();
    void checkForStall();
    void report(const CaptureEvent& event);
    /// Runs `action` on the executor after `seconds`, unless the capture has stopped.
    DelayedCall later(double seconds, void (Keeper::*action)());
    double now() const { return executor_.host().now(); }

    SoundServer& server_;
    Executor executor_;
    AudioSource wanted_;
    Handlers handlers_;
    SoundServer::Subscription subscription_;

    bool running_ = false;
    std::uint64_t attempt_ = 0;
    std::optional<std::string> opening_; // source id of the current attempt
    std::unique_ptr<RecordStream> stream_;
    Source current_;
    bool stalled_ = false;            // `stream_` is still open but delivers nothing
    std::uint64_t currentStream_ = 0; // the attempt that opened `stream_`

    double quietSince_ = 0; // time of the last buffer, of the opening, or of a late stall check
    double stallCheckAt_ = 0;
    LateSound late_;
    int paceChecks_ = 0;
    bool isInterrupted_ = false;   // an interruption was reported, but not yet its end
    bool isFirstOfStream_ = false; // the next buffer is the first of `stream_`
    bool tookOver_ = false;        // `stream_` is not the first stream of the capture
    double retrySeconds_ = 0;
    double openSeconds_ = shortestOpenSeconds;
    DelayedCall retry_;
    DelayedCall stallCheck_;
    DelayedCall paceCheck_;
};

Task<void> CaptureStream::Keeper::start(std::shared_ptr<Keeper> self) {
    const std::uint64_t attempt = ++self->attempt_;
    auto connecting = self->server_.connect(self->executor_);
    co_await connecting;
    if (attempt != self->attempt_)
        throw SoundServerError(SoundServerError::streamKilled, "stopped while starting");
    const std::optional<Source> source = resolveExactly(self->wanted_, self->server_.devices());
    if (!source)
        throw SoundServerError(SoundServerError::noSuchDevice,
                               localized("there is no such device"));
    auto opening = open(self, *source, attempt);
    co_await opening;
    if (attempt != self->attempt_)
        throw SoundServerError(SoundServerError::streamKilled, "stopped while starting");
    self->running_ = true;
    self->late_.begin(self->now());
    std::weak_ptr<Keeper> weak = self;
    self->subscription_ = self->server_.observe(self->executor_, [weak] {
        if (auto keeper = weak.lock())
            keeper->follow();
    });
    self->watchForStall();
    // The devices may have changed between their query and the subscription.
    self->follow();
}

void CaptureStream::Keeper::stop() {
    releaseHeld();
    running_ = false;
    ++attempt_;
    opening_.reset();
    subscription_.reset();
    stream_.reset();
    stalled_ = false;
    isInterrupted_ = false;
    retry_.cancel();
    stallCheck_.cancel();
}

Task<void> CaptureStream::Keeper::open(std::shared_ptr<Keeper> self, Source source,
                                       std::uint64_t attempt) {
    self->opening_ = source.id;
    std::weak_ptr<Keeper> weak = self;
    RecordHandlers handlers;
    handlers.onBuffer = [weak, attempt](AudioBufferPtr buffer) {
        auto keeper = weak.lock();
        if (keeper && keeper->currentStream_ == attempt && keeper->stream_)
            keeper->handleBuffer(std::move(buffer));
    };
    handlers.onEnd = [weak, attempt](const SoundServerError& error) {
        auto keeper = weak.lock();
        if (keeper && keeper->currentStream_ == attempt && keeper->stream_)
            keeper->handleEnd(error);
    };
    RecordRequest request{source.id, self->wanted_.isSystemAudio() ? 1 : 0,
                          self->wanted_.isSystemAudio() ? "Tessarune System Audio"
                                                        : "Tessarune Microphone",
                          self->running_ ? self->openSeconds_ : longestOpenSeconds};
    std::unique_ptr<RecordStream> stream;
    std::exception_ptr failure;
    try {
        auto opening = self->server_.openRecordStream(std::move(request), std::move(handlers),
                                                      self->executor_);
        stream = co_await opening;
    } catch (...) {
        failure = std::current_exception();
    }
    if (attempt != self->attempt_)
        co_return; // stopped or replaced by another attempt; the stream closes here
    self->opening_.reset();
    if (failure)
        std::rethrow_exception(failure);
    self->currentStream_ = attempt;
    self->adopt(std::move(source), std::move(stream));
}

Task<void> CaptureStream::Keeper::reopen(std::shared_ptr<Keeper> self, Source source,
                                         std::uint64_t attempt) {
    try {
        auto opening = open(self, std::move(source), attempt);
        co_await opening;
    } catch (const std::exception& error) {
        const std::string text = error.what();
        TessaruneLog::capture.notice([&] { return "capture could not be opened again: " + text; });
        self->retryLater();
    }
}

void CaptureStream::Keeper::adopt(Source source, std::unique_ptr<RecordStream> stream) {
    const bool deviceChanged = !current_.id.empty() && current_.id != source.id;
    releaseHeld();
    stream_ = std::move(stream);
    current_ = std::move(source);
    quietSince_ = now();
    stalled_ = false;
    isFirstOfStream_ = true;
    tookOver_ = running_;
    watchForStall();
    if (deviceChanged)
        report({CaptureEvent::Kind::deviceChanged, 0, current_.deviceName, 0});
}

void CaptureStream::Keeper::handleBuffer(AudioBufferPtr buffer) {
    retrySeconds_ = 0;
    openSeconds_ = shortestOpenSeconds;
    quietSince_ = now();
    if (std::exchange(stalled_, false))
        watchForStall();
    if (std::exchange(isFirstOfStream_, false)) {
        const double missing = late_.begin(*buffer, now());
        reportGap(stream_->isContinuous() ? missing : 0, tookOver_);
        deliver(std::move(buffer));
        return;
    }
    const double late = late_.add(*buffer, now());
    const bool isOnTime = late < stallSeconds && !isInterrupted_ && !late_.isHolding();
    if (isOnTime || !stream_->isContinuous()) {
        deliver(std::move(buffer));
        return;
    }
    const bool isFirstLate = !late_.isHolding();
    late_.hold(std::move(buffer), late, now());
    if (late < smallestGapSeconds) {
        releaseHeld();
    } else if (isFirstLate) {
        paceChecks_ = 0;
        watchPace();
    }
}

void CaptureStream::Keeper::deliver(AudioBufferPtr buffer) {
    if (handlers_.onBuffer)
        handlers_.onBuffer(std::move(buffer));
}

/// Called before a buffer that may follow a gap. Ignores a short gap unless an interruption was
/// reported. Short means less than `stallSeconds` for a gap within one stream, and less than
/// `smallestGapSeconds` for a gap between two streams.
void CaptureStream::Keeper::reportGap(double seconds, bool tookOver) {
    if (!isInterrupted_ && seconds < (tookOver ? smallestGapSeconds : stallSeconds))
        return;
    // No stall is detected while the program is suspended. If the sound was lost in that time, the
    // interruption is reported only now.
    if (!tookOver)
        interrupt(noSound());
    isInterrupted_ = false;
    report({CaptureEvent::Kind::resumed, 0, current_.deviceName, seconds});
}

void CaptureStream::Keeper::watchPace() {
    paceCheck_ = later(paceCheckSeconds, &Keeper::checkPace);
}

void CaptureStream::Keeper::checkPace() {
    if (!late_.isHolding())
        return;
    if (late_.hasSteadyPace(now()) || ++paceChecks_ >= maximumPaceChecks)
        releaseHeld();
    else
        watchPace();
}

void CaptureStream::Keeper::releaseHeld() {
    paceCheck_.cancel();
    if (!late_.isHolding())
        return;
    std::vector<LateSound::Piece> pieces = late_.release();
    const bool isComplete =
        std::ranges::none_of(pieces, [](const LateSound::Piece& piece) { return piece.gap > 0; });
    if (isComplete)
        reportGap(0, false);
    for (LateSound::Piece& piece : pieces) {
        if (piece.gap > 0) {
            interrupt(noSound());
            reportGap(piece.gap, false);
        }
        deliver(std::move(piece.buffer));
    }
}

void CaptureStream::Keeper::handleEnd(const SoundServerError& error) {
    releaseHeld();
    stream_.reset();
    interrupt(error);
    follow();
}

void CaptureStream::Keeper::interrupt(const SoundServerError& error) {
    if (std::exchange(isInterrupted_, true))
        return;
    report({CaptureEvent::Kind::interrupted, error.status(), error.what(), 0});
}

void CaptureStream::Keeper::follow() {
    if (!running_ || server_.state() != SoundServerState::connected)
        return;
    const std::optional<Source> source = resolve(wanted_, server_.devices());
    if (!source || opening_ == source->id)
        return;
    const bool isDelivering = stream_ && !stalled_ && current_.id == source->id;
    if (isDelivering && !opening_)
        return;
    retry_.cancel();
    const std::uint64_t attempt = ++attempt_;
    if (isDelivering) {
        // The current device is the right one again: abandons the attempt to open another.
        opening_.reset();
        return;
    }
    opening_ = source->id;
    spawn(executor_, reopen(shared_from_this(), *source, attempt));
}

void CaptureStream::Keeper::retryLater() {
    retrySeconds_ = std::clamp(retrySeconds_ * 2, shortestRetrySeconds, longestRetrySeconds);
    openSeconds_ = std::min(openSeconds_ * 2, longestOpenSeconds);
    retry_.cancel();
    retry_ = later(retrySeconds_, &Keeper::follow);
}

void CaptureStream::Keeper::watchForStall() {
    stallCheck_.cancel();
    if (!running_ || !stream_ || !stream_->isContinuous())
        return;
    // Without a minimum, a check that is slightly too early by rounding could be repeated forever.
    constexpr double shortestWait = 0.05;
    const double wait = std::max(quietSince_ + stallSeconds - now(), shortestWait);
    stallCheckAt_ = now() + wait;
    stallCheck_ = later(wait, &Keeper::checkForStall);
}

void CaptureStream::Keeper::checkForStall() {
    if (!stream_)
        return;
    if (now() - stallCheckAt_ > lateCheckSeconds)
        quietSince_ = now();
    if (now() - quietSince_ < stallSeconds) {
        watchForStall();
        return;
    }
    stalled_ = true;
    releaseHeld();
    interrupt(noSound());
    // Waits, because a sleeping device would otherwise be reopened continuously.
    retryLater();
}

void CaptureStream::Keeper::report(const CaptureEvent& event) {
    TessaruneLog::capture.notice([&] {
        switch (event.kind) {
        case CaptureEvent::Kind::interrupted:
            return "capture interrupted: " + event.text;
        case CaptureEvent::Kind::resumed:
            return "capture resumed after " + Text::fixed(event.gapSeconds, 3) +
                   " s: " + event.text;
        case CaptureEvent::Kind::deviceChanged:
            break;
        }
        return "capture changed to " + event.text;
    });
    if (handlers_.onEvent)
        handlers_.onEvent(event);
}

DelayedCall CaptureStream::Keeper::later(double seconds, void (Keeper::*action)()) {
    std::weak_ptr<Keeper> weak = shared_from_this();
    const Executor executor = executor_;
    return executor.host().after(seconds, [weak, executor, action] {
        executor.run([weak, action] {
            auto keeper = weak.lock();
            if (keeper && keeper->running_)
                (*keeper.*action)();
        });
    });
}

CaptureStream::CaptureStream(SoundServer& server, Executor executor, AudioSource source,
                             Handlers handlers)
    : keeper_(std::make_shared<Keeper>(server, std::move(executor), std::move(source),
                                       std::move(handlers))) {}

CaptureStream::~CaptureStream() {
    keeper_->stop();
}

Task<void> CaptureStream::start() {
    return Keeper::start(keeper_);
}

void CaptureStream::stop() {
    keeper_->stop();
}

std::optional<CaptureStream::Source> CaptureStream::resolveExactly(const AudioSource& source,
                                                                   const SoundDevices& devices) {
    if (source.isSystemAudio())
        return monitorOf(devices.defaultOutput());
    if (!source.deviceID())
        return sourceOf(devices.defaultInput());
    if (const SoundInput* input = devices.input(*source.deviceID()))
        return sourceOf(input);
    for (const auto& output : devices.outputs) {
        // The monitor of a single output can be chosen by its name, like a microphone.
        if (output.monitorID == *source.deviceID())
            return Source{output.monitorID, output.name, output.format};
    }
    return std::nullopt;
}

std::optional<CaptureStream::Source> CaptureStream::resolve(const AudioSource& source,
                                                            const SoundDevices& devices) {
    std::optional<Source> found = resolveExactly(source, devices);
    if (!found && source.isMicrophone())
        found = sourceOf(devices.defaultInput());
    return found;
}

} // namespace tessarune
