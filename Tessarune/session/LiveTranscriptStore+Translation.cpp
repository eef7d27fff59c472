#include "Tessarune/session/LiveTranscriptStore.h"

#include <algorithm>

namespace tessarune {

void LiveTranscriptStore::setTranslationStatusMessage(const std::string& text) {
    translationStatusMessage = text;
    environment_.translation.setTranslationStatusMessage(text);
}

void LiveTranscriptStore::changeCommittedSegments(
    const std::function<void(std::span<CaptionSegment>)>& change) {
    core.committedSegments.mutate([&](CaptionCore::Rows& rows) { change(rows); });
}

void LiveTranscriptStore::translationLanded(std::span<const UUID> segmentIDs) {
    if (!journal_)
        return;
    // Translations land on rows near the end.
    auto left = static_cast<std::ptrdiff_t>(segmentIDs.size());
    const CaptionCore::Rows& rows = *core.committedSegments;
    for (auto row = rows.rbegin(); row != rows.rend() && left > 0; ++row) {
        if (std::find(segmentIDs.begin(), segmentIDs.end(), row->id) == segmentIDs.end())
            continue;
        journal_->append(*row);
        --left;
    }
}

void LiveTranscriptStore::updatePersistedTranscriptIfStopped() {
    if (*isListening)
        return;
    const TranscriptSnapshot snapshot = exportTranscriptSnapshot();
    if (recordingTracker_.updateLastSavedTranscripts(snapshot.sourceText, snapshot.bilingualText)) {
        environment_.diagnostics.updateFinishedSnapshot(snapshot);
        return;
    }
    log("recording.transcript.updateSnapshot.skipped", {{"reason", "transcriptPersistFailed"}},
        Importance::important);
}

void LiveTranscriptStore::beginJournal(const RecordingMetadata& metadata) {
    journal_ = std::make_unique<SessionJournal>(
        host(), environment_.files, logger(), environment_.catalog.journalURL(metadata.id),
        metadata.monotonicStart.value_or(metadata.startedAt),
        *environment_.settings.selectedRecognitionOptionID);
    for (const CaptionSegment& row : *core.committedSegments)
        journal(row);
}

void LiveTranscriptStore::journal(const CaptionSegment& row) {
    if (!journal_)
        return;
    const auto words = core.wordEvents().find(row.id);
    if (words == core.wordEvents().end()) {
        journal_->append(row);
    } else {
        journal_->append(row, words->second);
    }
}

} // namespace tessarune
