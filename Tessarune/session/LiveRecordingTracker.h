#pragma once

#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/UUID.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace tessarune {

/// Which recording belongs to the running session, and which was saved last. Main queue. The
/// catalog and the logger must outlive it.
class LiveRecordingTracker {
  public:
    LiveRecordingTracker(RecordingCatalog& catalog, TessaruneFileLogger& logger)
        : catalog_(catalog), logger_(logger) {}

    const std::optional<UUID>& currentID() const { return currentID_; }
    const std::optional<UUID>& lastSavedID() const { return lastSavedID_; }
    bool hasCurrentRecording() const { return currentID_.has_value(); }
    /// The start of the current recording on the clock of the words' times.
    std::optional<double> currentStartedAt() const { return currentStartedAt_; }

    void reset();

    /// A recording has begun. One whose session is over by now is deleted.
    void handleStarted(const RecordingMetadata& metadata, bool isListening);
    void discardCurrentRecordingIfAny();

    /// Saves the texts of the current recording, which is then no longer current, whatever could
    /// be saved of them. False if anything could not.
    bool saveTranscripts(std::string_view sourceText, std::string_view bilingualText,
                         const std::optional<HistoryWordTimeline>& wordTimeline);
    /// As above, for the recording that was saved last.
    bool updateLastSavedTranscripts(std::string_view sourceText, std::string_view bilingualText);

    /// The current recording as it stands in the catalog at this moment.
    std::optional<RecordingMetadata> currentRecordingMetadata() const;
    std::optional<std::filesystem::path> currentAudioPath() const;

  private:
    RecordingCatalog& catalog_;
    TessaruneFileLogger& logger_;
    std::optional<UUID> currentID_;
    std::optional<UUID> lastSavedID_;
    std::optional<double> currentStartedAt_;
};

} // namespace tessarune
