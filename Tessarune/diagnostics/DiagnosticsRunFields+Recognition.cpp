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
    "the number of runs (pieces of text with the same attributes), and of those "
    "with times"};
constexpr Field audioSpan{"audioStartSeconds, audioEndSeconds, audioDurationSeconds",
                          "the span of the result in the sound, in seconds"};
constexpr Field speechOptions{"requestedSpeechOptions", "what the recogniser was asked to deliver"};
constexpr Field locale{"localeIdentifier", "the language that was recognised"};
constexpr Field refinedRecording{"recordingID, audioPath, recognitionOptionID, localeIdentifier",
                                 "the recording, and the recogniser that transcribes it again"};
constexpr Field segmentSpan{"startSeconds, endSeconds, durationSeconds",
                            "the span of the piece or sentence in the sound"};

} // namespace

Table recognition() {
    return {
        {"asrEvents",
         {clockTime,
          {"kind",
           "\"partial\", \"final\", or a mark: \"settings\" (the captions' settings from here on), "
           "\"open\" (text that was already shown), \"withdrawn\" (the partial was withdrawn), "
           "\"stopped\" (partials no longer count), \"sealed\" (the open text became rows), "
           "\"ended\" (the session ended; its rows are those of `timeline.json`)"},
          {"text", "the recognised text, or the content of \"settings\" and \"open\""},
          {"revision, timestamp", "of a partial: its number and its time"},
          {"start, end, reason", "of a final: its span, and why it was issued"},
          {"words", "of a final, if known: `word`, `start`, `end`", anything}}},
        {"appleSummaryResults",
         {schema,
          {"kind", "\"appleSpeechAnalyzerSummary\""},
          result,
          {"receivedAt", "seconds since 1970"},
          locale,
          {"isFinal", "whether the result is a final; otherwise it is a partial"},
          textSize,
          runCounts,
          {"confidenceRunCount, minConfidence, avgConfidence",
           "the number of runs with a confidence, and its minimum and average"},
          {"alternativeCount", "the number of alternative texts"},
          audioSpan,
          {"mappedStartEpochSeconds, mappedEndEpochSeconds", "the same span in seconds since 1970"},
          {"latestAudioTimeSeconds", "the seconds of sound fed so far"},
          {"revisionBeforeTessaruneProcessing",
           "the number of partials of the utterance before this result"},
          {"pendingPartialBeforeTessaruneProcessing",
           "whether one of them was still waiting to be sent"},
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
          {"isFinal", "whether the result is a final; otherwise it is a partial"},
          {"text", "the whole text"},
          textSize,
          runCounts,
          {"runs", "the runs of the text, each with its position, confidence and times", anything},
          {"alternativeCount", "the number of alternative texts"},
          {"alternatives", "the alternative texts", anything},
          {"engineState",
           "the state of the recognition before this result: its times in the sound, and its "
           "partials as in `events/apple_summary.ndjson`",
           anything},
          speechOptions}},
        {"appleFinalReconcile",
         {schema,
          {"kind", "\"appleFinalReconcile\""},
          result,
          {"receivedAt", "seconds since 1970"},
          {"decision", "\"useFinal\", \"useLastPartial\" or \"dropSuppressedFinal\""},
          {"reasons", "the reasons of the decision"},
          {"final, lastPartial",
           "the final and the partial before it: text, hash, confidence, times", anything},
          {"outputTextHash, outputTextPreview, outputCharacterCount, outputWordCount",
           "hash, beginning and size of the text that was decided on"},
          {"finalLastPartialSimilarity", "how similar the final and the partial are"},
          {"finalToLastPartialWordRatio", "the final's number of words, divided by the partial's"},
          {"alternativeTranscriptionsRequested", "whether alternative texts were requested"},
          {"shouldKeepFinalWordTimings",
           "whether the word times of the final belong to the text that was decided on"},
          {"suppressedFinalsUntilAudioTime", "the time up to which finals are dropped"}}},
        {"refineLifecycleEvents",
         {schema,
          eventName,
          refinedRecording,
          {"phase", "\"start\", \"finish\", \"instant\" or \"fields\""},
          {"status, elapsedSeconds", "of a finish: the outcome and the duration"},
          {"segments, timelineKind, targetLanguage",
           "of a saved text: the number of sentences, the kind of its times, and the language of "
           "its "
           "translation"},
          {"fields", "details", anything}}},
        {"refineAppleSummary",
         {schema,
          {"event", "\"apple.result\""},
          refinedRecording,
          result,
          {"receivedAt", "seconds since 1970"},
          {"isFinal", "whether the result is a final; otherwise it is a partial"},
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
          {"index", "of a final: the number of the sentence, from 0"},
          {"resultSequence, resultIsFinal, resultTextHash, pieceIndex, pieceCount, splitStrategy",
           "the result that contains the piece, and how it was cut"},
          {"text", "of a candidate: its text"},
          textSize,
          segmentSpan,
          {"wordTimelineCount", "the number of words with times"},
          textHash}},
        {"refineTranslation",
         {schema,
          {"event", "\"translation.start\", \"translation.success\" or \"translation.failure\""},
          refinedRecording,
          {"index", "the number of the sentence, from 0"},
          {"sourceLanguage, targetLanguage", "the languages"},
          {"sourceCharacters, sourceWords, sourceHash, sourcePreview",
           "size, hash and beginning of the sentence"},
          {"elapsedSeconds", "the duration of the translation"},
          {"translatedCharacters, translatedHash, translatedPreview",
           "of a success: size, hash and beginning of the translation"},
          {"error", "of a failure: its reason"}}}};
}

} // namespace tessarune::DiagnosticsRunFields
