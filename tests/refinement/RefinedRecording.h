#pragma once

#include "Tessarune/refinement/HistoryRefinementService.h"
#include "Tessarune/translation/AppleTranslator.h"
#include "tests/history/CatalogFixture.h"
#include "tests/simulation/ScriptedAudioConverter.h"
#include "tests/simulation/ScriptedSpeechEngine.h"
#include "tests/translation/ScriptedTranslationService.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessarune::testing {

/// A recording with a transcript on a simulated computer, and a file recogniser that a test
/// scripts.
class RefinedRecording : public Catalogued {
  public:
    RefinedRecording() {
        TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::verbose);
        id = add(1'760'000'000, "talk.wav");
        catalog.saveTranscript("Old words.", id);
        catalog.saveBilingualTranscript("Old words.\nAlte Worte.", id);
        HistoryWordTimeline timeline;
        timeline.sentences = {{"Old words.", 1, 2, std::nullopt, "audioWord"}};
        catalog.saveWordTimeline(timeline, id);
        setDuration(soundSeconds);
    }
    ~RefinedRecording() {
        service.reset();
        host.end();
    }

    void setDuration(double seconds) {
        RecordingMetadata changed = *catalog.recording(id);
        changed.duration = seconds;
        changed.audioFormat = "wav/pcm_s16le";
        catalog.upsert(changed);
    }
    HistoryRefinementRequest request() const {
        return {id, "/data/Recordings/talk.wav", "apple-analyzer-en", "en-US", "苹果", target};
    }
    /// Begins a refinement; sets `outcome` when it ends.
    void begin() {
        if (!service)
            service = std::make_unique<HistoryRefinementService>(environment());
        outcome.reset();
        spawn(Executor::main(host), await(this, service->refine(request(), "automatic")));
    }
    void refine() {
        begin();
        host.runUntilIdle(host.now() + 1000);
    }
    std::string text() const { return disk.contentsOf(catalog.transcriptURL(id)); }
    std::string bilingual() const { return disk.contentsOf(catalog.bilingualTranscriptURL(id)); }
    HistoryWordTimeline timeline() const {
        return HistoryWordTimeline::decoded(disk.contentsOf(catalog.wordTimelineURL(id)))
            .value_or(HistoryWordTimeline());
    }

    HistoryRefinementService::Environment environment();

    // The sound
    double soundSeconds = 60;
    double loudFrom = 0;
    std::optional<double> damagedAt;
    // The recogniser
    std::vector<SpeechResult> heard = {simulation::spoken(true, "New words. And more.", 1)};
    double mostLateness = 0;
    std::string failure;
    std::size_t failingBlock = 0; ///< counted from 1; 0: none
    std::vector<double> blocks;   ///< seconds of each
    int loadedModels = 0;
    int finalSegments = 0; ///< reported to the observer
    std::function<void()> onBlock = [] {};

    std::string target = "de-DE";
    std::string holder; ///< of the data folder
    UUID id;
    std::shared_ptr<ScriptedTranslationService> translation =
        std::make_shared<ScriptedTranslationService>();
    std::unique_ptr<HistoryRefinementService> service;
    std::optional<HistoryRefinementOutcome> outcome;

  private:
    static Task<void> await(RefinedRecording* self, Task<HistoryRefinementOutcome> task) {
        self->outcome = co_await task;
    }

    class Sound;
    class Analyzer;
    struct Observer;
};

struct RefinedRecording::Observer final : HistoryRefinementObserver {
    explicit Observer(RefinedRecording& observed) : recording(observed) {}
    void finalSegment(std::int64_t,
                      const SpeechAnalyzerFileTranscriptionResult::Segment&) override {
        ++recording.finalSegments;
    }
    RefinedRecording& recording;
};

class RefinedRecording::Sound final : public MediaFile {
  public:
    explicit Sound(const RefinedRecording& recording) : recording_(recording) {}
    AudioFormat format() const override { return {100, 1}; }
    std::optional<double> duration() const override { return recording_.soundSeconds; }
    AudioBufferPtr read() override {
        if (recording_.damagedAt && at_ >= *recording_.damagedAt)
            throw MediaFileError(MediaFileError::Kind::damaged, "talk.wav is damaged");
        if (at_ >= recording_.soundSeconds)
            return nullptr;
        const float level = at_ >= recording_.loudFrom ? 0.1F : 0.0F;
        at_ += 0.5;
        return std::make_shared<AudioBuffer>(AudioBuffer{format(), std::vector<float>(50, level)});
    }

  private:
    const RefinedRecording& recording_;
    double at_ = 0;
};

class RefinedRecording::Analyzer final : public SpeechFileAnalyzer {
  public:
    explicit Analyzer(RefinedRecording& recording) : recording_(recording) {}
    AudioFormat audioFormat() const override { return {100, 1}; }
    double mostLateness() const override { return recording_.mostLateness; }
    Task<std::string> prepare() override {
        ++recording_.loadedModels;
        co_return "scripted";
    }
    Task<std::vector<SpeechResult>> analyze(AudioBufferPtr block, std::stop_token) override {
        recording_.blocks.push_back(block->seconds());
        recording_.onBlock();
        co_await sleep(Executor::main(recording_.host), block->seconds() / 30);
        if (recording_.blocks.size() == recording_.failingBlock)
            throw std::runtime_error(recording_.failure);
        co_return std::vector<SpeechResult>();
    }
    Task<std::vector<SpeechResult>> finish() override { co_return recording_.heard; }

  private:
    RefinedRecording& recording_;
};

inline HistoryRefinementService::Environment RefinedRecording::environment() {
    return {.host = host,
            .files = disk,
            .catalog = catalog,
            .logger = logger,
            .engine =
                [this] {
                    SpeechEngine engine;
                    engine.makeFileAnalyzer = [this](const auto&, const std::string&) {
                        return std::make_shared<Analyzer>(*this);
                    };
                    return engine;
                },
            .openMedia =
                [this](const auto& path) {
                    if (!disk.has(path))
                        throw MediaFileError(MediaFileError::Kind::cannotOpen, path.string());
                    return std::make_unique<Sound>(*this);
                },
            .makeConverter =
                [](AudioFormat from, AudioFormat to) {
                    return std::make_unique<simulation::ScriptedAudioConverter>(from, to);
                },
            .makeTranslator = [this]() -> std::shared_ptr<Translator> {
                return std::make_shared<AppleTranslator>(host, translation, Executor::main(host),
                                                         AppleTranslator::Downloads::never);
            },
            .observe = [this](const auto&) { return std::make_shared<Observer>(*this); },
            .leaseDataFolder =
                [this] {
                    return holder.empty() ? unsharedDataFolder() : DataFolderLease{{}, holder};
                }};
}

} // namespace tessarune::testing
