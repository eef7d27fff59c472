#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"

#include <algorithm>
#include <utility>

namespace tessarune::DiagnosticsRunLayout {

namespace {

using Fields = std::vector<Field>;

// What several files have in common.
constexpr Field clockTime{"t", "seconds since 1970 on the session's clock, which never jumps"};
constexpr Field sampleTime{"t", "seconds since the first sample"};
constexpr Field eventName{"event", "what happened"};
constexpr Field reason{"reason", "what caused the record"};
constexpr Field schema{"schemaVersion", "of this file"};
constexpr Field result{"sequence", "the number of the recogniser's result, from 1"};
constexpr Field textHash{"textHash, textPreview",
                         "FNV-1a hash of the text's UTF-8 bytes, and how the text begins"};
constexpr Field textSize{"characterCount, utf8Count, wordCount",
                         "the text's characters, bytes and words"};
constexpr Field runCounts{
    "runCount, timedRunCount",
    "stretches of the text with attributes of their own, and those with times"};
constexpr Field audioSpan{"audioStartSeconds, audioEndSeconds, audioDurationSeconds",
                          "where the result lies in the sound, seconds from its beginning"};
constexpr Field speechOptions{"requestedSpeechOptions", "what the recogniser was asked to deliver"};
constexpr Field locale{"localeIdentifier", "the language that was recognised"};
constexpr Field refinedRecording{"recordingID, audioPath, recognitionOptionID, localeIdentifier",
                                 "the recording that is transcribed again, and with what"};
constexpr Field segmentSpan{"startSeconds, endSeconds, durationSeconds",
                            "where it lies in the sound"};
constexpr Field layoutModes{"configuredLayoutMode, effectiveLayoutMode",
                            "\"lyrics\" or \"bilingualCompare\": as set, and as shown"};
constexpr Field displaySettings{
    "translationEnabled, translationBackend, translationTargetLanguage, swapCaptionOrder, "
    "smoothStreaming, smoothPaceMS, sourceFontSize, translationFontSize, bgOpacity, "
    "highlightChanges, softCaptionEnabled, softCaptionStableSeconds, liveSubtitleWindowMaxSegments",
    "the settings of the captions at that moment"};
constexpr Field tails{"sourceTailCount, translationTailCount",
                      "rows of the frame, and translations in it"};
constexpr Field liveCounts{"committedCount, liveLeadingCount, softCaptionCount",
                           "rows of each of the captions' lists"};
constexpr Field sessionPhase{
    "sessionPhase",
    "\"idle\", \"preparing\", \"loading\", \"listening\", \"stopping\", \"failed\""};
constexpr Field frameIndexes{"updateRequestIndex, publishedFrameIndex",
                             "refreshes and published frames before this one"};
constexpr Field unitIdentity{"index, id", "its place among all rows that are shown, and its UUID"};
constexpr Field unitState{
    "state, freezeKind, revision, revisionCount",
    "\"partial\" or \"final\"; \"none\", \"soft\", \"ours\" or \"engine\"; the "
    "number of the change, and how often its words changed"};
constexpr Field unitTranslation{
    "translationUnitID, translationResultSegmentID, translationUnitIndex, translationUnitCount, "
    "translationRole",
    "the unit in which the row is translated; \"none\", \"member\" or, for the row under which the "
    "translation stands, \"result\""};
constexpr Field unitTimes{"startedAt, endedAt, committedAt, firstSeenAt", "on the session's clock"};
constexpr Field unitSource{"sourceCharacters, sourceWords, sourceHash", "the text in short"};
constexpr Field sampledLoad{"processCPUPercent, mainThreadLagMS",
                            "as in `perf.csv`, of the same moment"};

const std::vector<std::pair<std::string_view, Fields>>& table() {
    static const std::vector<std::pair<std::string_view, Fields>> all{
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
        {"perfSamples",
         {sampleTime,
          {"cpuPercent", "processor time of the program since the last sample, in percent of one "
                         "core"},
          {"footprintMB", "memory that the program alone costs, in memory or swapped out, in "
                          "2^20 bytes"},
          {"residentMB", "of all its memory what is in memory now"},
          {"thermalState", "\"nominal\", \"fair\", \"serious\", \"critical\", or \"unknown\" where "
                           "the computer does not tell"},
          {"activeProcessorCount", "processors that the program may use, limits of its group "
                                   "included"},
          {"lowPowerMode", "whether the computer saves power; false where it has no such mode"},
          {"mainThreadLagMS", "the latest that the main thread was since the last sample"}}},
        {"perfThreads",
         {sampleTime,
          sampledLoad,
          {"topThreads",
           "the eight threads that worked most: `rankHint` (their order), `threadID`, "
           "`isMainThread`, `cpuPercent` since the last sample, `userSeconds` and `systemSeconds` "
           "since the thread began, `runState`, `flags` (as the kernel has them), `dispatchQAddr` "
           "(always \"0x0\": threads here belong to no queue)",
           anything}}},
        {"perfPipeline",
         {sampleTime,
          sampledLoad,
          {"metrics, delta",
           "the counters of the pipeline, and by how much each has grown since the "
           "last sample",
           anything}}},
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
        {"idleMemorySentinel",
         {schema,
          {"kind, phase, reason",
           "\"idleMemorySentinel\"; \"start\", \"sample\", \"finish\" or \"stop\"; why"},
          {"runDirectory, elapsedSeconds, sampleIntervalSeconds, maxRuntimeSeconds",
           "the run, seconds since the session's end, every how many seconds and how long it "
           "watches"},
          {"memory", "`footprintMB`, `residentMB`, as in `perf.csv`", anything},
          {"cpuPercent", "since the last record, in percent of one core"},
          {"appState", "what the program is doing", anything}}},
        {"idleMemoryAlarms",
         {schema,
          {"kind, phase, reason", "as in the samples; the phase is \"alarm\""},
          {"runDirectory, elapsedSeconds, sampleIntervalSeconds, maxRuntimeSeconds",
           "as in the samples"},
          {"memory", "`footprintMB`, `residentMB`", anything},
          {"cpuPercent", "as in the samples"},
          {"appState", "what the program is doing", anything},
          {"alarmKind",
           "\"idleCpuHigh\" (12 % a minute or more after the end), \"absolute\" (2048 MB), "
           "\"baselineMultiple\" (three times the memory at the end, 512 MB at least), "
           "\"growthSpike\" (512 MB more than at the last sample): each once; "
           "\"gigabyteMilestone\": once for each gigabyte"},
          {"alarmDetail", "the bound that was passed", anything},
          {"windows",
           "the program's: `title`, `isVisible`, `isKeyWindow`, `isMainWindow`, "
           "`isMiniaturized`, `level`, `frame`",
           anything},
          {"host", "the computer", "host"},
          {"footprintMB, residentMB, baselineMB", "now, and at the end of the session"},
          {"runID, lightweight", "the run's name; whether there is none"}}},
        {"asrEvents",
         {clockTime,
          {"kind",
           "\"partial\", \"final\", or a mark: \"settings\" (of the captions, from here on), "
           "\"open\" (text that stood there before), \"withdrawn\" (the guess was taken "
           "back), \"stopped\" (guesses no longer count), \"sealed\" (what was open became "
           "rows), \"ended\" (the rows are those of the timeline)"},
          {"text", "what was understood; of \"settings\" and \"open\" what they set"},
          {"revision, timestamp", "of a partial: its number and when it was made"},
          {"start, end, reason", "of a final: its span, and why it was issued"},
          {"words", "of a final, where known: `word`, `start`, `end`", anything}}},
        {"appleSummaryResults",
         {schema,
          {"kind", "\"appleSpeechAnalyzerSummary\""},
          result,
          {"receivedAt", "seconds since 1970"},
          locale,
          {"isFinal", "or a guess"},
          textSize,
          runCounts,
          {"confidenceRunCount, minConfidence, avgConfidence, alternativeCount",
           "how sure the recogniser was, where it says so"},
          audioSpan,
          {"mappedStartEpochSeconds, mappedEndEpochSeconds, latestAudioTimeSeconds",
           "the same on the session's clock; how much sound had been fed"},
          {"revisionBeforeTessaruneProcessing, pendingPartialBeforeTessaruneProcessing",
           "where the program stood with its guesses"},
          textHash,
          speechOptions}},
        {"appleRawResults",
         {schema,
          {"kind", "\"appleSpeechAnalyzerRawResult\""},
          result,
          {"receivedAt", "seconds since 1970"},
          locale,
          {"resultType, resultDebugDescription, resultMirrorChildren, textType, "
           "textDebugDescription, note",
           "the result as the recogniser's library has it", anything},
          {"isFinal", "or a guess"},
          {"text", "the whole text"},
          textSize,
          runCounts,
          {"runs", "the stretches of the text, each with its place, confidence and times",
           anything},
          {"alternativeCount, alternatives", "other readings", anything},
          {"engineState", "where the program stood with its guesses", anything},
          speechOptions}},
        {"appleFinalReconcile",
         {schema,
          {"kind", "\"appleFinalReconcile\""},
          result,
          {"receivedAt", "seconds since 1970"},
          {"decision, reasons",
           "\"useFinal\", \"useLastPartial\" or \"dropSuppressedFinal\", and why"},
          {"final, lastPartial", "the final and the guess before it: text, hash, confidence, times",
           anything},
          {"outputTextHash, outputTextPreview, outputCharacterCount, outputWordCount",
           "the text that was shown"},
          {"finalLastPartialSimilarity, finalToLastPartialWordRatio", "how the two differ"},
          {"alternativeTranscriptionsRequested, shouldKeepFinalWordTimings, "
           "suppressedFinalsUntilAudioTime",
           "whether the final's word times belong to the text; until where finals are dropped"}}},
        {"boundaryEvents",
         {clockTime,
          {"phase", "\"partial\" or \"final\""},
          {"inputText", "what the recogniser said"},
          {"softPieces, hardPieces, leading, tail",
           "clauses that stand still, sentences that are fixed now, sentences that may still "
           "change, the open rest"},
          {"reasons", "why it was cut there"}}},
        {"corrections",
         {clockTime,
          {"shownText, finalText", "what was on the screen, and the final"},
          {"droppedWords, addedWords, commonWords", "in how many words the two differ"}}},
        {"translationEvents",
         {clockTime,
          {"phase, scope",
           "\"start\", \"success\" or \"failure\"; \"committed\" or, for a preview, \"ghost\""},
          {"translationUnitID, segmentID, segmentIDs, resultSegmentID, segmentCount",
           "the rows that are translated together, and the one under which it stands"},
          {"sourceText, translatedText, sourceCharacters, translatedCharacters", "the texts"},
          {"sourceLanguage, targetLanguage, backend", "with what"},
          {"durationSeconds, queueDelaySeconds, availabilitySeconds, translateCallSeconds, "
           "applySeconds",
           "how long it took, and how long each step"},
          {"preflightStatus, attemptCount, automaticRetry, recoveryAction",
           "how often it was tried"},
          {"error, failureCategory, failureDomain, failureCode, failureReason", "what went wrong"},
          {"sessionGeneration", "tells a late result from a current one"}}},
        {"liveCaptionEvents",
         {clockTime,
          {"event", "\"diagnostics.start\", \"frame.refresh\", \"setting\", \"softCaption\" or "
                    "\"liveCaption.stopSnapshot\""},
          reason,
          sessionPhase,
          layoutModes,
          displaySettings,
          liveCounts,
          {"clearedCount", "rows that the user cleared away"},
          {"hasPartial, currentPartialID, currentPartialRevision, currentPartialState",
           "the open row"},
          tails,
          {"ghostVisible, ghostSourceCharacters", "a translation that is shown ahead"},
          {"statusVisible, translationStatusVisible, translationStatusIncomplete, "
           "translationRetryAvailable",
           "what else is shown"},
          {"buildSourceMS, buildTranslationMS, buildStatusMS, buildTotalMS, compareMS",
           "what the frame cost"},
          frameIndexes,
          {"published", "whether anything visible had changed"},
          {"captionStageRenders, captionStageSourceOnlyRenders, captionStageStandardRenders, "
           "captionStageLyricsRenders, captionStageBilingualCompareRenders",
           "how often the stage was drawn, by layout"},
          {"name, value", "of \"setting\": which changed, and to what"},
          {"phase, enabled, stableSeconds, candidateCount, visibleCount, sample, resetReason",
           "of \"softCaption\": the clauses of the open sentence that are shown"},
          {"completedTranslations, pendingTranslations, sourceCharacters, translationCharacters, "
           "bilingualCharacters, elapsedMS",
           "of \"liveCaption.stopSnapshot\""}}},
        {"displayUnitEvents",
         {clockTime,
          {"event", "\"frame.publish\""},
          reason,
          sessionPhase,
          layoutModes,
          frameIndexes,
          tails,
          liveCounts,
          {"currentPartialRevision", "of the open row"},
          {"sampledUnitLimit", "at most so many rows are listed, the last ones"},
          {"units", "the rows", "displayUnit"}}},
        {"liveWindowStopSnapshot",
         {schema,
          {"kind, capturedAt, reason", "\"liveCaptionStopSnapshot\", when, and why"},
          {"completedTranslations, pendingTranslations, isCommittedTranslating",
           "whether the translations were in"},
          sessionPhase,
          layoutModes,
          displaySettings,
          tails,
          liveCounts,
          {"hasCurrentPartial, currentPartialID, currentPartialRevision", "the open row"},
          {"captionFrameUpdateRequests, captionFramePublishes", "of the whole session"},
          {"statusMessage, translationStatusText, translationStatusIncomplete, "
           "translationRetryAvailable",
           "what else was shown"},
          {"sourceText, translationText, bilingualText", "the texts as they are exported"},
          {"units", "all rows, with their whole texts", "displayUnit"}}},
        {"refineLifecycleEvents",
         {schema,
          eventName,
          refinedRecording,
          {"phase", "\"start\", \"finish\", \"instant\" or \"fields\""},
          {"status, elapsedSeconds", "at the finish"},
          {"segments, timelineKind, targetLanguage", "of what was saved"},
          {"fields", "more about it", anything}}},
        {"refineAppleSummary",
         {schema,
          {"event", "\"apple.result\""},
          refinedRecording,
          result,
          {"receivedAt", "seconds since 1970"},
          {"isFinal", "or a guess"},
          textSize,
          runCounts,
          audioSpan,
          textHash,
          speechOptions}},
        {"refineSegments",
         {schema,
          {"event", "\"segment.splitCandidate\" (a piece of a result) or \"segment.final\" (a "
                    "sentence that is saved)"},
          refinedRecording,
          {"index", "of the sentence"},
          {"resultSequence, resultIsFinal, resultTextHash, pieceIndex, pieceCount, splitStrategy",
           "of which result it is a piece, and how that was cut"},
          {"text", "the piece"},
          textSize,
          segmentSpan,
          {"wordTimelineCount", "words with times"},
          textHash}},
        {"refineTranslation",
         {schema,
          {"event", "\"translation.start\", \"translation.success\" or \"translation.failure\""},
          refinedRecording,
          {"index, sourceLanguage, targetLanguage", "the sentence, and from what into what"},
          {"sourceCharacters, sourceWords, sourceHash, sourcePreview", "the sentence in short"},
          {"elapsedSeconds", "how long it took"},
          {"translatedCharacters, translatedHash, translatedPreview", "of a success"},
          {"error", "of a failure"}}},
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
          {"words", "`w`, `firstSeenAt`, `revealedAt`, `audioStart`, `audioEnd`", anything}}},
        {"displayUnit",
         {unitIdentity,
          unitState,
          unitTranslation,
          unitTimes,
          unitSource,
          {"sourcePreview, sourceText", "its beginning; in the stop snapshot the whole text"},
          {"hasTranslation, translationCharacters, translationHash, translationPreview, "
           "translationText, hasTranslationError, translationError",
           "its translation, in the same way"}}},
    };
    return all;
}

} // namespace

const std::vector<Field>& fields(std::string_view artifactOrGroup) {
    static const Fields none;
    const auto found =
        std::ranges::find(table(), artifactOrGroup, &std::pair<std::string_view, Fields>::first);
    return found == table().end() ? none : found->second;
}

const std::vector<std::string_view>& groups() {
    static const std::vector<std::string_view> all{
        "app",     "host",    "capture", "recognition", "translation",
        "display", "summary", "engine",  "segment",     "displayUnit"};
    return all;
}

} // namespace tessarune::DiagnosticsRunLayout
