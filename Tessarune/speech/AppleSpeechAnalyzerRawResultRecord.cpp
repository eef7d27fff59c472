#include "Tessarune/speech/AppleSpeechAnalyzerRawResultRecord.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

using Record = AppleSpeechAnalyzerRawResultRecord;

// The functions are not in the anonymous namespace, because the JSON library finds them by
// argument-dependent lookup, which ignores anonymous namespaces.

static void to_json(nlohmann::ordered_json& json, const Record::MirrorChild& child) {
    json = JSON::Object()
               .add("label", child.label)
               .add("type", child.type)
               .add("valuePreview", child.valuePreview)
               .take();
}

static void to_json(nlohmann::ordered_json& json, const Record::Run& run) {
    json = JSON::Object()
               .add("index", run.index)
               .add("text", run.text)
               .add("characterStart", run.characterStart)
               .add("characterEnd", run.characterEnd)
               .add("characterCount", run.characterCount)
               .add("utf8Count", run.utf8Count)
               .add("wordCount", run.wordCount)
               .add("hasConfidence", run.hasConfidence)
               .add("confidence", run.confidence)
               .add("hasAudioTimeRange", run.hasAudioTimeRange)
               .add("audioStartSeconds", run.audioStartSeconds)
               .add("audioEndSeconds", run.audioEndSeconds)
               .add("audioDurationSeconds", run.audioDurationSeconds)
               .add("audioStartCMTimeValue", run.audioStartCMTimeValue)
               .add("audioStartCMTimeScale", run.audioStartCMTimeScale)
               .add("audioEndCMTimeValue", run.audioEndCMTimeValue)
               .add("audioEndCMTimeScale", run.audioEndCMTimeScale)
               .add("audioDurationCMTimeValue", run.audioDurationCMTimeValue)
               .add("audioDurationCMTimeScale", run.audioDurationCMTimeScale)
               .add("mappedStartEpochSeconds", run.mappedStartEpochSeconds)
               .add("mappedEndEpochSeconds", run.mappedEndEpochSeconds)
               .add("debugDescription", run.debugDescription)
               .take();
}

static void to_json(nlohmann::ordered_json& json, const Record::Alternative& alternative) {
    json = JSON::Object()
               .add("index", alternative.index)
               .add("text", alternative.text)
               .add("characterCount", alternative.characterCount)
               .add("wordCount", alternative.wordCount)
               .add("runCount", alternative.runCount)
               .add("timedRunCount", alternative.timedRunCount)
               .add("runs", alternative.runs)
               .take();
}

static void to_json(nlohmann::ordered_json& json, const Record::EngineState& state) {
    json = JSON::Object()
               .add("generation", state.generation)
               .add("audioEpochSeconds", state.audioEpochSeconds)
               .add("latestAudioTimeSeconds", state.latestAudioTimeSeconds)
               .add("segmentStartEpochSeconds", state.segmentStartEpochSeconds)
               .add("revisionBeforeTessaruneProcessing", state.revisionBeforeTessaruneProcessing)
               .add("pendingPartialBeforeTessaruneProcessing",
                    state.pendingPartialBeforeTessaruneProcessing)
               .add("partialCoalesceWindowSeconds", state.partialCoalesceWindowSeconds)
               .add("analyzerInputChunkSeconds", state.analyzerInputChunkSeconds)
               .take();
}

void to_json(nlohmann::ordered_json& json, const Record& record) {
    json = JSON::Object()
               .add("schemaVersion", record.schemaVersion)
               .add("kind", record.kind)
               .add("sequence", record.sequence)
               .add("receivedAt", record.receivedAt)
               .add("localeIdentifier", record.localeIdentifier)
               .add("resultType", record.resultType)
               .add("resultDebugDescription", record.resultDebugDescription)
               .add("resultMirrorChildren", record.resultMirrorChildren)
               .add("textType", record.textType)
               .add("textDebugDescription", record.textDebugDescription)
               .add("isFinal", record.isFinal)
               .add("text", record.text)
               .add("characterCount", record.characterCount)
               .add("utf8Count", record.utf8Count)
               .add("wordCount", record.wordCount)
               .add("runCount", record.runCount)
               .add("timedRunCount", record.timedRunCount)
               .add("runs", record.runs)
               .add("alternativeCount", record.alternativeCount)
               .add("alternatives", record.alternatives)
               .add("engineState", record.engineState)
               .add("requestedSpeechOptions", record.requestedSpeechOptions)
               .add("note", record.note)
               .take();
}

} // namespace tessarune
