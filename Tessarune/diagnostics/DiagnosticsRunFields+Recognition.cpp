#include "Tessarune/diagnostics/DiagnosticsRunFields.h"

namespace tessarune::DiagnosticsRunFields {

namespace {

constexpr Field eventName{"event", "what happened"};
constexpr Field result{"sequence", "the number of the recogniser's result, from 1"};
constexpr Field textHash{"textHash, textPreview",
                         "FNV-1a hash of the text's UTF-8 bytes, and how the text begins"};
constexpr Field textSize{"characterCount, utf8Count, wordCount",
                         "the text's characters, bytes and words"};
constexpr Field runCounts{"runCount, timedRunCount",
                          "runs of text with the same attributes, and those with times"};
constexpr Field audioSpan{"audioStartSeconds, audioEndSeconds, audioDurationSeconds",
                          "the span of the result in the sound, in seconds"};
constexpr Field speechOptions{"requestedSpeechOptions", "what the recogniser was asked to deliver"};
constexpr Field locale{"localeIdentifier", "the language that was recognised"};
constexpr Field refinedRecording{"recordingID, audioPath, recognitionOptionID, localeIdentifier",
                                 "the recording, and the recogniser that transcribes it again"};
constexpr Field segmentSpan{"startSeconds, endSeconds, durationSeconds", "its span in the sound"};

} // namespace

Table recognition() {
    return {
        {"asrEvents",
         {clockTime,
          {"kind",
           "\"partial\", \"final\", or a mark: \"settings\" (of the captions, from here on), "
           "\"open\" (text that was already shown), \"withdrawn\" (the partial was withdrawn), "
           "\"stopped\" (partials no longer count), \"sealed\" (the open text became rows), "
           "\"ended\" (the session ended; its rows are those of `timeline.json`)"},
          {"text", "the recognised text; of \"settings\" and \"open\" their content"},
          {"revision, timestamp", "of a partial: its number and when it was made"},
          {"start, end, reason", "of a final: its span, and why it was issued"},
          {"words", "of a final, if known: `word`, `start`, `end`", anything}}},
        {"appleSummaryResults",
         {schema,
          {"kind", "\"appleSpeechAnalyzerSummary\""},
          result,
          {"receivedAt", "seconds since 1970"},
          locale,
          {"isFinal", "false: a partial"},
          textSize,
          runCounts,
          {"confidenceRunCount, minConfidence, avgConfidence, alternativeCount",
           "the recogniser's confidence, if it reports one"},
          audioSpan,
          {"mappedStartEpochSeconds, mappedEndEpochSeconds, latestAudioTimeSeconds",
           "the start and end of this span in seconds since 1970; the seconds of sound fed so far"},
          {"revisionBeforeTessaruneProcessing, pendingPartialBeforeTessaruneProcessing",
           "the state of the program's partials"},
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
           "the result as the recogniser's library reports it", anything},
          {"isFinal", "false: a partial"},
          {"text", "the whole text"},
          textSize,
          runCounts,
          {"runs", "the runs of the text, each with its position, confidence and times", anything},
          {"alternativeCount, alternatives", "alternative texts", anything},
          {"engineState", "the state of the program's partials", anything},
          speechOptions}},
        {"appleFinalReconcile",
         {schema,
          {"kind", "\"appleFinalReconcile\""},
          result,
          {"receivedAt", "seconds since 1970"},
          {"decision, reasons",
           "\"useFinal\", \"useLastPartial\" or \"dropSuppressedFinal\", and why"},
          {"final, lastPartial",
           "the final and the partial before it: text, hash, confidence, times", anything},
          {"outputTextHash, outputTextPreview, outputCharacterCount, outputWordCount",
           "the text that was shown"},
          {"finalLastPartialSimilarity, finalToLastPartialWordRatio", "how the two differ"},
          {"alternativeTranscriptionsRequested, shouldKeepFinalWordTimings, "
           "suppressedFinalsUntilAudioTime",
           "whether alternative texts were requested; whether the final's word times belong to "
           "the text; the time up to which finals are dropped"}}},
        {"refineLifecycleEvents",
         {schema,
          eventName,
          refinedRecording,
          {"phase", "\"start\", \"finish\", \"instant\" or \"fields\""},
          {"status, elapsedSeconds", "at the finish"},
          {"segments, timelineKind, targetLanguage", "of what was saved"},
          {"fields", "details", anything}}},
        {"refineAppleSummary",
         {schema,
          {"event", "\"apple.result\""},
          refinedRecording,
          result,
          {"receivedAt", "seconds since 1970"},
          {"isFinal", "false: a partial"},
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
           "the result that contains the piece, and how it was cut"},
          {"text", "the piece"},
          textSize,
          segmentSpan,
          {"wordTimelineCount", "words with times"},
          textHash}},
        {"refineTranslation",
         {schema,
          {"event", "\"translation.start\", \"translation.success\" or \"translation.failure\""},
          refinedRecording,
          {"index, sourceLanguage, targetLanguage", "the sentence, and its languages"},
          {"sourceCharacters, sourceWords, sourceHash, sourcePreview",
           "size, hash and beginning of the sentence"},
          {"elapsedSeconds", "how long it took"},
          {"translatedCharacters, translatedHash, translatedPreview", "of a success"},
          {"error", "of a failure"}}}};
}

} // namespace tessarune::DiagnosticsRunFields
