#pragma once

#include "Tessarune/history/DataFolderHold.h"
#include "Tessarune/history/HistoryExport.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/playback/AudioPlayer.h"
#include "Tessarune/playback/TranscriptPlayback.h"
#include "Tessarune/refinement/HistoryImportCoordinator.h"
#include "Tessarune/refinement/HistoryRefinementService.h"
#include "Tessarune/search/TranscriptSearch.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/vocabulary/HistoryPronunciationAudioPlayer.h"
#include "Tessarune/vocabulary/HistoryWordStatsService.h"
#include "Tessarune/vocabulary/VocabularyPreferences.h"
#include "Tessarune/vocabulary/VocabularyStore.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/NotificationCenter.h"
#include "TessaruneCore/observation/Published.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The data and actions of the history window. All references and pointers must outlive the window.
struct HistoryWindowEnvironment {
    Host& host;
    AppSettings& settings;
    RecordingCatalog& catalog;
    FileSystem& files;
    NotificationCenter& notifications;
    TessaruneFileLogger& logger;
    HistoryExport& exporter;
    TranscriptSearch& search;
    HistoryRefinementService& refinement;
    HistoryImportCoordinator& imports;
    HistoryWordStatsService& wordStatistics;
    std::shared_ptr<VocabularyStore> vocabulary;
    std::shared_ptr<VocabularyPreferences> vocabularyPreferences;
    /// Called before each change of the recordings; the change keeps the lease until it is done.
    std::function<DataFolderLease()> leaseDataFolder;
    /// Returns the names of the installed and intact speech models.
    std::function<std::vector<std::string>()> speechModels;
    /// Asks where to write a file, with a suggested name. Calls back with the path, or not at all
    /// if the user cancels.
    std::function<void(const std::string& suggestedName,
                       std::function<void(std::filesystem::path)> chosen)>
        chooseFile;
    /// Asks for files to import, in the same way.
    std::function<void(std::function<void(std::vector<std::filesystem::path>)> chosen)> chooseFiles;
    std::function<void(const std::string& text)> copy;   ///< to the clipboard
    std::function<void(const std::string& url)> openURL; ///< in the user's browser
    std::function<void(const std::string& text)> notify; ///< as a desktop notification
    std::shared_ptr<AudioPlayer> player = nullptr;       ///< null: no recording can be played
    /// Null: no pronunciation can be played.
    std::shared_ptr<HistoryPronunciationAudioPlayer> pronunciation = nullptr;
    /// What this program's session has recognised so far; null if this program runs no sessions.
    const Published<std::string>* liveText = nullptr;
    /// The duration of this program's session in seconds, updated once a second; null if this
    /// program runs no sessions.
    const Published<double>* liveDuration = nullptr;
    /// Returns the recording of this program's session; `nullopt` if none is being recorded.
    std::function<std::optional<UUID>()> liveRecording = [] { return std::nullopt; };
    /// Logs a playback for as long as the returned object exists. The function is empty if
    /// playbacks are not logged.
    std::function<std::shared_ptr<void>(TranscriptPlayback&)> watchPlayback = {};
};

} // namespace tessarune
