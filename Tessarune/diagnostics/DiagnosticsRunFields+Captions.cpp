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
                      "rows of the frame, and translations in it"};
constexpr Field liveCounts{"committedCount, liveLeadingCount, softCaptionCount",
                           "rows of each of the captions' lists"};
constexpr Field sessionPhase{
    "sessionPhase",
    "\"idle\", \"preparing\", \"loading\", \"listening\", \"stopping\", \"failed\""};
constexpr Field frameIndexes{"updateRequestIndex, publishedFrameIndex",
                             "refreshes and published frames before this one"};
constexpr Field unitIdentity{"index, id",
                             "its position among all rows that are shown, and its UUID"};
constexpr Field unitState{
    "state, freezeKind, revision, revisionCount",
    "\"partial\" or \"final\"; \"none\", \"soft\", \"ours\" or \"engine\"; the "
    "number of the change, and how often its words changed"};
constexpr Field unitTranslation{
    "translationUnitID, translationResultSegmentID, translationUnitIndex, translationUnitCount, "
    "translationRole",
    "the unit in which the row is translated; \"none\", \"member\" or, for the row below which "
    "the translation is shown, \"result\""};
constexpr Field unitTimes{"startedAt, endedAt, committedAt, firstSeenAt", "on the session's clock"};
constexpr Field unitSource{"sourceCharacters, sourceWords, sourceHash",
                           "size and hash of the text"};

} // namespace

Table captions() {
    return {
        {"boundaryEvents",
         {clockTime,
          {"phase", "\"partial\" or \"final\""},
          {"inputText", "the recognised text"},
          {"softPieces, hardPieces, leading, tail",
           "stable clauses, sentences frozen by this decision, sentences that may still change, "
           "the "
           "tail"},
          {"reasons", "the reasons of the cut"}}},
        {"corrections",
         {clockTime,
          {"shownText, finalText", "what was on the screen, and the final"},
          {"droppedWords, addedWords, commonWords", "by how many words the two differ"}}},
        {"translationEvents",
         {clockTime,
          {"phase, scope",
           "\"start\", \"success\" or \"failure\"; \"committed\" or, for a preview, \"ghost\""},
          {"translationUnitID, segmentID, segmentIDs, resultSegmentID, segmentCount",
           "the rows that are translated together, and the row below which the translation is "
           "shown"},
          {"sourceText, translatedText, sourceCharacters, translatedCharacters", "the texts"},
          {"sourceLanguage, targetLanguage, backend", "languages and backend"},
          {"durationSeconds, queueDelaySeconds, availabilitySeconds, translateCallSeconds, "
           "applySeconds",
           "the duration in total and of each step"},
          {"preflightStatus, attemptCount, automaticRetry, recoveryAction", "the attempts"},
          {"error, failureCategory, failureDomain, failureCode, failureReason", "the failure"},
          {"sessionGeneration", "tells a late result from a current one"}}},
        {"liveCaptionEvents",
         {clockTime,
          {"event", "\"diagnostics.start\", \"frame.refresh\", \"setting\", \"softCaption\", "
                    "\"liveCaption.stopSnapshot\", or \"follow.\" and an action of the list of "
                    "captions that "
                    "keeps it at its newest line"},
          reason,
          sessionPhase,
          layoutModes,
          displaySettings,
          liveCounts,
          {"clearedCount", "rows that the user cleared away"},
          {"hasPartial, currentPartialID, currentPartialRevision, currentPartialState",
           "the open row"},
          tails,
          {"ghostVisible, ghostSourceCharacters", "the preview"},
          {"statusVisible, translationStatusVisible, translationStatusIncomplete, "
           "translationRetryAvailable",
           "what else is shown"},
          {"buildSourceMS, buildTranslationMS, buildStatusMS, buildTotalMS, compareMS",
           "the cost of the frame"},
          frameIndexes,
          {"published", "whether anything visible had changed"},
          {"captionStageRenders, captionStageSourceOnlyRenders, captionStageStandardRenders, "
           "captionStageLyricsRenders, captionStageBilingualCompareRenders",
           "how often the rows of the caption window were updated, by layout: once for each frame "
           "and for each change of their settings, even while the window is hidden; the standard "
           "layout is the one that compares both languages"},
          {"name, value", "of \"setting\": the setting and its new value"},
          {"phase, enabled, stableSeconds, candidateCount, visibleCount, sample, resetReason",
           "of \"softCaption\": the clauses of the open sentence that are shown"},
          {"completedTranslations, pendingTranslations, sourceCharacters, translationCharacters, "
           "bilingualCharacters, elapsedMS",
           "of \"liveCaption.stopSnapshot\""},
          {"isPinned, isReviewing, overflowing, clipY, clipHeight, clipMaxY, documentHeight,"
           " legalBottomY, legalBottomDelta, legacyDistanceFromBottom, rows",
           "of \"follow.…\": whether the newest line is followed or the user reads further up,"
           " and the position of the list, in pixels"},
          {"nextPinned, reviewEnterThreshold, followResumeThreshold, deltaY, "
           "legalDeltaChange, jumpDelta, delaySeconds, fireInSeconds, quietForSeconds, "
           "armedForSeconds, recentLiveScrollSeconds, liveScrollIsRecent, "
           "userLiveScrollActive",
           "of some of these events: scrolling, and when the list returns by itself"}}},
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
          {"sampledUnitLimit", "the number of rows that are listed at most, counted from the end"},
          {"units", "the rows", "displayUnit"}}},
        {"liveWindowStopSnapshot",
         {schema,
          {"kind, capturedAt, reason", "\"liveCaptionStopSnapshot\", when, and why"},
          {"completedTranslations, pendingTranslations, isCommittedTranslating",
           "whether the translations were complete"},
          sessionPhase,
          layoutModes,
          {"translationEnabled, translationBackend, translationTargetLanguage, swapCaptionOrder",
           "the settings of the captions at that moment"},
          tails,
          liveCounts,
          {"hasCurrentPartial, currentPartialID, currentPartialRevision", "the open row"},
          {"captionFrameUpdateRequests, captionFramePublishes", "of the whole session"},
          {"statusMessage, translationStatusText, translationStatusIncomplete, "
           "translationRetryAvailable",
           "what else was shown"},
          {"sourceText, translationText, bilingualText",
           "the texts of the rows that the user did not clear"},
          {"units", "these rows, with their whole texts", "displayUnit"}}},
        {"displayUnit",
         {unitIdentity,
          unitState,
          unitTranslation,
          unitTimes,
          unitSource,
          {"sourcePreview, sourceText", "its beginning; in the stop snapshot the whole text"},
          {"hasTranslation, translationCharacters, translationHash, translationPreview, "
           "translationText, hasTranslationError, translationError",
           "its translation, in the same way"}}}};
}

} // namespace tessarune::DiagnosticsRunFields
