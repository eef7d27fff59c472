#include "Tessarune/platform/speech-engine/MoonshineFileAnalyzer.h"

#include "Tessarune/platform/speech-engine/HighPass.h"
#include "Tessarune/platform/speech-engine/HumFilter.h"
#include "Tessarune/platform/speech-engine/TranscriptReader.h"
#include "TessaruneCore/host/RunOn.h"

#include <algorithm>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

namespace tessarune {

namespace {

using Results = std::vector<SpeechResult>;

/// Seconds of sound per pass; a stop is checked before each. A pass decodes the lines that end in
/// its sound.
constexpr double passSeconds = 5;
/// The maximum seconds of sound after the last complete line that are replayed to a new stream. The
/// engine completes every line before it is that long.
constexpr double mostHeardAgain = 20;

/// Seconds of silence added at the end. The end of the sound may cut off a line, which the engine
/// decodes only if sound was added after the last pass. Without this silence, the last words of a
/// file would be lost.
constexpr double closingSilence = 0.1;

/// Seconds after the end of a complete line that still belong to it. If they were replayed, the
/// engine would hear them twice.
constexpr double endOfLine = 0.02;

constexpr std::size_t fileSamplesIn(double seconds) {
    return static_cast<std::size_t>(seconds * speechSampleRate);
}

} // namespace

/// The state on the worker queue; it outlives the analyzer until its work is done.
class MoonshineFileAnalyzer::Recognition {
  public:
    Recognition(std::shared_ptr<SpeechModels> models, std::string model,
                SpeechTranscriberOptions options, Policy policy)
        : models_(std::move(models)),
          modelName_(std::move(model)),
          policy_(policy),
          reader_(std::move(options)),
          highPass_(policy.lowestHertz, speechSampleRate),
          humFilter_(speechSampleRate) {}

    std::string prepare() {
        model_ = models_->loadForFiles(modelName_);
        stream_.emplace(model_);
        return model_->name();
    }

    Results analyze(const AudioBuffer& block, const std::stop_token& stop) {
        if (block.format != AudioFormat{speechSampleRate, 1})
            throw std::runtime_error("The speech engine received sound in the wrong format.");
        Results results;
        std::span<const float> remaining(block.samples);
        while (!remaining.empty() && !stop.stop_requested()) {
            const std::size_t count = std::min(remaining.size(), fileSamplesIn(passSeconds));
            pass(remaining.first(count), results);
            remaining = remaining.subspan(count);
        }
        return results;
    }

    Results finish() {
        stream_->add(std::vector<float>(fileSamplesIn(closingSilence)));
        stream_->stop();
        Results results = reader_.read(stream_->transcribe(), false);
        release();
        return results;
    }

    void release() {
        stream_.reset();
        model_.reset();
    }

  private:
    void pass(std::span<const float> sound, Results& results) {
        std::vector<float> filtered = highPass_.filtered(sound);
        if (policy_.removesHum)
            filtered = humFilter_.filtered(std::move(filtered));
        stream_->add(filtered);
        takenSamples_ += filtered.size();
        recent_.insert(recent_.end(), filtered.begin(), filtered.end());
        for (SpeechResult& result : reader_.read(stream_->transcribe(), false))
            results.push_back(std::move(result));
        forgetOldSound();
        if (reader_.completeLines() >= policy_.linesBeforeRestart)
            restart();
    }

    double takenSeconds() const { return static_cast<double>(takenSamples_) / speechSampleRate; }

    /// Keeps only the recent sound after the last complete line: another line may have begun there.
    void forgetOldSound() {
        const double kept =
            std::clamp(takenSeconds() - reader_.completeThrough() - endOfLine, 0.0, mostHeardAgain);
        const std::size_t count = std::min(fileSamplesIn(kept), recent_.size());
        recent_.erase(recent_.begin(), recent_.end() - static_cast<std::ptrdiff_t>(count));
    }

    void restart() {
        stream_.emplace(model_);
        stream_->add(recent_);
        reader_.restarted(static_cast<double>(takenSamples_ - recent_.size()) / speechSampleRate);
    }

    const std::shared_ptr<SpeechModels> models_;
    const std::string modelName_;
    const Policy policy_;
    TranscriptReader reader_;
    HighPass highPass_;
    HumFilter humFilter_;
    std::shared_ptr<MoonshineModel> model_;
    std::optional<MoonshineStream> stream_;
    std::uint64_t takenSamples_ = 0;
    std::vector<float> recent_; ///< the sound after the last complete line, for a new stream
};

MoonshineFileAnalyzer::MoonshineFileAnalyzer(Executor worker, std::shared_ptr<SpeechModels> models,
                                             std::string model, SpeechTranscriberOptions options,
                                             Policy policy)
    : worker_(std::move(worker)),
      recognition_(std::make_shared<Recognition>(std::move(models), std::move(model),
                                                 std::move(options), policy)) {}

MoonshineFileAnalyzer::~MoonshineFileAnalyzer() {
    worker_.run([recognition = recognition_] { recognition->release(); });
}

Task<std::string> MoonshineFileAnalyzer::prepare() {
    const auto recognition = recognition_;
    const Executor worker = worker_;
    co_return co_await runOn(worker, [&] { return recognition->prepare(); });
}

Task<Results> MoonshineFileAnalyzer::analyze(AudioBufferPtr block, std::stop_token stop) {
    const auto recognition = recognition_;
    const Executor worker = worker_;
    co_return co_await runOn(worker, [&] { return recognition->analyze(*block, stop); });
}

Task<Results> MoonshineFileAnalyzer::finish() {
    const auto recognition = recognition_;
    const Executor worker = worker_;
    co_return co_await runOn(worker, [&] { return recognition->finish(); });
}

} // namespace tessarune
