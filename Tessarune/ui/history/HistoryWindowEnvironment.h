#pragma once

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
#include <string>
#include <vector>

namespace tessarune {

/// What the history window shows and what it may ask for. All of it outlives the window.
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
    /// Why recordings cannot be changed now, as another program has them; empty: they can.
    std::function<std::string()> changeProblem;
    /// The names of the speech models that are here whole.
    std::function<std::vector<std::string>()> speechModels;
    /// Asks where a file is to be written, which is suggested to have this name. Calls back with
    /// the place; not at all if the user declines.
    std::function<void(const std::string& suggestedName,
                       std::function<void(std::filesystem::path)> chosen)>
        chooseFile;
    /// Asks for files to import. As above.
    std::function<void(std::function<void(std::vector<std::filesystem::path>)> chosen)> chooseFiles;
    std::function<void(const std::string& text)> copy;   ///< to the clipboard
    std::function<void(const std::string& url)> openURL; ///< in the user's browser
    std::shared_ptr<AudioPlayer> player = nullptr;       ///< null: nothing can be heard
    /// Null: no word can be heard.
    std::shared_ptr<HistoryPronunciationAudioPlayer> pronunciation = nullptr;
    /// What was said so far in the session that is being recorded; null: there is none.
    const Published<std::string>* liveText = nullptr;
    /// Watches a playback for as long as it returns is kept; absent: nobody does.
    std::function<std::shared_ptr<void>(TranscriptPlayback&)> watchPlayback = {};
};

} // namespace tessarune
