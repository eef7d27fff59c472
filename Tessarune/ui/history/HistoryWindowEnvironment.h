#pragma once

#include "Tessarune/history/HistoryExport.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/playback/AudioPlayer.h"
#include "Tessarune/playback/TranscriptPlayback.h"
#include "Tessarune/refinement/HistoryRefinementService.h"
#include "Tessarune/search/TranscriptSearch.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/NotificationCenter.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// What the history window shows and what it may ask for. All of it outlives the window.
struct HistoryWindowEnvironment {
    Host& host;
    RecordingCatalog& catalog;
    FileSystem& files;
    NotificationCenter& notifications;
    HistoryExport& exporter;
    TranscriptSearch& search;
    /// Why recordings cannot be changed now, as another program has them; empty: they can.
    std::function<std::string()> changeProblem;
    /// Asks where a file is to be written, which is suggested to have this name. Calls back with
    /// the place; not at all if the user declines.
    std::function<void(const std::string& suggestedName,
                       std::function<void(std::filesystem::path)> chosen)>
        chooseFile;
    std::function<void(const std::string& text)> copy; ///< to the clipboard
    std::shared_ptr<AudioPlayer> player = nullptr;     ///< null: nothing can be heard
    /// The recordings that are being refined; null: nobody refines.
    const Published<HistoryRefinementService::Jobs>* refinements = nullptr;
    /// Watches a playback for as long as it returns is kept; absent: nobody does.
    std::function<std::shared_ptr<void>(TranscriptPlayback&)> watchPlayback = {};
};

} // namespace tessarune
