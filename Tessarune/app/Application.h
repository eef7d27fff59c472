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
#include <string>

namespace tessarune {

/// The objects that every front end works with: the real disk, stores and engines, made once and in
/// the order of their dependencies. A front end adds its host and, for each session, the sound.
///
/// Main queue; the host must outlive it. A damaged or missing file does not make the constructor
/// throw: the operation that needs the file reports it.
struct Application {
    /// `program` is the name under which this front end appears in logs and to other running front
    /// ends.
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

    /// Called after a failed attempt of a download that will be tried again.
    std::function<void(const DownloadTrouble&)> onDownloadTrouble;

    /// The dependencies of a recogniser. The recogniser selects its model when a session begins.
    SpeechPlatform speechPlatform();

    /// Why no session can begin: the selected speech model, or with "automatic" every model, is
    /// missing or damaged. Empty if a session can begin. A session downloads nothing, so front ends
    /// check this first.
    std::string speechModelProblem() const;

    /// Calls `RecordingGate::holdDataFolder`. With a hold, the caller may change recordings and
    /// diagnostics runs; without one, `problem` tells the user why.
    DataFolderLease leaseDataFolder();

    /// Sets a value until `endOverride` or the end of the program, and does not store it.
    void override(AnySetting& setting, SettingValue value);
    void endOverride(AnySetting& setting);

    /// Moves an unreadable settings file aside and begins a new one with recording switched off.
    /// Returns the new path of the old file; empty if the settings file was readable.
    std::filesystem::path renewSettingsFile();

    /// What a front end reports to the user after the preparation.
    struct Preparation {
        RecordingGate::Obstacle obstacle; ///< while there is one, nothing is recorded
        RecordingRepair::Report repairs;

        /// Text for the user if the list of recordings was damaged and has been rebuilt; empty
        /// otherwise.
        std::string rebuiltIndexText() const;
        /// Text for the user if recordings were removed from the list; empty otherwise.
        std::string removedText() const;
    };
    /// Takes the data folder, so that two programs never write one catalog, and runs the start-up
    /// services.
    ///
    /// If sessions are to be recorded, the folder stays taken until `leaveDataFolder`. If another
    /// program has it, the services do not run, and the front end decides how to continue.
    ///
    /// If no sessions are to be recorded, the folder is taken only if it has recordings, and only
    /// while the services run. If another program has it, the services run, but change no
    /// recordings and no diagnostics runs.
    Preparation prepareToRecord();

    /// Runs the start-up services. Changes recordings and diagnostics runs only if this program has
    /// taken the data folder.
    RecordingRepair::Report prepare();

  private:
    void pruneDiagnosticsOnLaunch(DataFolderHold hold);
    /// Created on first use.
    const std::shared_ptr<SerialQueue>& utilityQueue();
    DownloadPolicy downloadPolicy();
    HistoryRefinementService::Environment refinementEnvironment();
    LogFields bootstrapFields() const;

    /// Prepares the chosen recogniser; does nothing if its model is missing or damaged.
    void preheatRecogniser();

    SpeechAnalyzerAssetStore speechAssets_;
    SpeechAnalyzerPreheater preheater_;
    std::shared_ptr<SerialQueue> utilityQueue_;
    Published<DiagnosticsLevel>::Token levelObserver_;
};

} // namespace tessarune
