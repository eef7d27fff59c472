#pragma once

#include "Tessarune/audio/WAVHeader.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tessarune {

struct SessionJournalContent;

/// Repairs the data folder when the program starts, before anything else uses it.
class RecordingRepair {
  public:
    /// The results to report to the user, once.
    struct Report {
        std::vector<UUID> recoveredSessions; ///< interrupted sessions that were repaired
        /// Imports without a transcript, and imports whose transcription or translation was
        /// interrupted by a regular end of the program.
        std::vector<RecordingMetadata> untranscribedImports;
        /// Imports that were being transcribed or translated when the program ended unexpectedly,
        /// and that may have caused this end. They are reported once and do not become
        /// `untranscribedImports`.
        std::vector<RecordingMetadata> brokenOffImports;
        std::optional<RecordingCatalog::IndexRebuild> rebuiltIndex;
        std::size_t removedWithoutSound =
            0; ///< entries that were removed because their sound is missing
    };

    RecordingRepair(FileSystem& files, RecordingCatalog& catalog, TessaruneFileLogger& logger);

    /// Runs all repairs in this order: the index, unfinished files, interrupted replacements of
    /// transcripts, sessions interrupted by a crash, transcripts of these sessions, WAVs that an
    /// M4A has replaced, entries without an end, entries without audio, sidecars without an entry.
    /// Never throws; a failed repair is retried at the next launch.
    Report runAtLaunch();

  private:
    bool isUnfinished(const RecordingMetadata& recording);
    bool finishSession(RecordingMetadata recording);
    WAVHeader repairedHeader(const RecordingMetadata& recording, std::uint64_t size);
    void restoreTranscripts();
    void restoreTranscripts(const UUID& id);
    bool writeTranscripts(const UUID& id, const SessionJournalContent& journal);
    void removeUnfinishedFiles();
    void removeReplacedSound();
    void completeReplacements();
    void sortImports(Report& report);

    FileSystem& files_;
    RecordingCatalog& catalog_;
    TessaruneFileLogger& logger_;
};

} // namespace tessarune
