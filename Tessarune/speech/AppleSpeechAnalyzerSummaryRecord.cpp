#include "Tessarune/speech/AppleSpeechAnalyzerSummaryRecord.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

void to_json(nlohmann::ordered_json& json, const AppleSpeechAnalyzerSummaryRecord& record) {
    json = JSON::Object()
               .add("schemaVersion", record.schemaVersion)
               .add("kind", record.kind)
               .add("sequence", record.sequence)
               .add("receivedAt", record.receivedAt)
               .add("localeIdentifier", record.localeIdentifier)
               .add("isFinal", record.isFinal)
               .add("characterCount", record.characterCount)
               .add("utf8Count", record.utf8Count)
               .add("wordCount", record.wordCount)
               .add("runCount", record.runCount)
               .add("timedRunCount", record.timedRunCount)
               .add("confidenceRunCount", record.confidenceRunCount)
               .add("minConfidence", record.minConfidence)
               .add("avgConfidence", record.avgConfidence)
               .add("alternativeCount", record.alternativeCount)
               .add("audioStartSeconds", record.audioStartSeconds)
               .add("audioEndSeconds", record.audioEndSeconds)
               .add("audioDurationSeconds", record.audioDurationSeconds)
               .add("mappedStartEpochSeconds", record.mappedStartEpochSeconds)
               .add("mappedEndEpochSeconds", record.mappedEndEpochSeconds)
               .add("latestAudioTimeSeconds", record.latestAudioTimeSeconds)
               .add("revisionBeforeTessaruneProcessing", record.revisionBeforeTessaruneProcessing)
               .add("pendingPartialBeforeTessaruneProcessing",
                    record.pendingPartialBeforeTessaruneProcessing)
               .add("textHash", record.textHash)
               .add("textPreview", record.textPreview)
               .add("requestedSpeechOptions", record.requestedSpeechOptions)
               .take();
}

} // namespace tessarune
