#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/SessionTranscriptBuilder.h"

#include <algorithm>

namespace tessarune {

namespace {

constexpr double liveHistoryTextMinInterval = 1.0;

} // namespace

void LiveTranscriptStore::refreshCaptionDisplay(const std::string& reason,
                                                const LiveCaptionDisplayTranslationPatch* patch) {
    display_.refresh(reason, view_, patch);
}

void LiveTranscriptStore::showError(const std::string& message) {
    message_.present(message, now());
    view_.presentedError = message;
    refreshCaptionDisplay("error.presentation");
}

void LiveTranscriptStore::updateVisibleSourceTextFlag() {
    const auto isVisible = [this](const CaptionSegment& row) {
        return !Text::trimmed(row.sourceText).empty() && !view_.clearedSegmentIDs->contains(row.id);
    };
    const CaptionCore::Rows& committed = *core_.committedSegments;
    const bool visible = isVisible(*core_.currentPartial) ||
                         std::ranges::any_of(*core_.softCaptionSegments, isVisible) ||
                         std::ranges::any_of(*core_.liveLeadingSentences, isVisible) ||
                         std::any_of(committed.rbegin(), committed.rend(), isVisible);
    if (visible == *view_.hasVisibleSourceTextFlag)
        return;
    view_.hasVisibleSourceTextFlag = visible;
    ++pipelinePerf_.toolbarTextFlagUpdates;
}

namespace {

SessionTranscriptBuilder::Sources sources(const CaptionCore& core, bool withPartial) {
    static const CaptionSegment nothing;
    return {*core.committedSegments, *core.liveLeadingSentences, *core.softCaptionSegments,
            withPartial ? *core.currentPartial : nothing};
}

} // namespace

TranscriptSnapshot LiveTranscriptStore::exportTranscriptSnapshot() const {
    const auto all = sources(core_, !message_.isShown());
    return {SessionTranscriptBuilder::sourceText(all),
            SessionTranscriptBuilder::bilingualText(all)};
}

TranscriptSnapshot LiveTranscriptStore::visibleText() const {
    const auto rows = SessionTranscriptBuilder::visibleSourceSegments(
        sources(core_, !message_.isShown()), *view_.clearedSegmentIDs);
    return {SessionTranscriptBuilder::sourceText(rows),
            SessionTranscriptBuilder::bilingualText(rows)};
}

void LiveTranscriptStore::clearCaptions() {
    // What has no text yet is what is said next.
    auto cleared = *view_.clearedSegmentIDs;
    for (const CaptionSegment& row : SessionTranscriptBuilder::visibleSourceSegments(
             sources(core_, true), *view_.clearedSegmentIDs))
        cleared.insert(row.id);
    view_.clearedSegmentIDs = std::move(cleared);
    environment_.translation->cancelGhostTranslation();
    updateVisibleSourceTextFlag();
    refreshCaptionDisplay("captions.clear");
}

void LiveTranscriptStore::updateLiveHistoryTextIfNeeded(bool force) {
    // An empty text is always rebuilt, so that the first words appear at once.
    const double startedAt = now();
    if (!force && !view_.liveHistoryText->empty() &&
        startedAt - liveHistory_.builtAt < liveHistoryTextMinInterval)
        return;
    LiveHistoryText::Built built =
        liveHistory_.build(*view_.liveHistoryText, sources(core_, !message_.isShown()));
    liveHistory_.builtAt = startedAt;
    const double busy = now() - startedAt;
    ++pipelinePerf_.liveHistoryTextBuilds;
    pipelinePerf_.liveHistoryTextBuildSeconds += busy;
    pipelinePerf_.liveHistoryTextBuildMaxMS =
        std::max(pipelinePerf_.liveHistoryTextBuildMaxMS, busy * 1000);
    pipelinePerf_.liveHistoryTextCharacters = static_cast<double>(built.characters);
    if (built.text != *view_.liveHistoryText)
        view_.liveHistoryText = std::move(built.text);
}

} // namespace tessarune
