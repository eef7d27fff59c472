#pragma once

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/ui/history/HistoryWindow.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/simulation/ScriptedAudioConverter.h"
#include "tests/simulation/ScriptedSoundServer.h"
#include "tests/simulation/ScriptedSpeechEngine.h"
#include "tests/support/FileContents.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/ui/OffscreenApplication.h"

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tessarune {

/// A dictionary of a few words.
class ScriptedLexicon final : public Lexicon {
  public:
    std::vector<WordReading> readings(std::string_view form) override {
        if (form == "times")
            return {{PartOfSpeech::noun, "time", 9}};
        return {};
    }
    std::vector<WordDefinition> definitions(std::string_view lemma) override {
        if (lemma != "time")
            return {};
        return {{PartOfSpeech::noun, "an instance or single occasion for some event", {}},
                {PartOfSpeech::noun,
                 "a period of time considered as a resource under your control",
                 {}},
                {PartOfSpeech::verb, "measure the time or duration of an event or action", {}}};
    }
};

/// A history window over a catalog in a temporary folder, a file recogniser with a scripted result,
/// and a network that has nothing.
class StagedHistory {
  public:
    StagedHistory() {
        settings.translationBackend = "关闭";
        catalog.prepareDirectories();
    }
    ~StagedHistory() {
        isCopyHeld = false;
        window.reset();
        player.reset();
        stillHost.end();
    }

    DataFolderHold hold() const { return changeProblem.empty() ? dataFolder : nullptr; }
    /// Adds a recording that began `ago` seconds before `now`; a running one has no end.
    UUID add(double ago, const std::string& text, const std::string& bilingual = "",
             bool isRunning = false) {
        RecordingMetadata recording;
        recording.id = UUID::random();
        recording.startedAt = now - ago;
        recording.duration = 754;
        if (!isRunning)
            recording.endedAt = recording.startedAt + recording.duration;
        recording.filePath = (paths.recordings() / (recording.id.text() + ".wav")).string();
        testing::writeContents(recording.filePath, "sound" + std::string(50'000, 'x'));
        catalog.upsert(recording);
        if (isRunning)
            live = recording.id;
        if (!text.empty())
            catalog.saveTranscript(text, recording.id);
        catalog.saveBilingualTranscript(bilingual, recording.id);
        return recording.id;
    }
    void time(const UUID& id, int sentences) { // saves the times of the sentences
        HistoryWordTimeline timeline;
        for (int i = 0; i < sentences; ++i)
            timeline.sentences.push_back({"", i * 7.5, i * 7.5 + 7, {}, "audioWord"});
        catalog.saveWordTimeline(timeline, id);
    }
    /// Writes a file outside the history.
    QUrl file(const std::string& name, const std::string& bytes) {
        const auto path = folder / name.c_str();
        testing::writeContents(path, bytes);
        return QUrl::fromLocalFile(QString::fromStdString(path.string()));
    }
    HistoryWindowEnvironment environment() {
        return {.host = host,
                .settings = settings,
                .catalog = catalog,
                .files = disk,
                .notifications = notifications,
                .logger = logger,
                .exporter = exporter,
                .search = search,
                .refinement = refinement,
                .imports = imports,
                .wordStatistics = wordStatistics,
                .vocabulary = vocabulary,
                .vocabularyPreferences = std::make_shared<VocabularyPreferences>(defaults),
                .leaseDataFolder =
                    [this] {
                        return DataFolderLease{hold(), changeProblem};
                    },
                .speechModels =
                    [] {
                        return std::vector<std::string>{"tiny-en", "small-en"};
                    },
                .chooseFile =
                    [this](const std::string& name, auto chosen) {
                        suggested = name;
                        chosen(folder / name.c_str());
                    },
                .chooseFiles = [](const auto&) {},
                .copy = [this](const std::string& text) { copied = text; },
                .openURL = [this](const std::string& url) { opened = url; },
                .notify = [this](const std::string& text) { notified = text; },
                .player = player,
                .pronunciation = std::make_shared<HistoryPronunciationAudioPlayer>(
                    host,
                    [this](const std::string&, const std::string&, const auto&) {
                        ++fetches;
                        return std::optional<WebAnswer>();
                    },
                    [](const std::string&, const Block&) -> Block { return [] {}; }),
                .liveText = &liveText,
                .liveDuration = &liveDuration,
                .liveRecording = [this] { return live; }};
    }
    void open() {
        window = std::make_unique<HistoryWindow>(environment());
        window->show();
    }

    void runFor(int milliseconds) {
        QElapsedTimer running;
        running.start();
        runUntil([&] { return running.hasExpired(milliseconds); });
    }

    QGuiApplication& application = offscreenApplication();
    QtHost host;
    const double now = host.now();
    testing::TemporaryFolder folder;
    PosixFileSystem disk;
    TessarunePaths paths{folder / "data"};
    TessaruneFileLogger logger{host, disk, paths};
    NotificationCenter notifications;
    testing::MemoryUserDefaults defaults;
    AppSettings settings{defaults};
    RecordingCatalog catalog{host, disk, paths, logger, notifications};
    AudioExporter audio{host, {}};
    HistoryExport exporter{host, catalog, disk, audio,
                           [](const HistoryTranscriptPDFDocument&) { return std::string("%PDF"); }};
    /// Has no index, so it reads the transcripts.
    TranscriptSearch search{host,
                            disk,
                            catalog,
                            logger,
                            notifications,
                            [](const std::filesystem::path&) -> std::unique_ptr<SearchIndex> {
                                throw SearchIndexFailed("no index", false);
                            }};
    // The recogniser
    std::vector<SpeechResult> heard = {simulation::spoken(true, "New words. And more.", 1)};
    std::string failure;                  ///< why it fails; empty: it succeeds
    bool hearsForever = false;            ///< it never finishes
    std::string model;                    ///< the one requested last
    std::atomic<bool> isCopyHeld = false; ///< an import waits before it copies anything
    HistoryRefinementService refinement{
        {.host = host,
         .files = disk,
         .catalog = catalog,
         .logger = logger,
         .engine = [this] { return engine(); },
         .openMedia = [](const auto& path) { return sound(path); },
         .makeConverter =
             [](AudioFormat from, AudioFormat to) {
                 return std::make_unique<simulation::ScriptedAudioConverter>(from, to);
             },
         .makeTranslator = []() -> std::shared_ptr<Translator> { return nullptr; }}};
    HistoryImportCoordinator imports{{host, disk, catalog, logger, notifications, settings,
                                      refinement, [this](const auto& path) {
                                          while (isCopyHeld)
                                              std::this_thread::yield();
                                          return sound(path);
                                      }}};
    HistoryWordStatsService wordStatistics{host, logger, std::make_shared<ScriptedLexicon>(),
                                           [](std::string_view) { return std::string("en"); }};
    std::shared_ptr<VocabularyStore> vocabulary = std::make_shared<VocabularyStore>(disk, paths);
    Published<std::string> liveText; ///< of the running session
    Published<double> liveDuration{0.0};
    std::optional<UUID> live; ///< the running session's recording
    /// No time passes for the player's sound server, so playback stays where it begins.
    SimulatedHost stillHost{1e9};
    testing::ScriptedSoundServer speakers{stillHost};
    std::shared_ptr<AudioPlayer> player = std::make_shared<AudioPlayer>(
        host, PlaybackParts{speakers, [](const auto& path) { return sound(path); },
                            [](AudioFormat format, double) {
                                return std::make_unique<simulation::ScriptedAudioConverter>(format,
                                                                                            format);
                            }});
    std::string changeProblem; ///< why recordings cannot be changed; empty: they can
    const std::shared_ptr<int> dataFolder = std::make_shared<int>(); ///< each hold is a copy
    std::string suggested; ///< the name of the last export
    std::string copied;
    std::string notified;         ///< the last desktop notification
    std::string opened;           ///< the last page in the browser
    std::atomic<int> fetches = 0; ///< requests to the network
    std::unique_ptr<HistoryWindow> window;

  private:
    class Sound final : public MediaFile {
      public:
        AudioFormat format() const override { return {100, 1}; }
        std::optional<double> duration() const override { return 60; }
        AudioBufferPtr read() override {
            if (at_ >= 60)
                return nullptr;
            at_ += 30;
            return std::make_shared<AudioBuffer>(
                AudioBuffer{format(), std::vector<float>(3000, 0.1F)});
        }
        void seek(double seconds) override { at_ = seconds; }

      private:
        double at_ = 0;
    };
    class Analyzer final : public SpeechFileAnalyzer {
      public:
        explicit Analyzer(StagedHistory& history) : history_(history) {}
        AudioFormat audioFormat() const override { return {100, 1}; }
        double mostLateness() const override { return 0; }
        Task<std::string> prepare() override { co_return history_.model; }
        Task<std::vector<SpeechResult>> analyze(AudioBufferPtr, std::stop_token stop) override {
            if (!history_.failure.empty())
                throw std::runtime_error(history_.failure);
            if (history_.hearsForever && ++blocks_ > 1) {
                constexpr double forever = 1e6;
                co_await sleep(Executor::main(history_.host), forever, stop);
            }
            co_return std::vector<SpeechResult>();
        }
        Task<std::vector<SpeechResult>> finish() override { co_return history_.heard; }

      private:
        StagedHistory& history_;
        int blocks_ = 0;
    };

    SpeechEngine engine() {
        SpeechEngine made;
        made.makeFileAnalyzer = [this](const auto&, const std::string& name) {
            model = name;
            return std::make_shared<Analyzer>(*this);
        };
        return made;
    }
    static std::unique_ptr<MediaFile> sound(const std::filesystem::path& path) {
        if (!testing::contentsOf(path).starts_with("sound"))
            throw MediaFileError(MediaFileError::Kind::notMedia,
                                 path.filename().string() +
                                     " is not a sound file of a known format");
        return std::make_unique<Sound>();
    }
};

} // namespace tessarune
