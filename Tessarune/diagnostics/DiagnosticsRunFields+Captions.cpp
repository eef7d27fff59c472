#include "Tessarune/diagnostics/DiagnosticsRunFields.h"

namespace tessarune::DiagnosticsRunFields {

namespace {

constexpr Field reason{"reason", "what caused the record"};
constexpr Field layoutModes{"configuredLayoutMode, effectiveLayoutMode",
                            "\"lyrics\" or \"bilingualCompare\": as set, and as shown"};
constexpr Field displaySettings{
    "translationEnabled, translationBackend, translationTargetLanguage, swapCaptionOrder, "
    "smoothStreaming, smoothPaceMS, sourceFontSize, translationFontSize, bgOpacity, "
    "highlightChanges, softCaptionEnabled, softCaptionStableSeconds, liveSubtitleWindowMaxSegments",
    "the settings of the captions at that moment"};
constexpr Field tails{"sourceTailCount, translationTailCount",
                      "the number of rows in the frame, and of translations"};
constexpr Field liveCounts{"committedCount, liveLeadingCount, softCaptionCount",
                           "the number of committed rows, of complete sentences of the open "
                           "utterance, and of soft captions"};
constexpr Field sessionPhase{
    "sessionPhase",
    "\"idle\", \"preparing\", \"loading\", \"listening\", \"stopping\", \"failed\""};
constexpr Field frameIndexes{"updateRequestIndex, publishedFrameIndex",
                             "the number of refreshes and of published frames before this one"};

} // namespace

Table captions() {
    return {
        {"boundaryEvents",
         {clockTime,
          {"phase", "\"partial\" or \"final\""},
          {"inputText", "the recognised text"},
          {"softPieces", "stable clauses"},
          {"hardPieces", "the sentences that this decision froze"},
          {"leading", "complete sentences that may still change"},
          {"tail", "the unfinished end"},
          {"reasons", "the reasons of the cut"}}},
        {"corrections",
         {clockTime,
          {"shownText, finalText", "the text on the screen, and the final"},
          {"droppedWords, addedWords, commonWords",
           "the number of shown words that the final lacks, of new words, and of common words"}}},
        {"translationEvents",
         {clockTime,
          {"phase", "\"start\", \"success\" or \"failure\""},
          {"scope", "\"committed\" or, for a preview, \"ghost\""},
          {"translationUnitID, segmentID, segmentIDs, resultSegmentID, segmentCount",
           "the rows that are translated together, and the row below which the translation is "
           "shown"},
          {"sourceText, translatedText, sourceCharacters, translatedCharacters",
           "the texts and their lengths"},
          {"sourceLanguage, targetLanguage, backend", "languages and backend"},
          {"durationSeconds, queueDelaySeconds, availabilitySeconds, translateCallSeconds, "
           "applySeconds",
           "the duration of the attempt, how long the rows waited for it, and the duration of its "
           "steps"},
          {"preflightStatus", "whether the model was ready"},
          {"attemptCount, automaticRetry", "the number of attempts, and whether one was a retry"},
          {"recoveryAction", "what followed a failure"},
          {"error, failureCategory, failureDomain, failureCode, failureReason", "the failure"},
          {"sessionGeneration", "how often the pair has been prepared again after failures"}}},
        {"liveCaptionEvents",
         {clockTime,
          {"event", "\"diagnostics.start\", \"frame.refresh\", \"setting\", \"softCaption\", "
                    "\"liveCaption.stopSnapshot\", or \"follow.\" and how the list of captions was "
                    "scrolled or kept at its newest line"},
          reason,
          sessionPhase,
          layoutModes,
          displaySettings,
          liveCounts,
          {"clearedCount", "the number of rows that the user cleared away"},
          {"hasPartial, currentPartialID, currentPartialRevision, currentPartialState",
           "the open row"},
          tails,
          {"ghostVisible, ghostSourceCharacters", "the preview"},
          {"statusVisible, translationStatusVisible, translationStatusIncomplete, "
           "translationRetryAvailable",
           "what else is shown"},
          {"buildSourceMS, buildTranslationMS, buildStatusMS, buildTotalMS, compareMS",
           "how long it took to build the frame, and to compare it with the last one"},
          frameIndexes,
          {"published", "whether the frame differed from the last one"},
          {"captionStageRenders, captionStageSourceOnlyRenders, captionStageStandardRenders, "
           "captionStageLyricsRenders, captionStageBilingualCompareRenders",
           "how often the caption window updated its rows, in total and by layout (the bilingual "
           "layout is counted under two names): for each frame and each change of a setting of the "
           "rows, even while the window is hidden"},
          {"name, value", "of \"setting\": which setting was changed, and its new value"},
          {"phase, enabled, stableSeconds, candidateCount, visibleCount, sample, resetReason",
           "of \"softCaption\": the clauses of the open sentence that are shown"},
          {"completedTranslations, pendingTranslations, sourceCharacters, translationCharacters, "
           "bilingualCharacters, elapsedMS",
           "of \"liveCaption.stopSnapshot\": how many translations were complete or pending, the "
           "lengths of the texts, and how long the snapshot took"},
          {"isPinned, isReviewing, overflowing, clipY, clipHeight, clipMaxY, documentHeight,"
           " legalBottomY, legalBottomDelta, legacyDistanceFromBottom, rows",
           "of \"follow.…\": whether the newest line is followed or the user reads further up,"
           " and the position of the list, in pixels"},
          {"nextPinned, reviewEnterThreshold, followResumeThreshold, deltaY, "
           "legalDeltaChange, jumpDelta, delaySeconds, fireInSeconds, quietForSeconds, "
           "armedForSeconds, recentLiveScrollSeconds, liveScrollIsRecent, "
           "userLiveScrollActive",
           "of some \"follow.…\" events: the limits and times by which the list decides whether to "
           "follow the newest line"}}},
        {"displayUnitEvents",
         {clockTime,
          {"event", "\"frame.publish\""},
          reason,
          sessionPhase,
          layoutModes,
          frameIndexes,
          tails,
          liveCounts,
          {"currentPartialRevision", "the revision of the open row"},
          {"sampledUnitLimit", "the maximum number of listed rows"},
          {"units", "the last rows of the frame", "displayUnit"}}},
        {"liveWindowStopSnapshot",
         {schema,
          {"kind", "\"liveCaptionStopSnapshot\""},
          {"capturedAt", "the time of the snapshot"},
          {"reason", "what caused the snapshot"},
          {"completedTranslations, pendingTranslations, isCommittedTranslating",
           "the number of complete and of pending translations, and whether one was in progress"},
          sessionPhase,
          layoutModes,
          {"translationEnabled, translationBackend, translationTargetLanguage, swapCaptionOrder",
           "the settings of the captions at that moment"},
          tails,
          liveCounts,
          {"hasCurrentPartial, currentPartialID, currentPartialRevision", "the open row"},
          {"captionFrameUpdateRequests, captionFramePublishes",
           "the number of refreshes and of published frames in the whole session"},
          {"statusMessage, translationStatusText, translationStatusIncomplete, "
           "translationRetryAvailable",
           "what else was shown"},
          {"sourceText, translationText, bilingualText",
           "the texts of the rows that the user did not clear"},
          {"units", "these rows, with their whole texts", "displayUnit"}}},
        {"displayUnit",
         {{"index", "the row's position among all rows that are shown"},
          {"id", "the row's UUID"},
          {"state", "\"partial\" or \"final\""},
          {"freezeKind", "\"none\", \"soft\", \"ours\" (frozen before its final) or \"engine\" "
                         "(frozen by its final)"},
          {"revision", "the captions' revision when the row was last written"},
          {"revisionCount", "how often the row's words changed"},
          {"translationUnitID, translationResultSegmentID, translationUnitIndex, "
           "translationUnitCount",
           "the unit in which the row is translated, and the row's place in it"},
          {"translationRole", "\"none\"; \"result\" for the row below which the translation is "
                              "shown; \"member\" for the other rows of a unit"},
          {"startedAt, endedAt, committedAt, firstSeenAt",
           "seconds since 1970 on the session's clock"},
          {"sourceCharacters, sourceWords, sourceHash", "size and hash of the row's text"},
          {"sourcePreview", "not in the stop snapshot: how the text begins"},
          {"sourceText", "only in the stop snapshot: the whole text"},
          {"translationCharacters, translationHash", "size and hash of the row's translation"},
          {"hasTranslation, hasTranslationError, translationPreview",
           "not in the stop snapshot: whether the row has a translation, whether translating "
           "failed, "
           "and how the translation begins"},
          {"translationText, translationError",
           "only in the stop snapshot: the whole translation, or why it failed"}}}};
}

} // namespace tessarune::DiagnosticsRunFields
