#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"

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

/// As they are saved: a text without any translation is no bilingual one.
TranscriptSnapshot LiveTranscriptStore::textsToSave() {
    TranscriptSnapshot texts = exportTranscriptSnapshot();
    savedTranslations_ = TranslationPresentationBuilder::translatedCount(*core_.committedSegments);
    if (savedTranslations_ == 0)
        texts.bilingualText.clear();
    return texts;
}

void LiveTranscriptStore::updatePersistedTranscriptIfStopped() {
    // Translations that were taken away stay saved until others have come in their place.
    if (*view_.isListening || TranslationPresentationBuilder::translatedCount(
                                  *core_.committedSegments) < savedTranslations_)
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
