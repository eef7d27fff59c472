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

/// Which recording belongs to the running session, the journal of its rows, and which recording was
/// saved last. Main queue. All references must outlive it.
class LiveRecordingTracker {
  public:
    LiveRecordingTracker(Host& host, FileSystem& files, RecordingCatalog& catalog,
                         TessaruneFileLogger& logger)
        : host_(host), files_(files), catalog_(catalog), logger_(logger) {}

    const std::optional<UUID>& currentID() const { return currentID_; }
    const std::optional<UUID>& lastSavedID() const { return lastSavedID_; }
    bool hasCurrentRecording() const { return currentID_.has_value(); }
    /// The start of the current recording on the clock of the words' times.
    std::optional<double> currentStartedAt() const { return currentStartedAt_; }

    void reset();

    /// A recording has begun; what the core has committed so far opens its journal. A recording
    /// whose session is over by now is deleted, and so is one that this one takes the place of.
    void handleStarted(const RecordingMetadata& metadata, bool isListening, const CaptionCore& core,
                       const std::string& recognitionOptionID);
    /// Its diagnostics run stays.
    void discardCurrentRecordingIfAny();

    /// Rows were committed: a crash from now on leaves them in the journal.
    void journal(const CaptionCore& core, std::span<const CaptionSegment> rows);
    /// The translation of this row has come, or was taken away.
    void journalTranslation(const CaptionSegment& row);

    /// What was journalled so far survives a loss of power. Resumes on the main queue.
    Task<void> synchronizeJournal();

    /// Saves the texts of the current recording, which is then no longer current, whatever could
    /// be saved of them. False if anything could not; the next start then makes it from the
    /// journal. Of a recording that was deleted meanwhile there is nothing to save.
    bool saveTranscripts(std::string_view sourceText, std::string_view bilingualText,
                         const std::optional<HistoryWordTimeline>& wordTimeline);
    /// Replaces the texts of the recording that was saved last, if it is still there and nobody has
    /// refined them since.
    RecordingTranscriptSaveOutcome updateLastSavedTranscripts(std::string_view sourceText,
                                                              std::string_view bilingualText);

    /// The current recording as it was when it began.
    const std::optional<RecordingMetadata>& currentAsBegun() const { return asBegun_; }
    /// The current recording as it stands in the catalog at this moment.
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
