#pragma once

#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/history/SessionJournal.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tessarune {

/// The recording of the running session, the journal of its rows, and the recording that was saved
/// last. Main queue. All references must outlive it.
class LiveRecordingTracker {
  public:
    LiveRecordingTracker(Host& host, FileSystem& files, RecordingCatalog& catalog,
                         TessaruneFileLogger& logger)
        : host_(host), files_(files), catalog_(catalog), logger_(logger) {}

    const std::optional<UUID>& currentID() const { return currentID_; }
    const std::optional<UUID>& lastSavedID() const { return lastSavedID_; }
    bool hasCurrentRecording() const { return currentID_.has_value(); }
    /// The start of the current recording on the clock of the words' times: that of its file's
    /// first sample, as soon as there is one.
    std::optional<double> currentStartedAt() const { return currentStartedAt_; }

    void reset();

    /// A recording has begun; the committed rows so far open its journal. Deletes a recording whose
    /// session is already over, and one that this one replaces.
    void handleStarted(const RecordingMetadata& metadata, bool isListening, const CaptionCore& core,
                       const std::string& recognitionOptionID);
    /// The file of a recording begins with the sound of this host time.
    void handleFirstSample(const UUID& recording, double heardAt);
    /// Its diagnostics run stays.
    void discardCurrentRecordingIfAny();

    /// Rows were committed: a crash from now on leaves them in the journal.
    void journal(const CaptionCore& core, std::span<const CaptionSegment> rows);
    /// The translation of this row was added or removed.
    void journalTranslation(const CaptionSegment& row);

    /// Makes the journal so far survive a loss of power. Resumes on the main queue.
    Task<void> synchronizeJournal();

    /// Saves the texts of the current recording, which then is no longer current, even after
    /// failures. False if anything could not be saved; the next start then makes it from the
    /// journal. A recording that was deleted meanwhile has nothing to save.
    bool saveTranscripts(std::string_view sourceText, std::string_view bilingualText,
                         const std::optional<HistoryWordTimeline>& wordTimeline);
    /// Replaces the texts of the recording that was saved last, if it still exists and was not
    /// refined since.
    RecordingTranscriptSaveOutcome updateLastSavedTranscripts(std::string_view sourceText,
                                                              std::string_view bilingualText);

    /// The current recording as it was when it began.
    const std::optional<RecordingMetadata>& currentAsBegun() const { return asBegun_; }
    /// The current recording's entry in the catalog now.
    std::optional<RecordingMetadata> currentRecordingMetadata() const;
    std::optional<std::filesystem::path> currentAudioPath() const;

  private:
    Host& host_;
    FileSystem& files_;
    RecordingCatalog& catalog_;
    TessaruneFileLogger& logger_;
    std::optional<UUID> currentID_;
    std::optional<UUID> lastSavedID_;
    std::optional<RecordingMetadata> asBegun_;
    std::optional<double> currentStartedAt_;
    std::unique_ptr<SessionJournal> journal_;
};

} // namespace tessarune
