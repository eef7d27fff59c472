#include "Tessarune/session/LiveRecordingTracker.h"

namespace tessarune {

void LiveRecordingTracker::reset() {
    currentID_.reset();
    lastSavedID_.reset();
    currentStartedAt_.reset();
}

void LiveRecordingTracker::handleStarted(const RecordingMetadata& metadata, bool isListening) {
    if (!isListening) {
        catalog_.deleteRecording(metadata.id);
        return;
    }
    currentID_ = metadata.id;
    lastSavedID_.reset();
    currentStartedAt_ = metadata.monotonicStart.value_or(metadata.startedAt);
}

void LiveRecordingTracker::discardCurrentRecordingIfAny() {
    if (currentID_)
        catalog_.deleteRecording(*currentID_);
    reset();
}

bool LiveRecordingTracker::saveTranscripts(std::string_view sourceText,
                                           std::string_view bilingualText,
                                           const std::optional<HistoryWordTimeline>& wordTimeline) {
    if (!currentID_)
        return true;
    const UUID id = *currentID_;
    const bool sourceSaved = catalog_.saveTranscript(sourceText, id);
    const bool bilingualSaved = catalog_.saveBilingualTranscript(bilingualText, id);
    const bool timelineSaved = catalog_.saveWordTimeline(wordTimeline, id);
    // Texts of a recording that the catalog could not take are not kept beyond this run.
    const bool isListed = catalog_.recording(id).has_value();
    lastSavedID_ = id;
    currentID_.reset();
    currentStartedAt_.reset();

    const bool allSaved = sourceSaved && bilingualSaved && timelineSaved && isListed;
    if (allSaved) {
        catalog_.announceTranscript(id);
    } else {
        logger_.important("recording.transcript.persist.degraded",
                          {{"recordingID", id.text()},
                           {"sourceSaved", sourceSaved},
                           {"bilingualSaved", bilingualSaved},
                           {"timelineSaved", timelineSaved},
                           {"isListed", isListed}});
    }
    return allSaved;
}

bool LiveRecordingTracker::updateLastSavedTranscripts(std::string_view sourceText,
                                                      std::string_view bilingualText) {
    if (!lastSavedID_)
        return true;
    const bool sourceSaved = catalog_.saveTranscript(sourceText, *lastSavedID_);
    const bool bilingualSaved = catalog_.saveBilingualTranscript(bilingualText, *lastSavedID_);
    if (sourceSaved && bilingualSaved) {
        catalog_.announceTranscript(*lastSavedID_);
        return true;
    }
    logger_.important("recording.transcript.update.degraded",
                      {{"recordingID", lastSavedID_->text()},
                       {"sourceSaved", sourceSaved},
                       {"bilingualSaved", bilingualSaved}});
    return false;
}

std::optional<RecordingMetadata> LiveRecordingTracker::currentRecordingMetadata() const {
    return currentID_ ? catalog_.recording(*currentID_) : std::nullopt;
}

std::optional<std::filesystem::path> LiveRecordingTracker::currentAudioPath() const {
    const auto recording = currentRecordingMetadata();
    return recording ? std::optional<std::filesystem::path>(recording->filePath) : std::nullopt;
}

} // namespace tessarune
