#include "Tessarune/diagnostics/DiagnosticsRunFields.h"

namespace tessarune::DiagnosticsRunFields {

namespace {

constexpr Field eventName{"event", "what happened"};
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

} // namespace

Table recognition() {
    return {
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
          {"error", "of a failure"}}}};
}

} // namespace tessarune::DiagnosticsRunFields
