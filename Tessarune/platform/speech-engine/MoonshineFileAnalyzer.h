#pragma once

#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "Tessarune/speech/SpeechFileAnalyzer.h"

#include <memory>

namespace tessarune {

/// Transcribes a recording from beginning to end. Loads a separate model and frees it at the end.
/// Decodes only complete lines, because nobody watches the open one.
///
/// The engine's times come from its speech detection, so they are exact.
class MoonshineFileAnalyzer final : public SpeechFileAnalyzer {
  public:
    struct Policy {
        double lowestHertz; ///< a high-pass cutoff in Hz; 0: no filter
        bool removesHum;
        /// The number of complete lines after which the engine's stream is recreated to keep its
        /// list of lines short.
        std::size_t linesBeforeRestart;
    };

    /// `model`: "automatic" for the best one, or a name. `worker` should be of utility priority;
    /// when the worker loads the model, the engine's own threads inherit the worker's niceness.
    MoonshineFileAnalyzer(Executor worker, std::shared_ptr<SpeechModels> models, std::string model,
                          SpeechTranscriberOptions options, Policy policy);
    ~MoonshineFileAnalyzer() override;

    AudioFormat audioFormat() const override { return {speechSampleRate, 1}; }
    double mostLateness() const override { return 0; }
    Task<std::string> prepare() override;
    Task<std::vector<SpeechResult>> analyze(AudioBufferPtr block, std::stop_token stop) override;
    Task<std::vector<SpeechResult>> finish() override;

  private:
    class Recognition;
    Executor worker_;
    std::shared_ptr<Recognition> recognition_;
};

} // namespace tessarune
