#include "Tessarune/session/LiveTranscriptStore.h"

#include <vector>

namespace tessarune {

void LiveTranscriptStore::changeCommittedSegments(
    const std::function<void(std::span<CaptionSegment>)>& change) {
    const CaptionCore::Rows& rows = *core_.committedSegments;
    std::vector<bool> wasTranslated;
    wasTranslated.reserve(rows.size());
    for (const CaptionSegment& row : rows)
        wasTranslated.push_back(row.translatedText.has_value());
    core_.committedSegments.mutate([&](CaptionCore::Rows& changed) { change(changed); });
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].translatedText.has_value() != wasTranslated[i])
            recordingTracker_.journalTranslation(rows[i]);
    }
}

void LiveTranscriptStore::setStatusMessage(const std::string& text) {
    view_.status = SessionStatus{SessionStatus::Kind::translation, text};
}

void LiveTranscriptStore::appendTranslationObservation(const TranslationObservation& observation) {
    environment_.diagnostics->appendTranslation(observation);
}

void LiveTranscriptStore::updatePersistedTranscriptIfStopped() {
    if (*view_.isListening || texts_.hasFewerTranslationsThanSaved())
        return;
    using Outcome = RecordingTranscriptSaveOutcome;
    const TranscriptSnapshot texts = texts_.savedTexts();
    texts_.noteSaved();
    const Outcome outcome =
        recordingTracker_.updateLastSavedTranscripts(texts.sourceText, texts.bilingualText);
    if (outcome == Outcome::saved)
        environment_.diagnostics->updateFinishedSnapshot(texts_.runTexts());
    if (outcome == Outcome::failed)
        log_.event("recording.transcript.updateSnapshot.skipped",
                   {{"reason", "transcriptPersistFailed"}}, Importance::important);
}

bool LiveTranscriptStore::keepsTextsForDiagnosis() const {
    return environment_.diagnostics->capturesFullDiagnostics();
}

} // namespace tessarune
