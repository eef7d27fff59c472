#include "Tessarune/platform/speech-engine/RecognitionSession.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace tessarune {

namespace {

constexpr double warmUpSeconds = 0.5;
/// Sound that is given to a new stream once more. The engine opens a line at most this long after
/// its first sound.
constexpr double recentSeconds = 3;

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
      policy_(policy),
      backlog_(std::move(backlog)),
      reader_(std::move(options)),
      highPass_(policy_.lowestHertz, speechSampleRate) {}

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
    nextPassAt_ = host_.now() + policy_.passInterval;
}

/// Runs work that may fail, unless the session is over.
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
            throw std::runtime_error("The speech engine was given sound in a wrong format.");
        if (backlog_->seconds + buffer.seconds() > policy_.mostUnheardSeconds)
            giveUpUnheard();
        const std::vector<float> samples = highPass_.filtered(buffer.samples);
        stream_->add(samples);
        takenSamples_ += buffer.samples.size();
        backlog_->seconds = backlog_->seconds + buffer.seconds();
        recent_.insert(recent_.end(), samples.begin(), samples.end());
        if (recent_.size() > samplesIn(recentSeconds))
            recent_.erase(recent_.begin(),
                          recent_.end() - static_cast<std::ptrdiff_t>(samplesIn(recentSeconds)));
        hasNewSound_ = true;
        movedAt_ = host_.now();
        watchForStandstill();
        quiet_.hear(samples);
        closeIfResting();
        passIfDue();
    });
}

void RecognitionSession::closeLine(double through, OneShot<bool> done) {
    const std::optional<double> openSince = reader_.openSince();
    if (!stream_ || !openSince || *openSince >= through ||
        takenSeconds() - *openSince < policy_.shortestLineToClose) {
        done.resume(false);
        return;
    }
    if (!closing_)
        closing_.emplace();
    closing_->before = takenSeconds() + policy_.longestWaitForRest;
    closing_->waiting.push_back(done);
    // Whoever waits goes on even if no more sound comes.
    host_.after(policy_.longestWaitForRest, [done] { done.resume(false); });
}

void RecognitionSession::closeIfResting() {
    if (!closing_)
        return;
    const bool isTooLate = !reader_.openSince() || takenSeconds() > closing_->before;
    if (!isTooLate && !quiet_.isQuiet())
        return;
    if (!isTooLate)
        pass(true);
    endClosing();
}

void RecognitionSession::endClosing() {
    if (!closing_)
        return;
    for (const OneShot<bool>& done : closing_->waiting)
        done.resume(true);
    closing_.reset();
}

void RecognitionSession::passIfDue() {
    const double wait = nextPassAt_ - host_.now();
    if (wait <= 0) {
        pass();
        return;
    }
    if (passIsScheduled_)
        return;
    passIsScheduled_ = true;
    later(wait, &RecognitionSession::passIfThereIsNews);
}

void RecognitionSession::passIfThereIsNews() {
    passIsScheduled_ = false;
    if (hasNewSound_)
        passIfDue();
}

/// What was shown of the open line stays as its final.
void RecognitionSession::giveUpUnheard() {
    TessaruneLog::asr.notice([&] {
        return "too slow: " + Text::fixed(backlog_->seconds, 1) + " s of sound were not recognised";
    });
    if (std::optional<SpeechResult> shown = reader_.takeOpen())
        results_.yield(std::move(*shown));
    stream_.emplace(model_);
    reader_.restarted(takenSeconds());
    backlog_->seconds = 0;
    endClosing();
}

void RecognitionSession::watchForStandstill() {
    if (std::exchange(standstillIsWatchedFor_, true))
        return;
    // Never a shorter wait: rounding could otherwise have it look a moment too early for ever.
    constexpr double shortestWait = 0.05;
    later(std::max(movedAt_ + policy_.longestStandstill - host_.now(), shortestWait),
          &RecognitionSession::closeIfStandingStill);
}

void RecognitionSession::closeIfStandingStill() {
    standstillIsWatchedFor_ = false;
    // A file that waits for the recogniser stands still only once the recogniser has caught up.
    if (hasNewSound_ || host_.now() - movedAt_ < policy_.longestStandstill) {
        watchForStandstill();
        return;
    }
    if (reader_.openSince())
        pass(true);
    endClosing();
}

/// Goes on on the worker queue, unless the session is over by then.
void RecognitionSession::later(double seconds, void (RecognitionSession::*work)()) {
    host_.after(seconds, [weak = weak_from_this(), worker = worker_, work] {
        worker.run([weak, work] {
            if (const auto session = weak.lock())
                session->guarded([&] { (*session.*work)(); });
        });
    });
}

/// A line that is closed ends the engine's stream, and a new one goes on from this moment.
void RecognitionSession::pass(bool closesLine) {
    const double began = host_.now();
    if (closesLine)
        stream_->stop();
    const moonshine::Transcript& transcript = stream_->transcribe();
    const double took = host_.now() - began;
    nextPassAt_ = began + std::max(policy_.passInterval, policy_.passCostFactor * took);
    hasNewSound_ = false;
    movedAt_ = began + took;
    deliver(transcript, nextPassAt_ - began <= policy_.longestWaitForAgreement);
    backlog_->seconds = 0;
    if (closesLine) {
        stream_.emplace(model_);
        reader_.restarted(takenSeconds());
    } else if (reader_.openSince()) {
        busySeconds_ += took;
        ++busyPasses_;
    }
}

void RecognitionSession::deliver(const moonshine::Transcript& transcript, bool looksAgainSoon) {
    for (SpeechResult& result : reader_.read(transcript, looksAgainSoon))
        results_.yield(std::move(result));
}

void RecognitionSession::forgetOldLines() {
    if (reader_.completeLines() >= policy_.linesBeforeRestart && !reader_.openSince())
        guarded([&] { restart(); });
}

/// The new stream hears again what followed the last complete line: a word may have begun that the
/// engine has not made a line of yet.
void RecognitionSession::restart() {
    const double heard = takenSeconds();
    const double again = std::min(heard - reader_.completeThrough(),
                                  static_cast<double>(recent_.size()) / speechSampleRate);
    const std::size_t count = samplesIn(std::max(again, 0.0));
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
    endClosing();
    if (busyPasses_ > 0)
        models_->observe(model_->name(), busySeconds_ / static_cast<double>(busyPasses_),
                         busyPasses_);
    busyPasses_ = 0;
}

void RecognitionSession::fail(std::exception_ptr failure) {
    stream_.reset();
    backlog_->seconds = 0;
    endClosing();
    results_.fail(std::move(failure));
}

double RecognitionSession::takenSeconds() const {
    return static_cast<double>(takenSamples_) / speechSampleRate;
}

} // namespace tessarune
