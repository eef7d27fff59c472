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

/// What every front end works with: the real disk, stores and engines, made once and in the order
/// in which they need each other. A front end brings its host and, for each session, the sound.
///
/// Main queue; the host outlives it. Nothing here throws for a damaged or missing file: what cannot
/// be used says so when it is asked for.
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

    /// Hears why a download gets nowhere, from its first failure on.
    std::function<void(const DownloadTrouble&)> onDownloadTrouble;

    /// What a recogniser works with. Which model it takes is asked when each session begins.
    SpeechPlatform speechPlatform();

    /// Why no session can begin: the speech model that is wanted, or any, is missing or damaged.
    /// Empty if it is there. A session downloads nothing, so front ends ask before it begins.
    std::string speechModelProblem() const;

    /// A setting for this run alone.
    void override(AnySetting& setting, SettingValue value);
    void endOverride(AnySetting& setting);

    /// Keeps a settings file that cannot be read aside and begins a new one, in which nothing is
    /// recorded until the user says so. Gives where the old one is; empty if there was no need.
    std::filesystem::path renewSettingsFile();

    /// What a front end has to tell of the preparation of a run.
    struct Preparation {
        RecordingGate::Obstacle obstacle; ///< where there is one, nothing is recorded for now
        RecordingRepair::Report repairs;

        /// Says that the list of recordings was damaged and has been rebuilt; empty otherwise.
        std::string rebuiltIndexText() const;
    };
    /// Sees to it that two programs never write one catalog, then runs the start-up services. They
    /// do not run where another program has the folder that this one wants: the front end decides
    /// what then.
    Preparation prepareToRecord();

    /// The start-up services, see there. The data folder is put in order if it was taken.
    RecordingRepair::Report prepare();

  private:
    void pruneDiagnosticsOnLaunch();
    DownloadPolicy downloadPolicy();
    HistoryRefinementService::Environment refinementEnvironment();
    LogFields bootstrapFields() const;

    /// Looks after the chosen recogniser's model, and fetches none that nobody asked for.
    void preheatRecogniser();

    SpeechAnalyzerAssetStore speechAssets_;
    SpeechAnalyzerPreheater preheater_;
    std::shared_ptr<SerialQueue> utilityQueue_;
    Published<DiagnosticsLevel>::Token levelObserver_;
};

} // namespace tessarune
