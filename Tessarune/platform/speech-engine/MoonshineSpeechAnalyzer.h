#pragma once

#include "Tessarune/platform/speech-engine/RecognitionSession.h"
#include "Tessarune/speech/SpeechAnalyzer.h"

#include <memory>
#include <optional>
#include <stop_token>

namespace tessarune {

/// The half of the recogniser that delivers results: holds its options and the stream that the
/// analyzer fills.
class MoonshineSpeechTranscriber final : public SpeechTranscriber {
  public:
    MoonshineSpeechTranscriber(SpeechTranscriberOptions options, Executor resultsExecutor)
        : options_(std::move(options)), results_(std::move(resultsExecutor)) {}

    AsyncStream<SpeechResult> results() override { return results_; }
    const SpeechTranscriberOptions& options() const { return options_; }

  private:
    SpeechTranscriberOptions options_;
    AsyncStream<SpeechResult> results_;
};

/// The half of the recogniser that takes sound. Its RecognitionSession works on the worker queue;
/// the tasks resume their callers on the main queue. The destructor ends the RecognitionSession.
///
/// The engine closes a line at the speaker's pauses. `finalize` closes it earlier, at a rest
/// between two words, if one comes soon; otherwise the engine closes the line.
class MoonshineSpeechAnalyzer final : public SpeechAnalyzer {
  public:
    MoonshineSpeechAnalyzer(Host& host, Executor worker, std::shared_ptr<SpeechModels> models,
                            const MoonshineSpeechTranscriber& transcriber,
                            AsyncStream<SpeechResult> results, RecognitionPolicy policy,
                            std::shared_ptr<RecognitionBacklog> backlog);
    ~MoonshineSpeechAnalyzer() override;

    AudioFormat bestAvailableAudioFormat() const override { return {speechSampleRate, 1}; }
    Executor inputExecutor() const override { return worker_; }

    Task<void> prepareToAnalyze(AudioFormat format) override;
    Task<void> start(AsyncStream<AnalyzerInput> inputSequence) override;
    Task<void> finalize(double through) override;
    Task<void> cancelAnalysis(double before) override;
    Task<void> finalizeAndFinishThroughEndOfInput() override;
    Task<void> cancelAndFinishNow() override;

  private:
    void abandon();

    Executor worker_;
    Executor main_;
    std::shared_ptr<RecognitionSession> session_;
    std::stop_source stopReading_;
    std::optional<TaskHandle> reading_;
};

} // namespace tessarune
