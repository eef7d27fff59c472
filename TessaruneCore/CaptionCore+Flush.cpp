#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tessarune {

namespace {

bool sameTexts(const CaptionCore::Rows& rows, const std::vector<std::string>& texts) {
    return std::equal(rows.begin(), rows.end(), texts.begin(), texts.end(),
                      [](const CaptionSegment& row, const std::string& text) {
                          return Text::equal(row.sourceText, text);
                      });
}

bool sameTexts(const CaptionCore::Rows& a, const CaptionCore::Rows& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const CaptionSegment& x, const CaptionSegment& y) {
                          return Text::equal(x.sourceText, y.sourceText);
                      });
}

std::size_t wordCount(const CaptionCore::Rows& rows) {
    std::size_t count = 0;
    for (const CaptionSegment& row : rows)
        count += Text::countOfBlankSeparated(row.sourceText);
    return count;
}

} // namespace

void CaptionCore::flushPartial() {
    if (!pendingPartial_)
        return;
    const PendingPartial pending = *std::exchange(pendingPartial_, std::nullopt);
    lastPartialFlush_ = now_();
    const Config cfg = config_();
    const bool isNewUtterance = utteranceIsOver();
    if (isNewUtterance)
        beginUtterance(pending.timestamp, cfg);

    const std::string text(Text::trimmed(pending.text));
    if (text.empty()) {
        report(onActivity, Activity::partialDeduped);
        return;
    }
    const BoundaryDecision decision =
        boundaryEngine_.ingestPartial(text, boundaryContext(cfg), now_());
    emitPartialBoundaryObservation(text, decision);
    commitFrozen(text, decision, cfg);
    SoftUpdate softUpdate = advanceSoftCaptions(decision, cfg);

    // Even after a commit, the open text may be unchanged.
    if (!isNewUtterance && isAlreadyShown(softUpdate, decision.leading)) {
        report(onActivity, Activity::partialDeduped);
        return;
    }
    revision_ = std::max(nextRevision(), pending.revision);
    setLiveLeading(decision.leading);
    if (*softCaptionSegments != softUpdate.visible)
        softCaptionSegments = std::move(softUpdate.visible);
    currentPartial.mutate([&](CaptionSegment& row) {
        row.sourceText = std::move(softUpdate.liveText);
        row.revision = revision_;
        row.state = CaptionSegmentState::partial;
        row.translatedText.reset();
        row.endedAt.reset();
    });
    report(onActivity, Activity::partialApplied);
}

bool CaptionCore::utteranceIsOver() const {
    return currentPartial->state == CaptionSegmentState::final ||
           (!committedSegments->empty() && committedSegments->back().id == currentPartial->id);
}

void CaptionCore::beginUtterance(double timestamp, const Config& cfg) {
    currentPartial = freshPartial(timestamp);
    resetBoundaries();
    resetSoftCaptions(SoftCaptionObservation::Phase::reset, "newUtterance", cfg);
    tracker_ = UtteranceTracker();
}

void CaptionCore::commitFrozen(const std::string& text, const BoundaryDecision& decision,
                               const Config& cfg) {
    const auto churn =
        tracker_.observe(text, decision.leading, decision.tail, decision.hardPieces.size(), now_());
    const auto meta = consumeMeta(decision.hardPieces, churn, nullptr);
    const Rows committed =
        commitSentences(decision.hardPieces, FreezeKind::ours, now_(), std::nullopt, meta);
    lockCount = *lockCount + std::ssize(committed);
    if (committed.empty())
        return;
    announceCommit(FreezeKind::ours, committed);
    resetSoftCaptions(SoftCaptionObservation::Phase::hardLock, "localAgreement", cfg);
}

CaptionCore::SoftUpdate CaptionCore::advanceSoftCaptions(const BoundaryDecision& decision,
                                                         const Config& cfg) {
    auto [visible, changed] =
        softCaptionTracker_.advance(decision.softPieces, cfg.softCaptionEnabled,
                                    cfg.softCaptionStableSeconds, now_(), nextRevision(), newUUID_);
    LiveTail live = liveTail(visible, decision.tail);
    if (!live.matchedAllSoftPrefixes) {
        withdrawSoftCaptions(decision, cfg, changed);
        return {{}, decision.tail};
    }
    if (changed && onSoftCaptionChange) {
        auto observation = softCaptionObservation(SoftCaptionObservation::Phase::partial, cfg);
        observation.candidateCount = std::ssize(decision.softPieces);
        observation.visibleCount = std::ssize(visible);
        observation.changed = true;
        if (!visible.empty()) {
            observation.sample = SoftCaptionObservation::sampleOf(visible.back().sourceText);
        } else if (!decision.softPieces.empty()) {
            observation.sample = SoftCaptionObservation::sampleOf(decision.softPieces.back());
        }
        report(onSoftCaptionChange, observation);
    }
    return {std::move(visible), std::move(live.text)};
}

void CaptionCore::withdrawSoftCaptions(const BoundaryDecision& decision, const Config& cfg,
                                       bool changed) {
    const bool wasActive = !softCaptionTracker_.isEmpty() || changed;
    softCaptionTracker_.clear();
    if (!onSoftCaptionChange)
        return;
    auto observation = softCaptionObservation(SoftCaptionObservation::Phase::reset, cfg);
    observation.candidateCount = std::ssize(decision.softPieces);
    observation.changed = wasActive;
    observation.resetReason = "softPrefixMismatch";
    observation.sample = SoftCaptionObservation::sampleOf(Text::joined(decision.softPieces, " "));
    report(onSoftCaptionChange, observation);
}

bool CaptionCore::isAlreadyShown(const SoftUpdate& softUpdate, const Sentences& leading) const {
    return Text::equal(currentPartial->sourceText, softUpdate.liveText) &&
           sameTexts(*liveLeadingSentences, leading) &&
           sameTexts(*softCaptionSegments, softUpdate.visible);
}

void CaptionCore::setLiveLeading(const Sentences& sentences) {
    const Rows& shown = *liveLeadingSentences;
    if (sentences.size() == shown.size()) {
        // Edit in place: a display can animate the change, and an unchanged list is not announced.
        for (std::size_t i = 0; i < sentences.size(); ++i) {
            if (!Text::equal(shown[i].sourceText, sentences[i]))
                liveLeadingSentences.mutate([&](Rows& rows) { rows[i].sourceText = sentences[i]; });
        }
        return;
    }
    const double t = now_();
    Rows rows(shown.begin(), shown.begin() + static_cast<std::ptrdiff_t>(
                                                 std::min(shown.size(), sentences.size())));
    for (std::size_t i = 0; i < sentences.size(); ++i) {
        if (i == rows.size()) {
            rows.push_back(freshPartial(t));
            // The sentence is complete, although its text may still change.
            rows.back().state = CaptionSegmentState::final;
        }
        rows[i].sourceText = sentences[i];
    }
    liveLeadingSentences = std::move(rows);
}

void CaptionCore::recordRevealedPrefix(std::int64_t count) {
    const std::string& text = currentPartial->sourceText;
    if (count < 1 || text.empty())
        return;
    const std::size_t words =
        Text::countOfBlankSeparated(Text::prefix(text, static_cast<std::size_t>(count)));
    const std::size_t base = static_cast<std::size_t>(tracker_.committedWordCount) +
                             wordCount(*liveLeadingSentences) + wordCount(*softCaptionSegments);
    const double t = now_();
    auto& revealed = tracker_.wordRevealed;
    for (std::size_t i = base; i < base + words && i < revealed.size(); ++i) {
        if (!revealed[i])
            revealed[i] = t;
    }
}

} // namespace tessarune
