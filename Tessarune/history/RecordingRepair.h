#pragma once

#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/UUID.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace tessarune {

/// Puts the data folder in order when the program starts, before anybody else uses it.
class RecordingRepair {
  public:
    /// What there is to tell the user, once.
    struct Report {
        std::vector<UUID> recoveredSessions; ///< had not been ended, and are whole again
        std::optional<RecordingCatalog::IndexRebuild> rebuiltIndex;
    };

    RecordingRepair(FileSystem& files, RecordingCatalog& catalog, TessaruneFileLogger& logger);

    /// All repairs in their order: the index, the sessions that a crash cut off, entries without an
    /// end, entries without audio, sidecars without an entry. Never throws; what fails is logged
    /// and tried again at the next start.
    Report runAtLaunch();

  private:
    bool finishSession(RecordingMetadata recording);
    bool restoreTranscripts(const RecordingMetadata& recording);
    void removeUnfinishedFiles();

    FileSystem& files_;
    RecordingCatalog& catalog_;
    TessaruneFileLogger& logger_;
};

} // namespace tessarune
