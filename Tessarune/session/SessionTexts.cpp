#include "Tessarune/session/SessionTexts.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/SessionTranscriptBuilder.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

namespace tessarune {

namespace {

constexpr double liveHistoryTextMinInterval = 1.0;

SessionTranscriptBuilder::Sources sources(const CaptionCore& core, bool withPartial) {
    static const CaptionSegment nothing;
    return {*core.committedSegments, *core.liveLeadingSentences, *core.softCaptionSegments,
            withPartial ? *core.currentPartial : nothing};
}

} // namespace

void SessionTexts::beginSession() {
    view_.clearedSegmentIDs = std::unordered_set<UUID>();
    savedTranslations_ = 0;
    said_.clear();
    saidWords_.clear();
    view_.liveHistoryText = std::string();
    liveHistory_.builtAt = 0;
    updateVisibleSourceTextFlag();
}

void SessionTexts::keepSaid() {
    const auto rows =
        SessionTranscriptBuilder::visibleSourceSegments(sources(core_, !message_.isShown()), {});
    said_.insert(said_.end(), rows.begin(), rows.end());
    saidWords_.insert(core_.wordEvents().begin(), core_.wordEvents().end());
}

TranscriptSnapshot SessionTexts::exportTranscriptSnapshot() const {
    const auto all = sources(core_, !message_.isShown());
    return {SessionTranscriptBuilder::sourceText(all),
            SessionTranscriptBuilder::bilingualText(all)};
}

TranscriptSnapshot SessionTexts::visibleText() const {
    const auto rows = SessionTranscriptBuilder::visibleSourceSegments(
        sources(core_, !message_.isShown()), *view_.clearedSegmentIDs);
    return {SessionTranscriptBuilder::sourceText(rows),
            SessionTranscriptBuilder::bilingualText(rows)};
}

void SessionTexts::clear() {
    auto cleared = *view_.clearedSegmentIDs;
    for (const CaptionSegment& row : SessionTranscriptBuilder::visibleSourceSegments(
             sources(core_, true), *view_.clearedSegmentIDs))
        cleared.insert(row.id);
    view_.clearedSegmentIDs = std::move(cleared);
    updateVisibleSourceTextFlag();
}

CaptionCore::Rows SessionTexts::committedInSession() const {
    CaptionCore::Rows rows = said_;
    rows.insert(rows.end(), core_.committedSegments->begin(), core_.committedSegments->end());
    return rows;
}

TranscriptSnapshot SessionTexts::savedTexts() const {
    const CaptionCore::Rows committed = committedInSession();
    auto all = sources(core_, !message_.isShown());
    all.committedSegments = committed;
    TranscriptSnapshot texts{SessionTranscriptBuilder::sourceText(all), {}};
    if (translatedCount() > 0)
        texts.bilingualText = SessionTranscriptBuilder::bilingualText(all);
    return texts;
}

TranscriptSnapshot SessionTexts::runTexts() const {
    TranscriptSnapshot texts = exportTranscriptSnapshot();
    if (TranslationPresentationBuilder::translatedCount(*core_.committedSegments) == 0)
        texts.bilingualText.clear();
    return texts;
}

std::optional<HistoryWordTimeline>
SessionTexts::savedTimeline(std::optional<double> recordingStartedAt,
                            const std::string& recognitionOptionID) const {
    HistoryWordTimeline::WordEvents words = saidWords_;
    words.insert(core_.wordEvents().begin(), core_.wordEvents().end());
    return HistoryWordTimeline::build(recordingStartedAt, recognitionOptionID, committedInSession(),
                                      words);
}

std::size_t SessionTexts::translatedCount() const {
    return TranslationPresentationBuilder::translatedCount(said_) +
           TranslationPresentationBuilder::translatedCount(*core_.committedSegments);
}

void SessionTexts::updateVisibleSourceTextFlag() {
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
    ++perf_.toolbarTextFlagUpdates;
}

void SessionTexts::updateLiveHistoryTextIfNeeded(bool force) {
    // An empty text is always rebuilt, so that the first words appear at once.
    const double startedAt = host_.now();
    if (!force && !view_.liveHistoryText->empty() &&
        startedAt - liveHistory_.builtAt < liveHistoryTextMinInterval)
        return;
    LiveHistoryText::Built built =
        liveHistory_.build(*view_.liveHistoryText, sources(core_, !message_.isShown()));
    liveHistory_.builtAt = startedAt;
    const double busy = host_.now() - startedAt;
    ++perf_.liveHistoryTextBuilds;
    perf_.liveHistoryTextBuildSeconds += busy;
    perf_.liveHistoryTextBuildMaxMS = std::max(perf_.liveHistoryTextBuildMaxMS, busy * 1000);
    perf_.liveHistoryTextCharacters = static_cast<double>(built.characters);
    if (built.text != *view_.liveHistoryText)
        view_.liveHistoryText = std::move(built.text);
}

} // namespace tessarune
