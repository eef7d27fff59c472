#include "Tessarune/speech/SpeechResultSummary.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

void to_json(nlohmann::ordered_json& json, const SpeechResultSummary& summary) {
    json = JSON::Object()
               .add("sequence", summary.sequence)
               .add("receivedAt", summary.receivedAt)
               .add("localeIdentifier", summary.localeIdentifier)
               .add("isFinal", summary.isFinal)
               .add("characterCount", summary.characterCount)
               .add("utf8Count", summary.utf8Count)
               .add("wordCount", summary.wordCount)
               .add("runCount", summary.runCount)
               .add("timedRunCount", summary.timedRunCount)
               .add("audioStartSeconds", summary.audioStartSeconds)
               .add("audioEndSeconds", summary.audioEndSeconds)
               .add("audioDurationSeconds", summary.audioDurationSeconds)
               .add("textHash", summary.textHash)
               .add("textPreview", summary.textPreview)
               .add("requestedSpeechOptions", summary.requestedSpeechOptions)
               .take();
}

} // namespace tessarune
