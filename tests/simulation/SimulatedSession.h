#pragma once

#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"
#include "tests/simulation/FaultyFileSystem.h"
#include "tests/simulation/ScriptedAssetInventory.h"
#include "tests/simulation/ScriptedAudioConverter.h"
#include "tests/simulation/ScriptedMedia.h"
#include "tests/simulation/ScriptedSoundServer.h"
#include "tests/simulation/ScriptedSpeechEngine.h"
#include "tests/support/LoggedLines.h"
#include "tests/support/MemoryUserDefaults.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tessarune::simulation {

/// The desktop's answers about permissions, each after a delay.
struct ScriptedPermissions {
    SystemAuthorization::Status speech = SystemAuthorization::Status::authorized;
    bool grantsMicrophone = true;
    double microphoneSeconds = 0;

    SystemAuthorization authorization(Host& host) {
        return {[this] { return speech; }, [&host] { return answer(host, 0, true); },
                [] { return SystemAuthorization::Status::notDetermined; },
                [this, &host](const AudioSource&) {
                    return answer(host, microphoneSeconds, grantsMicrophone);
                }};
    }

  private:
    static Task<bool> answer(Host& host, double seconds, bool granted) {
        Task<bool> thinking = sleep(Executor::main(host), seconds);
        co_await thinking;
        co_return granted;
    }
};

/// A translator whose drain takes as long as a test says.
class ScriptedTranslation final : public SessionTranslation {
  public:
    explicit ScriptedTranslation(Host& host) : main_(Executor::main(host)) {}

    double drainSeconds = 0;
    bool drainCompletes = true;
    std::vector<std::string> calls;
    TranslatedCaptions* captions = nullptr; ///< of the session that was launched last

    void preparesLanguages() { showPreparation({{{"en", "fr"}}}); }

    void attach(TranslatedCaptions& launched) override { captions = &launched; }
    void prewarmCurrentTranslationPair(const std::string& reason) override {
        calls.push_back("prewarm " + reason);
    }
    void startCommittedRun() override { calls.emplace_back("run"); }
    void resetForNewSession() override { calls.emplace_back("reset"); }
    void bigCleanup() override { calls.emplace_back("cleanup"); }
    Task<bool> drainCommittedTranslationsBeforePersist(double timeout) override {
        return drain(main_, std::min(drainSeconds, timeout), drainCompletes);
    }

  private:
    static Task<bool> drain(Executor main, double seconds, bool completes) {
        co_await sleep(main, seconds);
        co_return completes;
    }

    const Executor main_;
};

/// Receives what a session reports to its diagnostics; a test observes the part that it needs.
struct WatchedDiagnostics final : SessionDiagnostics {
    void startIfNeeded(const Start& start) override { onStart(start); }
    bool isRunning() const override { return running; }
    void recordLiveCaptionStopSnapshot(const StopSnapshot& about) override {
        onStopSnapshot(about.reason, about.completedTranslations);
    }
    void finish(const Finish& finish) override { onFinish(finish); }
    void closeLifecycle() override { onCloseLifecycle(); }
    void lifecycle(const LifecycleEntry& entry) override {
        entries.push_back(entry);
        onLifecycle(entry);
    }
    void appendASREvent(const ASREvent& event, double) override { onASREvent(event); }
    void captionDisplayRefreshed(const CaptionDisplayRefresh& refresh) override {
        refreshes.push_back(refresh.reason);
        onRefresh(refresh.reason);
    }
    void stopIdleMemorySentinel(const std::string& reason) override { onSentinelStop(reason); }

    bool running = false;
    std::vector<std::string> refreshes; ///< their reasons
    std::vector<LifecycleEntry> entries;
    std::function<void(const Start&)> onStart = [](const auto&) {};
    std::function<void(const std::string&, bool)> onStopSnapshot = [](const auto&, bool) {};
    std::function<void(const Finish&)> onFinish = [](const auto&) {};
    std::function<void()> onCloseLifecycle = [] {};
    std::function<void(const LifecycleEntry&)> onLifecycle = [](const auto&) {};
    std::function<void(const ASREvent&)> onASREvent = [](const auto&) {};
    std::function<void(const std::string&)> onRefresh = [](const auto&) {};
    std::function<void(const std::string&)> onSentinelStop = [](const auto&) {};
};

/// A whole session on a simulated computer: the code below the front end is the program's own, and
/// the platform services are scripted.
class SimulatedSession {
  public:
    explicit SimulatedSession(std::uint64_t seed = 0, double itsSampleRate = 1600)
        : host(1000000000.0, seed), sampleRate(itsSampleRate) {
        TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::verbose);
        files.createDirectories(paths.appSupportBase());
        calm();
        setOutputs({"a"});
    }
    ~SimulatedSession() {
        server.keepDelivering(std::nullopt);
        store.reset();
        host.runUntilIdle(host.now() + 100000);
        host.end(); // a hanging recogniser never returns
        TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::core);
    }

    /// Starts the program: repairs the data folder and makes the store.
    void launch() {
        store.reset();
        compressor.reset();
        catalog = std::make_unique<RecordingCatalog>(host, files, paths, logger, notifications);
        repaired = RecordingRepair(files, *catalog, logger).runAtLaunch();
        recorder = AudioSessionRecorder::create(host, files, logger, catalog->forRecorder(),
                                                converters.maker());
        compressor = std::make_unique<RecordingAudioCompressor>(
            host, files, *catalog, logger, exporter, media.opener(), media.creator());
        if (!*settings.recordLosslessAudio)
            compressor->compressLeftovers();
        store = LiveTranscriptStore::make(
            {.speech = {host, engine.engine(), assets, converters.maker(), logger},
             .sound = server,
             .files = files,
             .settings = settings,
             .permissions = permissions,
             .catalog = *catalog,
             .recorder = recorder,
             .leaseDataFolder =
                 [this] { return anotherWrites ? DataFolderLease() : unsharedDataFolder(); },
             .compressor = *compressor,
             .translation = translation(),
             .diagnostics = observer ? observer() : diagnostics,
             .scheduleHistoryRefinement =
                 [this](const auto& request) { refinements.push_back(request); },
             .returnMemory = [this] { ++memoryReturns; },
             .notifications = &notifications});
        refreshes.clear();
        const auto noteChange = [this](const auto&) { mayBeStale_ = true; };
        const SessionView& view = store->view();
        view.captions.committedSegments.onDidChange(noteChange);
        view.captions.liveLeadingSentences.onDidChange(noteChange);
        view.captions.softCaptionSegments.onDidChange(noteChange);
        view.captions.currentPartial.onDidChange(noteChange);
        view.translation.ghostTranslationText.onDidChange(noteChange);
        view.status.onDidChange(noteChange);
        view.sessionPhase.onDidChange(noteChange);
        view.captionDisplay.frame.onDidChange(noteChange);
        store->view().sessionPhase.onDidChange([this](LiveSessionPhase phase) {
            phases.push_back(phase);
            if (onPhase)
                onPhase(phase);
        });
    }

    void setOutputs(const std::vector<std::string>& outputs,
                    const std::vector<std::string>& inputs = {"mic", "usb"},
                    std::optional<double> anotherRate = {}) {
        const double rate = anotherRate.value_or(sampleRate);
        SoundDevices devices;
        for (const auto& id : outputs)
            devices.outputs.push_back(testing::ScriptedSoundServer::output(id, rate));
        for (const auto& id : inputs)
            devices.inputs.push_back(testing::ScriptedSoundServer::input(id, {rate, 1}));
        devices.defaultOutputID = outputs.empty() ? "" : outputs.front();
        devices.defaultInputID = inputs.empty() ? "" : inputs.front();
        server.setDevices(std::move(devices));
    }

    /// Ends all scripted failures and delays.
    void calm() {
        desktop = {};
        engine.script = SpeechScript();
        engine.script.format = {sampleRate, 1};
        server.connectFailure.reset();
        server.openFailure.reset();
        server.connectDelay = server.openDelay = 0;
        files.recover();
        media.failure.clear();
        translator->drainSeconds = 0;
        translator->drainCompletes = true;
    }

    using Trigger = LiveSessionControlTrigger;
    void start() {
        store->startListening(Trigger::programmatic());
        host.advanceBy(0);
    }
    void stop() {
        store->stopListening(Trigger::programmatic());
        host.advanceBy(0);
    }
    /// Delivers sound for a while, loud enough to count as activity.
    void hear(double seconds) {
        server.keepDelivering(0.5F, 0.1);
        host.advanceBy(seconds);
        server.keepDelivering(std::nullopt);
    }
    /// Delivers a result whose words began a second before.
    void say(bool isFinal, const std::string& text) {
        const double heard = engine.session().heardSeconds;
        engine.session().give(spoken(isFinal, text, std::max(heard - 1, 0.0), 0.1));
        host.advanceBy(0.1);
    }

    /// Names of the events in the runtime log that begin with `prefix`.
    std::vector<std::string> events(const std::string& prefix) {
        std::vector<std::string> names;
        for (const auto& line : logLines(prefix))
            names.push_back(line["event"]);
        return names;
    }
    std::vector<nlohmann::json> logLines(const std::string& prefix) {
        logger.flush();
        return testing::loggedLines(files, paths.logs(), prefix);
    }
    /// The part of the frame that differs from a frame built from the current state alone; empty if
    /// there is none, or if nothing has changed since the last call.
    std::string staleInFrame() {
        if (!std::exchange(mayBeStale_, false))
            return "";
        const SessionView& view = store->view();
        const CaptionCore::Rows& committed = *view.captions.committedSegments;
        LiveCaptionDisplayCache cache([] { return 0.0; });
        cache.update({committed, *view.captions.liveLeadingSentences,
                      *view.captions.softCaptionSegments, *view.captions.currentPartial,
                      *view.clearedSegmentIDs},
                     true, nullptr);
        const LiveCaptionDisplayFrame wanted = cache.frame();
        const LiveCaptionDisplayFrame& shown = *view.captionDisplay.frame;
        const bool showsGhost = *settings.softTranslationEnabled;
        if (shown.sourceTextTail != wanted.sourceTextTail)
            return "committed rows";
        if (shown.mergedBilingualSourceTail != wanted.mergedBilingualSourceTail)
            return "bilingual rows";
        if (shown.liveTailRows != wanted.liveTailRows ||
            shown.mergedBilingualLiveTailRows != wanted.mergedBilingualLiveTailRows)
            return "live rows";
        if (shown.livePartialRow != wanted.livePartialRow)
            return "open row";
        if (shown.translationTail != wanted.translationTail)
            return "translations";
        if (shown.ghostTranslationText !=
            (showsGhost ? *view.translation.ghostTranslationText : ""))
            return "preview";
        if (shown.statusMessage != status() || shown.sessionPhase != phase())
            return "status";
        if (shown.translationStatus.hasIncomplete !=
            TranslationPresentationBuilder::hasIncomplete(committed))
            return "incomplete";
        return "";
    }
    std::string transcript(const UUID& id) { return files.contentsOf(catalog->transcriptURL(id)); }
    std::string status() const { return store->view().status->text(); }
    LiveSessionPhase phase() const { return *store->view().sessionPhase; }

    SimulatedHost host;
    const double sampleRate;
    FaultyFileSystem files;
    TessarunePaths paths{"/data"};
    TessaruneFileLogger logger{host, files, paths};
    testing::MemoryUserDefaults defaults;
    AppSettings settings{defaults};
    NotificationCenter notifications;
    testing::ScriptedSoundServer server{host};
    ScriptedSpeechEngine engine{host};
    ScriptedAssetInventory assets{host};
    ScriptedAudioConverters converters;
    ScriptedPermissions desktop;
    PermissionsManager permissions{host, server, defaults, desktop.authorization(host)};
    ScriptedMedia media{files};
    AudioExporter exporter{host, media.transcoder()};
    const std::shared_ptr<ScriptedTranslation> translator =
        std::make_shared<ScriptedTranslation>(host);
    /// Called at each launch.
    std::function<std::shared_ptr<SessionTranslation>()> translation = [this] {
        return translator;
    };
    /// Makes the observer that replaces `diagnostics`, if set; called at each launch.
    std::function<std::shared_ptr<SessionDiagnostics>()> observer;
    const std::shared_ptr<WatchedDiagnostics> diagnostics = std::make_shared<WatchedDiagnostics>();

    std::unique_ptr<RecordingCatalog> catalog;
    RecordingRepair::Report repaired;
    std::shared_ptr<AudioSessionRecorder> recorder;
    std::unique_ptr<RecordingAudioCompressor> compressor;
    std::shared_ptr<LiveTranscriptStore> store;

    std::vector<LiveSessionPhase> phases;
    std::vector<std::string>& refreshes = diagnostics->refreshes;
    std::vector<std::optional<HistoryRefinementRequest>> refinements;
    bool anotherWrites = false; ///< another program holds the data folder
    int memoryReturns = 0;
    std::function<void(LiveSessionPhase)> onPhase;

  private:
    bool mayBeStale_ = true;
};

} // namespace tessarune::simulation
