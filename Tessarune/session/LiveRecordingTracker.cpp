#include "Tessarune/session/LiveRecordingTracker.h"

#include <algorithm>
#include <utility>

namespace tessarune {

void LiveRecordingTracker::reset() {
    currentID_.reset();
    lastSavedID_.reset();
    atStart_.reset();
    finished_.reset();
    currentStartedAt_.reset();
    journal_.reset();
}

void LiveRecordingTracker::handleStarted(const RecordingMetadata& metadata, bool isListening,
                                         const CaptionCore& core,
                                         const std::string& recognitionOptionID) {
    if (!isListening) {
        catalog_.deleteRecording(metadata.id);
        return;
    }
    discardCurrentRecordingIfAny();
    saveAgain();
    currentID_ = metadata.id;
    atStart_ = metadata;
    currentStartedAt_ = metadata.monotonicStart.value_or(metadata.startedAt);
    journal_ =
        std::make_unique<SessionJournal>(host_, files_, logger_, catalog_.journalURL(metadata.id),
                                         *currentStartedAt_, recognitionOptionID);
    journal(core, *core.committedSegments);
}

void LiveRecordingTracker::handleFirstSample(const UUID& recording, double heardAt) {
    if (currentID_ != recording)
        return;
    currentStartedAt_ = heardAt;
    if (journal_)
        journal_->noteRecordingStart(heardAt);
}

void LiveRecordingTracker::handleFinished(const RecordingMetadata& metadata) {
    if (currentID_ != metadata.id)
        return;
    finished_ = metadata;
    finishEntry(finished_);
}

/// Writes the end and the size of a recording whose entry still lacks them, because the disk was
/// full when the recorder closed the file. False if that fails again.
bool LiveRecordingTracker::finishEntry(const std::optional<RecordingMetadata>& finished) {
    auto entry = finished ? catalog_.recording(finished->id) : std::nullopt;
    if (!entry || entry->endedAt)
        return true;
    entry->endedAt = finished->endedAt;
    entry->duration = finished->duration;
    if (entry->filePath == finished->filePath) { // otherwise it was compressed meanwhile
        entry->byteCount = finished->byteCount;
        entry->sampleRate = finished->sampleRate;
    }
    entry->note.reset(); // keeps the stored note, which may be newer
    return catalog_.upsert(*entry) || catalog_.wasDeleted(finished->id);
}

void LiveRecordingTracker::discardCurrentRecordingIfAny() {
    if (journal_)
        journal_->discard();
    if (currentID_)
        catalog_.deleteRecording(*currentID_, RecordingCatalog::Runs::stay);
    reset();
}

void LiveRecordingTracker::journal(const CaptionCore& core, std::span<const CaptionSegment> rows) {
    if (!journal_)
        return;
    for (const CaptionSegment& row : rows) {
        const auto words = core.wordEvents().find(row.id);
        if (words == core.wordEvents().end()) {
            journal_->append(row);
        } else {
            journal_->append(row, words->second);
        }
    }
}

void LiveRecordingTracker::journalTranslation(const CaptionSegment& row) {
    if (journal_)
        journal_->append(row);
}

Task<void> LiveRecordingTracker::synchronizeJournal() {
    if (!journal_)
        co_return;
    Task<void> synchronizing = journal_->synchronize(); // independent of the journal object
    co_await synchronizing;
}

bool LiveRecordingTracker::saveTranscripts(
    std::string_view sourceText, std::string_view bilingualText,
    const std::optional<HistoryWordTimeline>& wordTimeline,
    const std::optional<HistoryRefinementRequest>& refinement) {
    // A recording that the user deleted during its session must not reappear.
    if (currentID_ && catalog_.wasDeleted(*currentID_))
        discardCurrentRecordingIfAny();
    const std::unique_ptr<SessionJournal> journal = std::move(journal_);
    if (!currentID_)
        return true;
    const UUID id = *currentID_;
    const bool sourceSaved = catalog_.saveTranscript(sourceText, id);
    const bool bilingualSaved = catalog_.saveBilingualTranscript(bilingualText, id);
    const bool timelineSaved = catalog_.saveWordTimeline(wordTimeline, id);
    // The next launch removes the texts of an unlisted recording, so its journal must stay.
    const bool isListed = catalog_.recording(id).has_value();
    const std::optional<RecordingMetadata> finished = finished_;
    const bool isFinished = finishEntry(finished);
    reset();
    lastSavedID_ = id;

    const bool allSaved = sourceSaved && bilingualSaved && timelineSaved && isListed && isFinished;
    if (allSaved) {
        if (journal)
            journal->discard();
        catalog_.announceTranscript(id);
    } else {
        logger_.important("recording.transcript.persist.degraded",
                          {{"recordingID", id.text()},
                           {"sourceSaved", sourceSaved},
                           {"bilingualSaved", bilingualSaved},
                           {"timelineSaved", timelineSaved},
                           {"isListed", isListed},
                           {"isFinished", isFinished}});
        unsaved_.push_back({id, std::string(sourceText), std::string(bilingualText), wordTimeline,
                            refinement, finished});
    }
    return allSaved;
}

void LiveRecordingTracker::saveAgain() {
    if (unsaved_.empty() && !late_)
        return;
    const DataFolderLease lease = leaseDataFolder_();
    if (!lease.hold)
        return;
    if (late_ &&
        catalog_.updateTranscripts(late_->sourceText, late_->bilingualText, late_->id).outcome !=
            RecordingTranscriptSaveOutcome::failed)
        late_.reset();
    std::erase_if(unsaved_, [this](const Unsaved& texts) { return saveAgain(texts); });
}

/// Returns true if there is nothing left to save.
bool LiveRecordingTracker::saveAgain(const Unsaved& texts) {
    using Outcome = RecordingTranscriptSaveOutcome;
    if (!finishEntry(texts.finished)) // before the refinement, which needs the duration
        return false;
    const auto update = catalog_.saveTranscriptsAgain(texts.sourceText, texts.bilingualText,
                                                      texts.timeline, texts.id);
    if (update.outcome == Outcome::failed)
        return false;
    // The recording was not deleted: it is missing from the catalog because the disk was full. A
    // later launch lists the recording and needs the journal.
    if (update.outcome == Outcome::skippedDeleted && !catalog_.wasDeleted(texts.id))
        return true;
    try {
        files_.remove(catalog_.journalURL(texts.id));
    } catch (const std::exception&) { // the next launch removes it
    }
    if (update.outcome == Outcome::saved && onSavedAgain)
        onSavedAgain(texts.refinement);
    return true;
}

RecordingTranscriptSaveOutcome
LiveRecordingTracker::updateLastSavedTranscripts(std::string_view sourceText,
                                                 std::string_view bilingualText) {
    using Outcome = RecordingTranscriptSaveOutcome;
    if (!lastSavedID_)
        return Outcome::saved; // nothing was recorded, so there is nothing to update
    for (Unsaved& texts : unsaved_) {
        if (texts.id == *lastSavedID_) {
            texts.sourceText = sourceText;
            texts.bilingualText = bilingualText;
        }
    }
    const DataFolderLease lease = leaseDataFolder_();
    RecordingCatalog::TranscriptUpdate update;
    late_.reset();
    if (lease.hold)
        update = catalog_.updateTranscripts(sourceText, bilingualText, *lastSavedID_);
    else
        late_ = Late{*lastSavedID_, std::string(sourceText), std::string(bilingualText)};
    if (update.outcome == Outcome::failed) {
        logger_.important("recording.transcript.update.degraded",
                          {{"recordingID", lastSavedID_->text()},
                           {"sourceSaved", update.sourceSaved},
                           {"bilingualSaved", update.bilingualSaved}});
    }
    return update.outcome;
}

std::optional<RecordingMetadata> LiveRecordingTracker::currentRecordingMetadata() const {
    return currentID_ ? catalog_.recording(*currentID_) : std::nullopt;
}

std::optional<std::filesystem::path> LiveRecordingTracker::currentAudioPath() const {
    const auto recording = currentRecordingMetadata();
    return recording ? std::optional<std::filesystem::path>(recording->filePath) : std::nullopt;
}

} // namespace tessarune
