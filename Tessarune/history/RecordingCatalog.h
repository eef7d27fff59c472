#pragma once

#include "Tessarune/audio/AudioSessionRecorder.h"
#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/RecordingTranscriptSaveOutcome.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/shell/TessarunePaths.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/NotificationCenter.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

class RecordingIndex;

namespace NotificationName {
/// After this process has saved the index, or has noticed that another process did. No object.
inline constexpr std::string_view recordingCatalogDidChange = "recordingCatalogDidChange";
/// After a recording's transcripts were saved. The object is the recording's UUID.
inline constexpr std::string_view recordingTranscriptDidUpdate = "recordingTranscriptDidUpdate";
} // namespace NotificationName

/// The durable record of all recorded sessions and imports: the index "recordings.json", the audio
/// in "Recordings", and the sidecars in "Transcripts", whose names begin with the recording's UUID.
/// docs/data-directory.md has the formats.
///
/// Any thread may call. Changes of the index, replacements of transcripts and changes of marks run
/// one by one on the queue "Tessarune.RecordingCatalog.index", and the caller blocks; only repairs
/// at launch may make such changes on the calling thread. The functions that save one sidecar, and
/// all functions that read files, work on the calling thread and rely on files being replaced
/// atomically. Notifications are posted on the calling thread afterwards. Only one process at a
/// time may write the recordings: the owner of the DataFolderHold.
///
/// Unknown content is kept until `deleteAll`: unknown keys of an entry and elements that are not
/// entries stay in the index unchanged, and an unreadable index is kept aside, as
/// "recordings.json.unreadable-<stamp>", before another one takes its place.
///
/// Failures never throw, except from `prepareDirectories`. Results report changes that failed;
/// content that cannot be read is missing from the results.
class RecordingCatalog {
  public:
    /// All references must outlive the catalog.
    RecordingCatalog(Host& host, FileSystem& files, TessarunePaths paths,
                     TessaruneFileLogger& logger, NotificationCenter& notifications);
    ~RecordingCatalog();
    RecordingCatalog(const RecordingCatalog&) = delete;
    RecordingCatalog& operator=(const RecordingCatalog&) = delete;

    const TessarunePaths& paths() const { return paths_; }
    /// Whether an unreadable index is kept aside under this name.
    bool isAside(std::string_view name) const;

    /// Creates the folders for audio and diagnostics. Throws std::system_error if the folder for
    /// audio cannot be created.
    void prepareDirectories();

    /// The part of this catalog that the recorder uses; the catalog must outlive it.
    AudioSessionRecorder::Catalog forRecorder();

    // Index. Changes return whether the index was saved.

    /// The entries on the disk, newest first. Empty if the index is missing or unreadable.
    std::vector<RecordingMetadata> recordings();
    std::optional<RecordingMetadata> recording(const UUID& id);
    /// Why recordings cannot be listed, for the user; empty if they can, even if there are none
    /// yet.
    std::string readingProblem();
    /// Whether the index on the disk may differ from what this process last wrote, judged by its
    /// modification time.
    bool wasIndexChangedElsewhere();

    /// Replaces the entry of the same id or adds one. Keeps the stored note and the stored mark for
    /// compression if `recording` has none. False for a recording that this process deleted: a late
    /// write does not restore it.
    bool upsert(const RecordingMetadata& recording);
    enum class Runs { areRemoved, stay };
    /// Removes a recording with all its audio, sidecars, diagnostics runs and log lines. When a
    /// session discards its own recording the runs stay: one of them is still being written.
    bool deleteRecording(const UUID& id, Runs runs = Runs::areRemoved);
    /// Whether this process deleted the recording; nothing may be written for it any more.
    bool wasDeleted(const UUID& id);
    /// An empty note is stored as none. An unknown id changes nothing.
    bool setNote(const std::string& note, const UUID& id);
    /// Sets whether a later launch of the program encodes the WAV as M4A. A recording that is not
    /// listed yet, because the index cannot be written, is marked when it is listed.
    bool markForCompression(bool awaitsCompression, const UUID& id);
    bool deleteAll();

    // Sidecars. False if the sidecar could not be saved; the former one then remains.

    bool saveTranscript(std::string_view text, const UUID& id);
    /// Trims the text; an empty text removes the sidecar.
    bool saveBilingualTranscript(std::string_view text, const UUID& id);
    /// A timeline without words and sentences removes the sidecar.
    bool saveWordTimeline(const std::optional<HistoryWordTimeline>& timeline, const UUID& id);

    /// The next two functions replace the transcripts of a recording that still exists, all of them
    /// or none; the next launch completes an interrupted replacement. No deletion can run at the
    /// same time. `saveRefinedSourceTranscript` keeps the bilingual text.
    RecordingTranscriptSaveOutcome
    saveRefinedTranscript(std::string_view sourceText, std::string_view bilingualText,
                          const std::optional<HistoryWordTimeline>& wordTimeline, const UUID& id);
    RecordingTranscriptSaveOutcome
    saveRefinedSourceTranscript(std::string_view sourceText,
                                const std::optional<HistoryWordTimeline>& wordTimeline,
                                const UUID& id);

    struct TranscriptUpdate {
        RecordingTranscriptSaveOutcome outcome = RecordingTranscriptSaveOutcome::failed;
        bool sourceSaved = false; ///< includes the word times, if they were to be saved
        bool bilingualSaved = false;
    };
    /// Replaces the texts that a session has saved: the source text is the same, the translations
    /// are newer. Saves nothing if the recording is not listed or was refined meanwhile, by this
    /// process or another one. No deletion can run at the same time.
    TranscriptUpdate updateTranscripts(std::string_view sourceText, std::string_view bilingualText,
                                       const UUID& id);
    /// The same for transcripts that could not be saved at the end of their session. A text that
    /// another process recovered from the journal is no refinement, and is replaced.
    TranscriptUpdate saveTranscriptsAgain(std::string_view sourceText,
                                          std::string_view bilingualText,
                                          const std::optional<HistoryWordTimeline>& wordTimeline,
                                          const UUID& id);

    /// The state of the work on an import whose text and translation are made for the first time.
    enum class TranscriptionMark {
        none,
        running,    ///< if a launch finds this, the program ended unexpectedly during the work
        interrupted ///< by a regular end of the program: a later launch completes the work
    };
    /// Sets or removes the mark; a deleted recording gets none. Returns whether the change was
    /// saved.
    bool markTranscription(TranscriptionMark mark, const UUID& id);
    /// A mark that cannot be read counts as `running`.
    TranscriptionMark transcriptionMark(const UUID& id) const;

    /// How many times the program has ended unexpectedly while it compressed the recording in the
    /// background. The compressor adds 1 before an attempt and sets 0 after it. A deleted recording
    /// gets no count.
    std::size_t compressionAttempts(const UUID& id) const;
    bool setCompressionAttempts(std::size_t attempts, const UUID& id);

    std::filesystem::path transcriptURL(const UUID& id) const;
    std::filesystem::path bilingualTranscriptURL(const UUID& id) const;
    std::filesystem::path wordTimelineURL(const UUID& id) const;
    /// The session's journal, see SessionJournal.
    std::filesystem::path journalURL(const UUID& id) const;
    /// The file of `markTranscription`.
    std::filesystem::path transcriptionMarkURL(const UUID& id) const;
    /// The file of `setCompressionAttempts`, with one byte for each attempt.
    std::filesystem::path compressionMarkURL(const UUID& id) const;
    /// A copy of the entry, from which a lost index is rebuilt and an outdated one completed.
    std::filesystem::path entryURL(const UUID& id) const;
    /// The suffix of a refined transcript or timeline that has not yet replaced the former one.
    static constexpr std::string_view replacementSuffix = ".refined";
    /// Whether the name is one that a sidecar of a recording can have.
    bool isSidecar(std::string_view name) const;
    static std::filesystem::path replacementOf(const std::filesystem::path& sidecar);
    /// Marks the copied sound of an import until the index lists it; see
    /// `cleanupOrphanTranscripts`.
    static std::filesystem::path unlistedImportMark(const std::filesystem::path& sound);

    /// Posts `recordingTranscriptDidUpdate`. For a session that has saved its transcripts one by
    /// one; the replacements above post it themselves.
    void announceTranscript(const UUID& id);

    // Diagnostics

    /// The newest run that names the recording.
    std::optional<std::filesystem::path> diagnosticsRunURL(const UUID& id);
    /// All runs that name one of the recordings, newest first.
    std::vector<std::filesystem::path> diagnosticsRunURLs(const std::set<UUID>& matching);

    // Repairs at launch, before anything else uses the catalog, in this order (RecordingRepair runs
    // them all).

    struct IndexRebuild {
        std::filesystem::path keptAside; ///< empty if the index was missing or empty
        std::size_t recordings = 0;      ///< entries found again
    };
    /// Rebuilds a lost or unreadable index from its readable parts and from the entries beside the
    /// transcripts. `nullopt` if there was nothing to rebuild, or if the rebuilding failed.
    std::optional<IndexRebuild> rebuildUnreadableIndex();
    /// Sets the end of each entry that has none, computed from its duration.
    void healStaleRecordings();
    /// Removes entries whose audio is missing, unless the disk of the recordings seems not to be
    /// mounted. Returns how many.
    std::size_t reconcileIndex();
    /// Adds finished recordings that an outdated or damaged index lacks. Then removes sidecars of
    /// unknown recordings, and the sound of imports that a crash kept out of the index. Removes
    /// nothing while the index may be incomplete or an unreadable one is kept aside: the files may
    /// belong to recordings that are missing from the index.
    void cleanupOrphanTranscripts();

  private:
    /// How one kind of sidecar appears in logs.
    struct SidecarKind {
        const char* kind;
        const char* event;
    };
    /// The new content of a sidecar; without content the sidecar is removed.
    struct NewSidecar {
        std::filesystem::path path;
        std::optional<std::string> content;
    };
    enum class IndexState { good, missing, unreadable };
    struct LoadedIndex;

    LoadedIndex loadIndex();
    void findMovedSound(RecordingIndex& index);
    bool mutateIndex(const std::function<void(RecordingIndex&)>& mutate);
    void writeIndex(RecordingIndex& index);
    std::filesystem::path keepAside(const std::string& bytes);
    std::filesystem::path moveAside();
    std::filesystem::path asidePath() const;
    std::vector<std::string> entriesBesideTranscripts(const std::set<UUID>& known = {});
    RecordingIndex forgotten(const RecordingIndex& listed);
    std::set<UUID> relistForgotten(const RecordingIndex& listed);

    void removeOwned(const RecordingMetadata& recording, Runs runs);
    std::vector<std::filesystem::path> sidecars(const UUID& id) const;
    bool removeSidecars(const UUID& id);
    bool removeQuietly(const std::filesystem::path& path);
    void removeRun(const std::filesystem::path& run);
    std::vector<std::filesystem::path> audioArtifactURLs(const RecordingMetadata& recording) const;

    bool saveMark(const std::filesystem::path& mark, std::optional<std::string> content,
                  const UUID& id);
    std::filesystem::path sidecar(const UUID& id, std::string_view suffix) const;
    bool saveSidecar(SidecarKind kind, const UUID& id, const std::filesystem::path& path,
                     const std::function<void()>& save);
    void recordSidecarSaveFailure(SidecarKind kind, const UUID& id,
                                  const std::filesystem::path& path, const std::exception& error);
    void writeSidecar(const std::filesystem::path& path, std::string_view content);
    NewSidecar newBilingual(std::string_view text, const UUID& id) const;
    std::optional<std::string> storedText(const UUID& id) const;
    NewSidecar newTimeline(const std::optional<HistoryWordTimeline>& timeline,
                           const UUID& id) const;
    void write(const NewSidecar& sidecar);
    TranscriptUpdate update(const UUID& id,
                            const std::function<bool(const std::string&)>& isFormerText,
                            const std::function<void(TranscriptUpdate&)>& save);
    void replaceTogether(const std::vector<NewSidecar>& sidecars);
    void writeEntry(const RecordingIndex& index, const UUID& id);
    void removeUnlistedImports(const std::set<UUID>& known);
    std::size_t removeOrphans(const std::set<UUID>& known);
    RecordingTranscriptSaveOutcome saveGuarded(SidecarKind kind, std::string_view what,
                                               const UUID& id,
                                               const std::vector<NewSidecar>& sidecars);

    bool isSurelyMissing(const std::filesystem::path& path);
    bool hasNoSound();
    bool namesRecording(const std::filesystem::path& run, const std::set<std::string>& ids);

    Host& host_;
    FileSystem& files_;
    TessarunePaths paths_;
    TessaruneFileLogger& logger_;
    NotificationCenter& notifications_;
    std::shared_ptr<SerialQueue> queue_;
    std::atomic<double> indexWrittenAt_ = 0; ///< the index's modification time, set by writeIndex
    // What this process has done with recordings; used on the queue only
    std::set<UUID> deleted_;
    std::set<UUID> refined_;
    std::set<UUID> toCompress_; // marked for compression and not yet compressed
};

} // namespace tessarune
