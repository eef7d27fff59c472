#pragma once

#include "Tessarune/speech/SpeechAnalyzer.h"
#include "Tessarune/speech/SpeechTranscriber.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tessarune::simulation {

/// What a scripted recogniser does. It throws each failure text that is not empty.
struct SpeechScript {
    struct Line {
        double audioTime = 0; ///< delivered after this much sound, or at the end of the input
        SpeechResult result;
    };

    AudioFormat format{16000, 1};
    std::vector<Line> lines; ///< in the order of audio time
    double prepareSeconds = 0;
    double finalizeSeconds = 0;
    std::string prepareFailure;
    std::string startFailure;
    std::string finalizeFailure;
    std::string cancelFailure;
    bool finishNeverEnds = false; ///< until it is cancelled
};

/// A result with one run per word; each lasts `secondsAWord`, and the first begins at `start`.
inline SpeechResult spoken(bool isFinal, const std::string& text, double start = 0,
                           double secondsAWord = 0.25, std::optional<double> confidence = {}) {
    SpeechResult result;
    result.isFinal = isFinal;
    result.alternatives = {text};
    for (std::size_t from = 0; from < text.size(); start += secondsAWord) {
        const std::size_t to = std::min(text.find(' ', from), text.size() - 1) + 1;
        result.runs.push_back(
            {text.substr(from, to - from), start, start + secondsAWord, confidence});
        from = to;
    }
    return result;
}

class ScriptedTranscriber final : public SpeechTranscriber {
  public:
    ScriptedTranscriber(SpeechTranscriberOptions asked, Executor executor)
        : options(std::move(asked)), results_(std::move(executor)) {}
    AsyncStream<SpeechResult> results() override { return results_; }

    const SpeechTranscriberOptions options;

  private:
    AsyncStream<SpeechResult> results_;
};

/// One session of the scripted recogniser. Its public fields record the requests, and change on the
/// main queue.
class ScriptedAnalyzer final : public SpeechAnalyzer,
                               public std::enable_shared_from_this<ScriptedAnalyzer> {
  public:
    ScriptedAnalyzer(Host& host, SpeechScript script,
                     std::shared_ptr<ScriptedTranscriber> transcriber)
        : main_(Executor::main(host)),
          script_(std::move(script)),
          transcriber_(std::move(transcriber)),
          inputEnded_(main_),
          ended_(main_) {}

    std::vector<AudioBufferPtr> inputs;
    double heardSeconds = 0;
    std::vector<double> finalizeCutoffs;
    std::vector<double> cancelCutoffs;
    bool finished = false;
    bool cancelled = false;

    const SpeechTranscriberOptions& options() const { return transcriber_->options; }
    /// Delivers a result now, whatever the script says.
    void give(SpeechResult result) { transcriber_->results().yield(std::move(result)); }
    void fail(const std::string& text) {
        transcriber_->results().fail(std::make_exception_ptr(std::runtime_error(text)));
    }

    AudioFormat bestAvailableAudioFormat() const override { return script_.format; }
    Executor inputExecutor() const override { return main_; }
    Task<void> prepareToAnalyze(AudioFormat) override {
        return pass(main_, script_.prepareSeconds, script_.prepareFailure);
    }
    Task<void> start(AsyncStream<AnalyzerInput> input) override {
        spawn(main_, listen(shared_from_this(), std::move(input)));
        return pass(main_, 0, script_.startFailure);
    }
    Task<void> finalize(double through) override {
        finalizeCutoffs.push_back(through);
        return pass(main_, script_.finalizeSeconds, script_.finalizeFailure);
    }
    Task<void> cancelAnalysis(double before) override {
        cancelCutoffs.push_back(before);
        return pass(main_, 0, script_.cancelFailure);
    }
    Task<void> finalizeAndFinishThroughEndOfInput() override { return finish(shared_from_this()); }
    Task<void> cancelAndFinishNow() override {
        cancelled = true;
        transcriber_->results().finish();
        ended_.resume(true);
        return pass(main_, 0, "");
    }

  private:
    using Self = std::shared_ptr<ScriptedAnalyzer>;

    static Task<void> pass(Executor main, double seconds, std::string failure) {
        Task<bool> sleeping = sleep(main, seconds);
        co_await sleeping;
        if (!failure.empty())
            throw std::runtime_error(failure);
    }

    static Task<void> listen(Self self, AsyncStream<AnalyzerInput> input) {
        for (;;) {
            Task<std::optional<AnalyzerInput>> arriving = input.next();
            const std::optional<AnalyzerInput> element = co_await arriving;
            if (!element)
                break;
            self->inputs.push_back(element->buffer);
            self->heardSeconds += element->buffer->seconds();
            self->giveLines(self->heardSeconds);
        }
        self->inputEnded_.resume(true);
    }

    static Task<void> finish(Self self) {
        const OneShot<bool> inputEnded = self->inputEnded_;
        co_await inputEnded;
        if (self->script_.finishNeverEnds) {
            const OneShot<bool> ended = self->ended_;
            co_await ended;
            co_return;
        }
        self->giveLines(std::numeric_limits<double>::infinity());
        self->transcriber_->results().finish();
        self->finished = true;
    }

    void giveLines(double audioTime) {
        for (; nextLine_ < script_.lines.size() && script_.lines[nextLine_].audioTime <= audioTime;
             ++nextLine_)
            give(script_.lines[nextLine_].result);
    }

    Executor main_;
    SpeechScript script_;
    std::shared_ptr<ScriptedTranscriber> transcriber_;
    std::size_t nextLine_ = 0;
    OneShot<bool> inputEnded_;
    OneShot<bool> ended_;
};

/// The recogniser of a simulated computer. `script` is read when a session is made.
class ScriptedSpeechEngine {
  public:
    explicit ScriptedSpeechEngine(Host& host) : host_(host) {}

    SpeechScript script;
    std::vector<std::shared_ptr<ScriptedAnalyzer>> sessions;

    ScriptedAnalyzer& session() { return *sessions.back(); }

    SpeechEngine engine() {
        return {[](SpeechTranscriberOptions options, Executor executor) {
                    return std::make_shared<ScriptedTranscriber>(std::move(options),
                                                                 std::move(executor));
                },
                [this](const std::shared_ptr<SpeechTranscriber>& transcriber) {
                    sessions.push_back(std::make_shared<ScriptedAnalyzer>(
                        host_, script, std::static_pointer_cast<ScriptedTranscriber>(transcriber)));
                    return sessions.back();
                }};
    }

  private:
    Host& host_;
};

} // namespace tessarune::simulation
