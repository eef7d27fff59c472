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
           "always the same, because the program runs one recogniser at a time"},
          {"diagnosticsLevel", "the level when the session started"},
          {"capturesFullDiagnostics", "whether the run contains more than a core run"},
          {"app", "the program", "app"},
          {"host", "the computer", "host"},
          {"runtime", "`recognition`: which kind of recogniser", anything},
          {"internalTools", "always off in a release", anything},
          {"capture", "the source, and the settings of the recording", "capture"},
          {"recognition",
           "the recogniser and the settings of the captions; in a core run only `optionID`, "
           "`title` and `engine`",
           "recognition"},
          {"translation", "the settings of the translation", "translation"},
          {"stop", "the fields of `listen.stop.requested`: the reason of the stop", anything},
          {"display", "how captions were shown", "display"},
          {"performance", "`perfSampleIntervalSeconds`, and the `sampleRate` of the first sound",
           anything},
          {"summary", "how much was said", "summary"},
          {"enginePerf", "the counters of the pipeline at the end", anything},
          {"privacy",
           "only in a core run: states that it contains no texts, events, timeline or samples",
           anything},
          {"files",
           "the files of the run: `name`, `path`, `description`, `exists` and, if it exists, "
           "`bytes`, as they were when the manifest was written",
           "file"},
          {"lostRecords",
           "for each log, the number of records that could not be written; empty if all were "
           "written",
           anything},
          {"analysisCommandsDisabledReason", "why commands of analysis tools are disabled"},
          {"recordingID, audioPath, audioFile", "the recording; absent without one"},
          {"sourceTranscriptPath, bilingualTranscriptPath", "the paths of its transcripts"},
          {"refinementDiagnostics",
           "the last time that the recording was transcribed again: `schemaVersion`, `status` "
           "(\"running\", \"finished\", \"skipped\", \"failed\"), the recording, `files` and "
           "`counters`",
           anything}}},
        {"settings",
         {{"diagnosticsSchemaVersion, runMode, productComparable, resourceInterference",
           "as in the manifest"},
          {"host", "the computer", "host"},
          {"runtime, internalTools", "as in the manifest", anything},
          {"recognition", "the recogniser and the settings of the captions", "recognition"},
          {"capture", "the source, and the settings of the recording", "capture"},
          {"translation", "the settings of the translation", "translation"},
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
          {"capturesFullDiagnostics", "whether the run contains more than a core run"},
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
          {"runMode, productComparable, resourceInterference", "as in the manifest"},
          {"concurrentEngines", "1"},
          {"wallSeconds", "the duration of the session"},
          {"title", "the recogniser"},
          {"stats, engines", "the counters of the pipeline at the end, in total and by recogniser",
           anything},
          {"host", "the computer", "host"},
          {"runtime, internalTools", "as in the manifest", anything},
          {"recognition", "the recogniser and the settings of the captions", "recognition"},
          {"capture", "the source, and the settings of the recording", "capture"},
          {"translation", "the settings of the translation", "translation"}}},
        {"lifecycleEvents",
         {clockTime,
          {"name", "the step of the session, in dotted words"},
          {"phase", "\"instant\", \"start\", \"finish\" or \"failure\""},
          {"elapsedSeconds", "of a finish or a failure: the duration of the step"},
          {"fields", "details; all values are texts", anything}}},
        {"app",
         {{"name", "the program's command"},
          {"bundleIdentifier, version, build", "the program's identifier and version"},
          {"buildConfiguration, distribution, liveCaptionRendering, speechAnalyzerLiveMaintenance, "
           "speechAnalyzerResults, liveStorePublishing, internalToolsEnabled",
           "fixed words that analysis tools compare"},
          {"bundlePath, executablePath", "its paths"}}},
        {"host",
         {{"osVersion",
           "the distribution and its version, if known, and the kernel and its release"},
          {"processorCount, activeProcessorCount",
           "processors of the computer, and those that the program may use within the limits of "
           "its control group"},
          {"physicalMemoryBytes, physicalMemoryGB",
           "memory of the computer, or the limit of the control group"},
          {"thermalState", "from the temperatures and limits in `/sys/class/thermal`; \"unknown\" "
                           "without them"},
          {"lowPowerMode", "from the platform's power profile; \"unknown\" without one"},
          {"machineModel, hardwareMachine, cpuBrand",
           "the computer's model, its architecture and its processor"}}},
        {"capture",
         {{"recordWhileCaptioning, recordLosslessAudio, sessionDiagnosticsEnabled",
           "the settings of these names"},
          {"audioInactivityAutoStopEnabled, audioInactivityAutoStopMinutes, "
           "audioInactivityAutoStopSeconds, audioInactivityActiveLevelThreshold",
           "the silence after which the session ends, and the level below which sound counts as "
           "silence"},
          {"audioSource",
           "the source: `kind`, `displayName`, `usesSystemAudio`, `usesMicrophoneSource`, "
           "`deviceID`",
           anything},
          {"audioSourceKind, audioSourceName", "`kind` and `displayName` of `audioSource`"}}},
        {"recognition",
         {{"optionID, title, engine", "the recogniser"},
          {"punctuatesNatively, selfSegments, streamsWordByWord, providesWordTimestamps, isOnline, "
           "boundaryUnit, maxUnpunctuatedUnits",
           "what the recogniser does by itself"},
          {"sentenceSegmentation, clauseLevelSegmentation, hardClauseLevelSegmentation, "
           "softClauseLevelSegmentation, trueFreeze, freezeStableSeconds, "
           "duplicateCommitWindowSeconds, softCaptionEnabled, softCaptionStableSeconds",
           "how captions are cut and frozen"},
          {"appleAnalyzerEarlyFinalize, appleAnalyzerHistoryRefinement, "
           "appleAnalyzerDiagnosticsMode",
           "the settings of these names"}}},
        {"translation",
         {{"backend, targetLanguage, softTranslationEnabled, defaultSourceLanguage, "
           "drainTimeoutSeconds",
           "the backend, the languages, whether previews are shown, and how long the stop waits "
           "for "
           "translations"},
          {"sameLanguagePassthrough, appleOfflineSupported, backendRunnable",
           "whether translation is possible"}}},
        {"display",
         {{"smoothStreaming, smoothPaceMS, subtitleLayoutMode, subtitleLyricsLayout, "
           "swapCaptionOrder, liveSubtitleWindowMaxSegments, sourceFontSize, translationFontSize, "
           "sourceFontColorHex, translationFontColorHex, bgColorHex, bgOpacity, highlightChanges",
           "the settings of these names"}}},
        {"summary",
         {{"committedSegmentCount, transcriptCharacters, bilingualTranscriptCharacters, "
           "hasBilingualTranscript",
           "the number of rows, the lengths of the texts, and whether there are translations"},
          {"transcriptUpdatedAfterFinishWall",
           "when the texts were replaced after the session, seconds since 1970"},
          {"sampleRate", "only in a core run: the sample rate of the first sound"},
          {"wordEventCount", "only in a core run: the number of words with times"},
          {"enginePerf", "only in a core run: the counters of the pipeline at the end", anything}}},
        {"file", {{"name, path, description, exists, bytes", "one file of the run"}}},
        {"engine",
         {{"optionID, title", "the recogniser"},
          {"caps", "what the recogniser does by itself", anything},
          {"config", "the settings of the captions", anything},
          {"segments", "the committed rows", "segment"}}},
        {"segment",
         {{"id, text, translatedText, translationError",
           "the row's UUID, its text, and its translation or why it has none"},
          {"freezeKind", "\"none\", \"soft\", \"ours\" (frozen before its final) or "
                         "\"engine\" (frozen by its final)"},
          {"startedAt, endedAt, firstSeenAt, audioStart, audioEnd, committedAt",
           "seconds from the start of the run"},
          {"revisionCount", "how often the row's words changed"},
          {"words",
           "each word: its text `w`, and `firstSeenAt`, `revealedAt`, `audioStart`, `audioEnd`",
           anything}}}};
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
