#include "Tessarune/speech/AppleSpeechAnalyzerSummaryRecord.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

void to_json(nlohmann::ordered_json& json, const AppleSpeechAnalyzerSummaryRecord& record) {
    json = static_cast<const SpeechResultSummary&>(record);
    json.update(
        JSON::Object()
            .add("schemaVersion", record.schemaVersion)
            .add("kind", record.kind)
            .add("confidenceRunCount", record.confidenceRunCount)
            .add("minConfidence", record.minConfidence)
            .add("avgConfidence", record.avgConfidence)
            .add("alternativeCount", record.alternativeCount)
            .add("mappedStartEpochSeconds", record.mappedStartEpochSeconds)
            .add("mappedEndEpochSeconds", record.mappedEndEpochSeconds)
            .add("latestAudioTimeSeconds", record.latestAudioTimeSeconds)
            .add("revisionBeforeTessaruneProcessing", record.revisionBeforeTessaruneProcessing)
            .add("pendingPartialBeforeTessaruneProcessing",
                 record.pendingPartialBeforeTessaruneProcessing)
            .take());
}

} // namespace tessarune
