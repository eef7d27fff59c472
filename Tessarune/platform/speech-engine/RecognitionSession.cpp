#include "Tessarune/platform/speech-engine/RecognitionSession.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tessarune {

namespace {

/// Seconds of silence that warm up the engine; see docs/decisions/0021-settled-fronts.md.
constexpr double warmUpSeconds = 3;
/// The maximum seconds of sound that are replayed to a new stream. The engine opens a line at most
/// this long after the first sound of the line.
constexpr double recentSeconds = 3;
/// Live sound comes in batches, so the sound of a pass can be this many seconds longer than the
/// time since the last pass. If the sound is even longer, it is not live.
constexpr double liveSlackSeconds = 0.5;

constexpr auto samplesIn(double seconds) {
    return static_cast<std::size_t>(seconds * speechSampleRate);
}

} // namespace

RecognitionSession::RecognitionSession(Host& host, Executor worker,
                                       std::shared_ptr<SpeechModels> models,
                                       SpeechTranscriberOptions options,
                                       AsyncStream<SpeechResult> results, RecognitionPolicy policy,
                                       std::shared_ptr<RecognitionBacklog> backlog)
    : host_(host),
      worker_(std::move(worker)),
      models_(std::move(models)),
      results_(std::move(results)),
      policy_(std::move(policy)),
      backlog_(std::move(backlog)),
      reader_(std::move(options)),
      highPass_(policy_.lowestHertz, speechSampleRate),
      humFilter_(speechSampleRate),
      stall_(policy_.longestStall) {}

void RecognitionSession::prepare() {
    model_ = models_->loaded();
    MoonshineStream trial(model_);
    trial.add(std::vector<float>(samplesIn(warmUpSeconds), 0.0F));
    trial.stop();
    trial.transcribe();
}

void RecognitionSession::begin() {
    if (!model_)
        model_ = models_->loaded();
    stream_.emplace(model_);
    lastPassAt_ = host_.now();
    nextPassAt_ = lastPassAt_ + policy_.passInterval;
}

/// Runs `work` unless the session is over; a failure ends the session.
template <typename Work>
void RecognitionSession::guarded(Work work) {
    if (!stream_ || results_.isFinished())
        return;
    try {
        work();
    } catch (...) {
        fail(std::current_exception());
    }
}

void RecognitionSession::take(const AudioBuffer& buffer) {
    guarded([&] {
        if (buffer.format != AudioFormat{speechSampleRate, 1})
            throw std::runtime_error("The speech engine received sound in the wrong format.");
        if (backlog_->seconds + buffer.seconds() > policy_.longestBacklog)
            dropBacklog();
        std::vector<float> samples = highPass_.filtered(buffer.samples);
        if (policy_.removesHum)
            samples = humFilter_.filtered(std::move(samples));
        stream_->add(samples);
        takenSamples_ += buffer.samples.size();
        backlog_->seconds = backlog_->seconds + buffer.seconds();
        recent_.insert(recent_.end(), samples.begin(), samples.end());
        if (recent_.size() > samplesIn(recentSeconds))
            recent_.erase(recent_.begin(),
                          recent_.end() - static_cast<std::ptrdiff_t>(samplesIn(recentSeconds)));
        hasNewSound_ = true;
        stall_.progressed(host_.now());
        watchForStall();
        closing_.hear(samples);
        closeIfResting();
        schedulePass();
    });
}

void RecognitionSession::closeLine(double cutoff, OneShot<bool> done) {
    const std::optional<double> openSince = reader_.openSince();
    if (!stream_ || !openSince || *openSince >= cutoff ||
        takenSeconds() - *openSince < policy_.shortestLineToClose) {
        done.resume(false);
        return;
    }
    closing_.request(takenSeconds() + policy_.longestWaitForRest, done);
    // Resumes the waiter even if no more sound comes.
    host_.after(policy_.longestWaitForRest, [done] { done.resume(false); });
}

void RecognitionSession::closeIfResting() {
    if (!closing_.isRequested())
        return;
    const bool isTooLate = !reader_.openSince() || closing_.isTooLate(takenSeconds());
    if (!isTooLate && !closing_.isAtRest())
        return;
    if (!isTooLate)
        pass(true);
    closing_.end();
}

/// A pass is queued after all pending sound, so one pass covers it.
void RecognitionSession::schedulePass() {
    if (!hasNewSound_)
        return;
    const bool isEnough = backlog_->seconds >= policy_.enoughSound;
    const double due = isEnough ? host_.now() : std::max(nextPassAt_, host_.now());
    if (passDueAt_ && *passDueAt_ <= due)
        return;
    passDueAt_ = due;
    later(due - host_.now(), [round = ++passRound_](RecognitionSession& session) {
        if (round == session.passRound_)
            session.passAsScheduled();
    });
}

void RecognitionSession::passAsScheduled() {
    passDueAt_.reset();
    const bool isDue = host_.now() >= nextPassAt_ || backlog_->seconds >= policy_.enoughSound;
    if (hasNewSound_ && isDue)
        pass();
    else
        schedulePass();
}

/// Drops the backlog. The shown part of the open line becomes its final.
void RecognitionSession::dropBacklog() {
    TessaruneLog::asr.notice([&] {
        return "too slow: " + Text::fixed(backlog_->seconds, 1) + " s of sound were not recognised";
    });
    if (std::optional<SpeechResult> shown = reader_.takeOpen())
        results_.yield(std::move(*shown));
    stream_.emplace(model_);
    reader_.restarted(takenSeconds());
    backlog_->seconds = 0;
    nextPassAt_ = host_.now(); // the sound that is not dropped has waited long enough
    closing_.end();
}

void RecognitionSession::watchForStall() {
    if (const std::optional<double> wait = stall_.scheduleCheck(host_.now()))
        later(*wait, [](RecognitionSession& session) { session.closeIfStalled(); });
}

void RecognitionSession::closeIfStalled() {
    const bool isStalled = stall_.check(host_.now());
    // A sound source that plays a file waits while the recogniser is behind. So missing sound is a
    // stall only if passes have covered all sound so far.
    if (hasNewSound_ || !isStalled) {
        watchForStall();
        return;
    }
    if (reader_.openSince())
        pass(true);
    closing_.end();
}

/// Runs `work` on the worker queue after this many seconds and after all pending work, unless the
/// session has ended by then.
template <typename Work>
void RecognitionSession::later(double seconds, Work work) {
    const auto onWorker = [weak = weak_from_this(), worker = worker_, work] {
        worker.run([weak, work] {
            if (const auto session = weak.lock())
                session->guarded([&] { work(*session); });
        });
    };
    if (seconds > 0)
        host_.after(seconds, onWorker);
    else
        onWorker();
}

/// Runs the engine over the new sound. To close a line, ends the engine's stream and replaces it.
void RecognitionSession::pass(bool closesLine) {
    const double began = host_.now();
    const double workedBefore = policy_.processorSeconds();
    if (closesLine)
        stream_->stop();
    const moonshine::Transcript& transcript = stream_->transcribe();
    const double ended = host_.now();
    // Processor time includes the program's other threads, and elapsed time includes suspensions:
    // the smaller value is the best estimate of a pass's cost.
    const double cost = std::min(ended - began, policy_.processorSeconds() - workedBefore);
    const double idle = std::min(cost * (policy_.passCostFactor - 1), policy_.longestIdle);
    nextPassAt_ = std::max(began + policy_.passInterval, ended + idle);
    hasNewSound_ = false;
    stall_.progressed(ended);
    deliver(transcript, nextPassAt_ - began <= policy_.longestWaitForAgreement);
    if (closesLine) {
        stream_.emplace(model_);
        reader_.restarted(takenSeconds());
    } else {
        noteCost(began, cost);
    }
    lastPassAt_ = began;
    backlog_->seconds = 0;
}

/// Only passes over an open line of live sound show the speed of this computer. With a file that
/// plays faster, each pass has much more sound.
void RecognitionSession::noteCost(double began, double cost) {
    const bool isLive = backlog_->seconds <= began - lastPassAt_ + liveSlackSeconds;
    if (!isLive || !reader_.openSince())
        return;
    costs_.seconds += cost;
    costs_.lineSeconds += takenSeconds() - *reader_.openSince();
    ++costs_.passes;
}

void RecognitionSession::deliver(const moonshine::Transcript& transcript, bool looksAgainSoon) {
    for (SpeechResult& result : reader_.read(transcript, looksAgainSoon))
        results_.yield(std::move(result));
}

void RecognitionSession::forgetOldLines() {
    if (reader_.completeLines() >= policy_.linesBeforeRestart && !reader_.openSince())
        guarded([&] { restart(); });
}

/// Replays the sound since the last complete line to a new stream: a word may have begun that is
/// not part of a line yet.
void RecognitionSession::restart() {
    const double heard = takenSeconds();
    const double replayed = std::min(heard - reader_.completeThrough(),
                                     static_cast<double>(recent_.size()) / speechSampleRate);
    const std::size_t count = samplesIn(std::max(replayed, 0.0));
    stream_.emplace(model_);
    stream_->add(
        std::vector<float>(recent_.end() - static_cast<std::ptrdiff_t>(count), recent_.end()));
    reader_.restarted(heard - static_cast<double>(count) / speechSampleRate);
    hasNewSound_ = true;
}

void RecognitionSession::finish() {
    guarded([&] {
        stream_->stop();
        deliver(stream_->transcribe(), false);
    });
    release();
    results_.finish();
}

void RecognitionSession::release() {
    stream_.reset();
    backlog_->seconds = 0;
    closing_.end();
    const PassCosts costs = std::exchange(costs_, {});
    if (costs.lineSeconds > 0)
        models_->speeds().observe(model_->name(), costs.seconds / costs.lineSeconds, costs.passes);
}

void RecognitionSession::fail(std::exception_ptr failure) {
    stream_.reset();
    backlog_->seconds = 0;
    closing_.end();
    results_.fail(std::move(failure));
}

double RecognitionSession::takenSeconds() const {
    return static_cast<double>(takenSamples_) / speechSampleRate;
}

} // namespace tessarune
