#include "Tessarune/session/LiveTranscriptStore.h"

#include <utility>

namespace tessarune {

void LiveTranscriptStore::changeCommittedSegments(
    const std::function<void(std::span<CaptionSegment>)>& change) {
    core.committedSegments.mutate([&](CaptionCore::Rows& rows) { change(rows); });
}

void LiveTranscriptStore::translationLanded(std::span<const UUID> segmentIDs) {
    recordingTracker_.journalTranslations(core, segmentIDs);
}

void LiveTranscriptStore::showTranslationStatus(std::string text) {
    view_.status = SessionStatus{SessionStatus::Kind::translation, std::move(text)};
}

void LiveTranscriptStore::showTranslationMessage(std::string text) {
    if (*view_.translationStatusMessage != text)
        view_.translationStatusMessage = std::move(text);
}

void LiveTranscriptStore::showGhostTranslation(std::string text) {
    if (*view_.ghostTranslationText != text)
        view_.ghostTranslationText = std::move(text);
}

void LiveTranscriptStore::showTranslationPreparation(TranslationPreparationDisplayState state) {
    if (!(*view_.translationPreparationDisplayState == state))
        view_.translationPreparationDisplayState = std::move(state);
}

/// As they are saved: a text without any translation is no bilingual one.
TranscriptSnapshot LiveTranscriptStore::textsToSave() {
    TranscriptSnapshot texts = exportTranscriptSnapshot();
    savedTranslations_ = translatedRows();
    if (savedTranslations_ == 0)
        texts.bilingualText.clear();
    return texts;
}

void LiveTranscriptStore::updatePersistedTranscriptIfStopped() {
    // Translations that were taken away stay saved until others have come in their place.
    if (*view_.isListening || translatedRows() < savedTranslations_)
        return;
    using Outcome = RecordingTranscriptSaveOutcome;
    const TranscriptSnapshot texts = textsToSave();
    const Outcome outcome =
        recordingTracker_.updateLastSavedTranscripts(texts.sourceText, texts.bilingualText);
    if (outcome == Outcome::saved)
        environment_.diagnostics->updateFinishedSnapshot(texts);
    if (outcome == Outcome::failed)
        log_.event("recording.transcript.updateSnapshot.skipped",
                   {{"reason", "transcriptPersistFailed"}}, Importance::important);
}

} // namespace tessarune
