#pragma once

#include "Tessarune/app/RecordingGate.h"
#include "Tessarune/history/AudioExporter.h"
#include "Tessarune/history/HistoryExport.h"
#include "Tessarune/history/RecordingAudioCompressor.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/model-store/ModelInstaller.h"
#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/process-figures/LinuxProcessFigures.h"
#include "Tessarune/platform/speech-engine/SpeechModelInventory.h"
#include "Tessarune/platform/translation-engine/OfflineTranslationService.h"
#include "Tessarune/platform/translation-engine/TranslationModelInventory.h"
#include "Tessarune/refinement/HistoryImportCoordinator.h"
#include "Tessarune/refinement/HistoryRefinementService.h"
#include "Tessarune/search/TranscriptSearch.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/OverridingUserDefaults.h"
#include "Tessarune/shell/SharedSetting.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/speech/SpeechAnalyzerPreheater.h"
#include "Tessarune/speech/SpeechPlatform.h"
#include "Tessarune/vocabulary/HistoryWordStatsService.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The objects that every front end works with: the real disk, stores and engines, made once and in
/// the order of their dependencies. A front end adds its host and, for each session, the sound.
///
/// Main queue; the host outlives it. A damaged or missing file never makes anything here throw: the
/// operation that needs it reports it.
struct Application {
    /// `program` is the name under which this front end appears in logs and to its neighbours.
    Application(Host& host, std::string program);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    Host& host;
    const std::string program;
    PosixFileSystem files;
    TessarunePaths paths;
    JSONUserDefaults storedDefaults;
    OverridingUserDefaults defaults;
    AppSettings settings;
    RecordingGate recording;
    const SharedSetting speechModelChoice;
    const SharedSetting downloadMirror;
    TessaruneFileLogger logger;
    ModelStore models;
    ModelInstaller installer;
    SpeechModelInventory speechModels;
    TranslationModelInventory translationModels;
    std::shared_ptr<OfflineTranslationService> translation;
    NotificationCenter notifications;
    RecordingCatalog catalog;
    LinuxProcessFigures figures;
    AudioExporter exporter;
    HistoryExport historyExport;
    RecordingAudioCompressor compressor;
    HistoryWordStatsService wordStats;
    TranscriptSearch search;
    HistoryRefinementService refinement;
    HistoryImportCoordinator imports;

    /// Called with the reason when a download fails to progress, from its first failure on.
    std::function<void(const DownloadTrouble&)> onDownloadTrouble;

    /// The dependencies of a recogniser. It selects its model when each session begins.
    SpeechPlatform speechPlatform();

    /// Why no session can begin: the selected speech model, or any, is missing or damaged. Empty if
    /// it is installed. A session downloads nothing, so front ends check this before it begins.
    std::string speechModelProblem() const;

    /// Sets a value for this run only.
    void override(AnySetting& setting, SettingValue value);
    void endOverride(AnySetting& setting);

    /// Keeps an unreadable settings file aside and begins a new one, in which nothing is recorded
    /// until the user allows it. Returns the path of the old one; empty if there was no need.
    std::filesystem::path renewSettingsFile();

    /// The results of the preparation that a front end reports.
    struct Preparation {
        RecordingGate::Obstacle obstacle; ///< if there is one, nothing is recorded for now
        RecordingRepair::Report repairs;

        /// A report that the list of recordings was damaged and has been rebuilt; empty otherwise.
        std::string rebuiltIndexText() const;
    };
    /// Ensures that two programs never write one catalog, then runs the start-up services. If
    /// another program has the folder that this one needs, they do not run: the front end decides
    /// how to continue.
    Preparation prepareToRecord();

    /// Runs the start-up services. Repairs the data folder if this program has it.
    RecordingRepair::Report prepare();

  private:
    void pruneDiagnosticsOnLaunch();
    /// Made when it is first needed.
    const std::shared_ptr<SerialQueue>& utilityQueue();
    DownloadPolicy downloadPolicy();
    HistoryRefinementService::Environment refinementEnvironment();
    LogFields bootstrapFields() const;

    /// Checks the model of the chosen recogniser; downloads none without a request.
    void preheatRecogniser();

    SpeechAnalyzerAssetStore speechAssets_;
    SpeechAnalyzerPreheater preheater_;
    std::shared_ptr<SerialQueue> utilityQueue_;
    Published<DiagnosticsLevel>::Token levelObserver_;
};

} // namespace tessarune
