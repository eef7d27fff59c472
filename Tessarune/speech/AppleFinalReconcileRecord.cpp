#include "Tessarune/speech/AppleFinalReconcileRecord.h"

#include "Tessarune/speech/AppleFinalReconciler.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Text.h"

namespace tessarune {

void AppleFinalReconcileCandidate::setText(std::string newText) {
    constexpr std::size_t previewLimit = 220;
    text = std::move(newText);
    textHash = fnv1a64Hex(text);
    textPreview = AppleFinalReconciler::truncated(text, previewLimit);
    characterCount = static_cast<std::int64_t>(Text::length(text));
    wordCount = static_cast<std::int64_t>(Text::countOfWhiteSpaceSeparated(text));
}

std::string_view name(AppleFinalReconcileDecisionRecord::Decision decision) {
    using Decision = AppleFinalReconcileDecisionRecord::Decision;
    switch (decision) {
    case Decision::useFinal:
        return "useFinal";
    case Decision::useLastPartial:
        return "useLastPartial";
    case Decision::dropSuppressedFinal:
        return "dropSuppressedFinal";
    }
    return "";
}

void to_json(nlohmann::ordered_json& json, const AppleFinalReconcileCandidate& candidate) {
    json = JSON::Object()
               .add("sequence", candidate.sequence)
               .add("receivedAt", candidate.receivedAt)
               .add("isFinal", candidate.isFinal)
               .add("text", candidate.text)
               .add("textHash", candidate.textHash)
               .add("textPreview", candidate.textPreview)
               .add("characterCount", candidate.characterCount)
               .add("wordCount", candidate.wordCount)
               .add("runCount", candidate.runCount)
               .add("timedRunCount", candidate.timedRunCount)
               .add("confidenceRunCount", candidate.confidenceRunCount)
               .add("minConfidence", candidate.minConfidence)
               .add("avgConfidence", candidate.avgConfidence)
               .add("audioStartSeconds", candidate.audioStartSeconds)
               .add("audioEndSeconds", candidate.audioEndSeconds)
               .add("latestAudioTimeSeconds", candidate.latestAudioTimeSeconds)
               .add("requestedSpeechOptions", candidate.requestedSpeechOptions)
               .take();
}

void to_json(nlohmann::ordered_json& json, const AppleFinalReconcileDecisionRecord& record) {
    json = JSON::Object()
               .add("schemaVersion", record.schemaVersion)
               .add("kind", record.kind)
               .add("sequence", record.sequence)
               .add("receivedAt", record.receivedAt)
               .add("decision", name(record.decision))
               .add("reasons", record.reasons)
               .add("final", record.final)
               .add("lastPartial", record.lastPartial)
               .add("outputTextHash", record.outputTextHash)
               .add("outputTextPreview", record.outputTextPreview)
               .add("outputCharacterCount", record.outputCharacterCount)
               .add("outputWordCount", record.outputWordCount)
               .add("finalLastPartialSimilarity", record.finalLastPartialSimilarity)
               .add("finalToLastPartialWordRatio", record.finalToLastPartialWordRatio)
               .add("alternativeTranscriptionsRequested", record.alternativeTranscriptionsRequested)
               .add("shouldKeepFinalWordTimings", record.shouldKeepFinalWordTimings)
               .add("suppressedFinalsUntilAudioTime", record.suppressedFinalsUntilAudioTime)
               .take();
}

} // namespace tessarune
