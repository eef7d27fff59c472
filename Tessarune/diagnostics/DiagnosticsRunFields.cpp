#include "Tessarune/diagnostics/DiagnosticsRunFields.h"

#include <algorithm>
#include <iterator>

namespace tessarune::DiagnosticsRunFields {

Table run() {
    return {
        {"manifest",
         {{"diagnosticsSchemaVersion", "3"},
          {"kind", "\"liveSessionDiagnosticsManifest\", or \"liveSessionCoreDiagnosticsManifest\" "
                   "for a run without texts"},
          {"runID, runDirectory", "the folder's name and path"},
          {"startedWall, finishedWall, durationSeconds",
           "seconds since 1970 by the wall clock, and their difference"},
          {"runMode, productComparable, resourceInterference",
           "that one recogniser ran, in the whole program"},
          {"diagnosticsLevel, capturesFullDiagnostics", "the level when the session started"},
          {"app", "the program", "app"},
          {"host", "the computer", "host"},
          {"runtime", "`recognition`: which kind of recogniser", anything},
          {"internalTools", "always off in a release", anything},
          {"capture", "what was listened to, and what was to be kept", "capture"},
          {"recognition",
           "the recogniser and the settings of the captions; of a core run `optionID`, "
           "`title` and `engine` alone",
           "recognition"},
          {"translation", "how it was set", "translation"},
          {"stop", "the fields of `listen.stop.requested`: who asked for the end", anything},
          {"display", "how captions were shown", "display"},
          {"performance", "`perfSampleIntervalSeconds`, and the `sampleRate` of the first sound",
           anything},
          {"summary", "what came of it", "summary"},
          {"enginePerf", "the counters of the pipeline at the end", anything},
          {"privacy", "of a core run: that it holds no texts, events, timeline or samples",
           anything},
          {"files",
           "the files of the run: `name`, `path`, `description`, `exists` and, if it exists, "
           "`bytes`, as they were when the manifest was written",
           "file"},
          {"lostRecords", "for each log how many records the disk did not take; empty: none",
           anything},
          {"analysisCommandsDisabledReason", "why there are no commands of analysis tools"},
          {"recordingID, audioPath, audioFile", "the recording; absent where nothing was recorded"},
          {"sourceTranscriptPath, bilingualTranscriptPath", "where its transcripts are"},
          {"refinementDiagnostics",
           "of the last time when the recording was transcribed again: `schemaVersion`, `status` "
           "(\"running\", \"finished\", \"skipped\", \"failed\"), the recording, its `files` and "
           "`counters`",
           anything}}},
        {"settings",
         {{"diagnosticsSchemaVersion, runMode, productComparable, resourceInterference",
           "as in the manifest"},
          {"host", "the computer", "host"},
          {"runtime, internalTools", "as in the manifest", anything},
          {"recognition", "the recogniser and the settings of the captions", "recognition"},
          {"capture", "what was listened to, and what was to be kept", "capture"},
          {"translation", "how it was set", "translation"},
          {"display", "how captions were shown", "display"},
          {"selectedRecognitionOptionID, selectedRecognitionTitle", "the recogniser"},
          {"translationBackend, translationTargetLanguage, softTranslationEnabled, "
           "softCaptionEnabled, softCaptionStableSeconds, sentenceSegmentation, "
           "clauseLevelSegmentation, hardClauseLevelSegmentation, softClauseLevelSegmentation, "
           "trueFreeze, freezeStableSeconds, duplicateCommitWindowSeconds, smoothStreaming, "
           "smoothPaceMS, subtitleLayoutMode, subtitleLyricsLayout, swapCaptionOrder, "
           "liveSubtitleWindowMaxSegments, sourceFontSize, translationFontSize, "
           "sourceFontColorHex, translationFontColorHex, bgColorHex, bgOpacity, highlightChanges, "
           "appleAnalyzerEarlyFinalize, appleAnalyzerHistoryRefinement, "
           "appleAnalyzerDiagnosticsMode, diagnosticsLevel, perfSampleIntervalSeconds, "
           "recordWhileCaptioning, recordLosslessAudio, sessionDiagnosticsEnabled",
           "the settings of these names"},
          {"capturesFullDiagnostics", "whether the run holds more than a core run"},
          {"liveCaptionDiagnostics, displayUnitDiagnostics, appleStreamDiagnostics",
           "how the logs of these names are sampled", anything}}},
        {"timeline",
         {schema,
          {"run",
           "`id`, `startedWall`, `audioFile`, `audioDurationSec`, `importMode` (\"live\"), "
           "`sampleRate`",
           anything},
          {"engines",
           "one recogniser: `optionID`, `title`, `caps` (what it does by itself), `config` "
           "(the captions' settings) and `segments`, the committed rows",
           "engine"},
          {"reference", "empty in a live run", anything}}},
        {"perfSummary",
         {schema,
          {"runMode, concurrentEngines, productComparable, resourceInterference, wallSeconds, "
           "title",
           "as in the manifest; how long the session was, and its recogniser"},
          {"stats, engines", "the counters of the pipeline at the end, in all and by recogniser",
           anything},
          {"host", "the computer", "host"},
          {"runtime, internalTools", "as in the manifest", anything},
          {"recognition", "the recogniser and the settings of the captions", "recognition"},
          {"capture", "what was listened to", "capture"},
          {"translation", "how it was set", "translation"}}},
        {"lifecycleEvents",
         {clockTime,
          {"name", "the step of the session, in dotted words"},
          {"phase", "\"instant\", \"start\", \"finish\" or \"failure\""},
          {"elapsedSeconds", "at a finish"},
          {"fields", "more about it, all of them texts", anything}}},
        {"app",
         {{"name, bundleIdentifier, version, build",
           "the program, under the name that it was started "
           "with"},
          {"buildConfiguration, distribution, liveCaptionRendering, speechAnalyzerLiveMaintenance, "
           "speechAnalyzerResults, liveStorePublishing, internalToolsEnabled",
           "fixed words that analysis tools compare"},
          {"bundlePath, executablePath", "where it lies"}}},
        {"host",
         {{"osVersion", "the distribution and its version, with the kernel's"},
          {"processorCount, activeProcessorCount",
           "of the computer, and those that the program may use, limits of its group included"},
          {"physicalMemoryBytes, physicalMemoryGB", "of the computer, or the limit of its group"},
          {"thermalState", "by the temperatures and limits in `/sys/class/thermal`; \"unknown\" "
                           "where there are none"},
          {"lowPowerMode", "by the platform's profile; \"unknown\" where there is none"},
          {"machineModel, hardwareMachine, cpuBrand",
           "the computer's model, its architecture and its processor"}}},
        {"capture",
         {{"recordWhileCaptioning, recordLosslessAudio, sessionDiagnosticsEnabled",
           "the settings of these names"},
          {"audioInactivityAutoStopEnabled, audioInactivityAutoStopMinutes, "
           "audioInactivityAutoStopSeconds, audioInactivityActiveLevelThreshold",
           "after how long a silence the session ends, and what counts as one"},
          {"audioSource",
           "`kind`, `displayName`, `usesSystemAudio`, `usesMicrophoneSource`, "
           "`deviceID`",
           anything},
          {"audioSourceKind, audioSourceName", "the same once more"}}},
        {"recognition",
         {{"optionID, title, engine", "the recogniser"},
          {"punctuatesNatively, selfSegments, streamsWordByWord, providesWordTimestamps, isOnline, "
           "boundaryUnit, maxUnpunctuatedUnits",
           "what it does by itself"},
          {"sentenceSegmentation, clauseLevelSegmentation, hardClauseLevelSegmentation, "
           "softClauseLevelSegmentation, trueFreeze, freezeStableSeconds, "
           "duplicateCommitWindowSeconds, softCaptionEnabled, softCaptionStableSeconds",
           "how captions are cut and fixed"},
          {"appleAnalyzerEarlyFinalize, appleAnalyzerHistoryRefinement, "
           "appleAnalyzerDiagnosticsMode",
           "the settings of these names"}}},
        {"translation",
         {{"backend, targetLanguage, softTranslationEnabled, defaultSourceLanguage, "
           "drainTimeoutSeconds",
           "what is translated into what, and how long the end waits for it"},
          {"sameLanguagePassthrough, appleOfflineSupported, backendRunnable",
           "whether it can be translated"}}},
        {"display",
         {{"smoothStreaming, smoothPaceMS, subtitleLayoutMode, subtitleLyricsLayout, "
           "swapCaptionOrder, liveSubtitleWindowMaxSegments, sourceFontSize, translationFontSize, "
           "sourceFontColorHex, translationFontColorHex, bgColorHex, bgOpacity, highlightChanges",
           "the settings of these names"}}},
        {"summary",
         {{"committedSegmentCount, transcriptCharacters, bilingualTranscriptCharacters, "
           "hasBilingualTranscript",
           "how much was said"},
          {"transcriptUpdatedAfterFinishWall",
           "when the texts were replaced after the session, seconds since 1970"},
          {"sampleRate, wordEventCount", "of a core run: of the sound; words with times"},
          {"enginePerf", "of a core run: the counters of the pipeline at the end", anything}}},
        {"file", {{"name, path, description, exists, bytes", "see above"}}},
        {"engine",
         {{"optionID, title", "the recogniser"},
          {"caps, config", "what it does by itself; the captions' settings", anything},
          {"segments", "the committed rows", "segment"}}},
        {"segment",
         {{"id, text, translatedText, translationError", "the row"},
          {"freezeKind", "\"none\", \"soft\", \"ours\" (fixed before the recogniser was done) or "
                         "\"engine\""},
          {"startedAt, endedAt, firstSeenAt, audioStart, audioEnd, committedAt",
           "seconds from the start of the run"},
          {"revisionCount", "how often its words changed"},
          {"words", "`w`, `firstSeenAt`, `revealedAt`, `audioStart`, `audioEnd`", anything}}}};
}

} // namespace tessarune::DiagnosticsRunFields

namespace tessarune::DiagnosticsRunLayout {

namespace {

const DiagnosticsRunFields::Table& fieldTable() {
    static const DiagnosticsRunFields::Table all = [] {
        DiagnosticsRunFields::Table table = DiagnosticsRunFields::run();
        for (auto& part : {DiagnosticsRunFields::recognition(), DiagnosticsRunFields::captions(),
                           DiagnosticsRunFields::performance()})
            std::ranges::copy(part, std::back_inserter(table));
        return table;
    }();
    return all;
}

} // namespace

const std::vector<Field>& fields(std::string_view artifactOrGroup) {
    static const std::vector<Field> none;
    const auto found = std::ranges::find(fieldTable(), artifactOrGroup,
                                         &DiagnosticsRunFields::Table::value_type::first);
    return found == fieldTable().end() ? none : found->second;
}

const std::vector<std::string_view>& groups() {
    static const std::vector<std::string_view> all{
        "app",     "host",    "capture", "recognition", "translation",
        "display", "summary", "engine",  "segment",     "displayUnit"};
    return all;
}

} // namespace tessarune::DiagnosticsRunLayout
