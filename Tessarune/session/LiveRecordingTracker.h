#pragma once

#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/history/DataFolderHold.h"
#include "Tessarune/history/HistoryRefinementRequest.h"
#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/history/SessionJournal.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessarune {

/// Keeps track of the recording of the running session, the journal of its rows, and the recording
/// that was saved last. Main queue. All references must outlive it.
class LiveRecordingTracker {
  public:
    /// After the end of a session its recording is written only while `leaseDataFolder` returns a
    /// hold.
    LiveRecordingTracker(Host& host, FileSystem& files, RecordingCatalog& catalog,
                         TessaruneFileLogger& logger,
                         std::function<DataFolderLease()> leaseDataFolder = unsharedDataFolder)
        : host_(host),
          files_(files),
          catalog_(catalog),
          logger_(logger),
          leaseDataFolder_(std::move(leaseDataFolder)) {}
    ~LiveRecordingTracker() { saveAgain(); }
    LiveRecordingTracker(const LiveRecordingTracker&) = delete;

    const std::optional<UUID>& currentID() const { return currentID_; }
    const std::optional<UUID>& lastSavedID() const { return lastSavedID_; }
    bool hasCurrentRecording() const { return currentID_.has_value(); }
    /// When the current recording began, on the clock of the word times. Corrected when the time of
    /// the first sample in its file becomes known.
    std::optional<double> currentStartedAt() const { return currentStartedAt_; }

    void reset();

    /// Called when a retry has saved the texts of a recording, with the request to refine it, if
    /// there is one. The destructor makes the last retry; the owner clears the callback if it must
    /// not be called then.
    std::function<void(const std::optional<HistoryRefinementRequest>&)> onSavedAgain;

    /// Call when a recording has begun. It becomes the current one, and its journal begins with the
    /// committed rows so far; a previous current recording is deleted. If the session is already
    /// over, deletes the new recording instead.
    void handleStarted(const RecordingMetadata& metadata, bool isListening, const CaptionCore& core,
                       const std::string& recognitionOptionID);
    /// Notes the host time of the first sample in the file of a recording.
    void handleFirstSample(const UUID& recording, double heardAt);
    /// Call when the recorder has closed the file of a recording. If the recorder could not
    /// complete the entry in the catalog, completes it; if that fails, too, `saveTranscripts` and
    /// its retries try again.
    void handleFinished(const RecordingMetadata& metadata);
    /// Deletes the current recording and its journal, but keeps its diagnostics run.
    void discardCurrentRecordingIfAny();

    /// Writes committed rows to the journal, from which they are recovered after a crash.
    void journal(const CaptionCore& core, std::span<const CaptionSegment> rows);
    /// Writes a row to the journal again, after its translation was added or removed.
    void journalTranslation(const CaptionSegment& row);

    /// Flushes the journal to the disk, so that it survives a power failure. Resumes on the main
    /// queue.
    Task<void> synchronizeJournal();

    /// Saves the texts of the current recording, and the end time in its entry if that is missing.
    /// Afterwards, no recording is current, even after failures. Returns false if anything could
    /// not be saved; true also if nothing was recorded or the user has deleted the recording.
    ///
    /// A failed save is repeated at the start of the next recording and by the destructor, unless
    /// another program writes the data folder. After the destructor, only the next launch of the
    /// program can recover what the journal contains.
    bool saveTranscripts(std::string_view sourceText, std::string_view bilingualText,
                         const std::optional<HistoryWordTimeline>& wordTimeline,
                         const std::optional<HistoryRefinementRequest>& refinement = {});
    /// Replaces the texts of the recording that was saved last, if it still exists and has not been
    /// refined in the meantime. Fails while another program writes the data folder, and is then
    /// repeated like a failed save.
    RecordingTranscriptSaveOutcome updateLastSavedTranscripts(std::string_view sourceText,
                                                              std::string_view bilingualText);

    /// The data of the current recording at its start.
    const std::optional<RecordingMetadata>& currentAtStart() const { return atStart_; }
    /// The recorded seconds of the current recording; 0 until its file is closed.
    double currentDuration() const { return finished_ ? finished_->duration : 0; }
    /// The entry of the current recording in the catalog.
    std::optional<RecordingMetadata> currentRecordingMetadata() const;
    std::optional<std::filesystem::path> currentAudioPath() const;

  private:
    /// Texts that could not be saved.
    struct Unsaved {
        UUID id;
        std::string sourceText;
        std::string bilingualText;
        std::optional<HistoryWordTimeline> timeline;
        std::optional<HistoryRefinementRequest> refinement;
        std::optional<RecordingMetadata> finished;
    };
    /// Newer texts of a saved recording that wait until no other program writes the data folder.
    struct Late {
        UUID id;
        std::string sourceText;
        std::string bilingualText;
    };
    void saveAgain();
    bool saveAgain(const Unsaved& texts);
    bool finishEntry(const std::optional<RecordingMetadata>& finished);

    Host& host_;
    FileSystem& files_;
    RecordingCatalog& catalog_;
    TessaruneFileLogger& logger_;
    const std::function<DataFolderLease()> leaseDataFolder_;
    std::optional<UUID> currentID_;
    std::optional<UUID> lastSavedID_;
    std::optional<RecordingMetadata> atStart_;
    std::optional<RecordingMetadata> finished_; ///< the argument of `handleFinished`
    std::optional<double> currentStartedAt_;
    std::unique_ptr<SessionJournal> journal_;
    std::vector<Unsaved> unsaved_;
    std::optional<Late> late_;
};

} // namespace tessarune
