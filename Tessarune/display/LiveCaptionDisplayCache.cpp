#include "Tessarune/display/LiveCaptionDisplayCache.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace tessarune {

bool LiveCaptionDisplayCache::isForced(std::string_view reason) {
    return reason.starts_with("settings.translation") || reason.starts_with("session.") ||
           reason.starts_with("listen.start") || reason == "caption.clear" ||
           reason == "translation.retry" || reason == "store.init";
}

void LiveCaptionDisplayCache::update(const Captions& captions, bool force, const Patch* patch) {
    const double startedAt = now_();
    updateSourceRows(captions, force, patch);
    updateLiveTailRows(captions);
    updateLivePartial(captions);
    const double sourceDoneAt = now_();
    lastSourceUpdateElapsed_ = sourceDoneAt - startedAt;
    updateTranslationRows(captions, force, patch);
    lastTranslationUpdateElapsed_ = now_() - sourceDoneAt;
}

LiveCaptionDisplayFrame LiveCaptionDisplayCache::frame() const {
    LiveCaptionDisplayFrame frame;
    frame.sourceRevision = sourceRevision_;
    frame.translationRevision = translationRevision_;
    frame.sourceTextTail = sourceTextRows_;
    frame.liveTailRows = liveTailRows_;
    frame.mergedBilingualSourceTail = mergedBilingual_.rows();
    frame.mergedBilingualLiveTailRows = mergedBilingualLiveTailRows_;
    frame.livePartialRow = livePartialRow_;
    frame.translationTail = translationRows_;
    return frame;
}

std::size_t LiveCaptionDisplayCache::sourceSegmentCount() const {
    return places_.size() + liveTailSegments_.size() + (livePartialSegment_ ? 1 : 0);
}

std::vector<CaptionSegment>
LiveCaptionDisplayCache::newestSourceSegments(std::span<const CaptionSegment> committed,
                                              std::size_t limit) const {
    std::vector<CaptionSegment> newest;
    const auto add = [&](const CaptionSegment& segment) {
        if (newest.size() < limit)
            newest.push_back(segment);
    };
    if (livePartialSegment_)
        add(*livePartialSegment_);
    std::ranges::for_each(liveTailSegments_ | std::views::reverse, add);
    for (std::size_t i = committed.size(); i > 0 && newest.size() < limit; --i) {
        if (places_.contains(committed[i - 1].id))
            add(committed[i - 1]);
    }
    std::ranges::reverse(newest);
    return newest;
}

// Committed rows

void LiveCaptionDisplayCache::updateSourceRows(const Captions& captions, bool force,
                                               const Patch* patch) {
    SourceSignature signature{SourceSegmentArraySignature::of(captions.committed),
                              captions.clearedSegmentIDs.size()};
    const bool isChanged = sourceSignature_ != signature;
    if (force || (isChanged && !appendSourceRowsIfPossible(captions))) {
        rebuildSourceRows(captions);
    } else if (patch) {
        // The patch is needed even after an append, because its unit may consist of earlier rows.
        patchSourceRows(*patch);
    }
    if (force || isChanged)
        sourceSignature_ = std::move(signature);
}

void LiveCaptionDisplayCache::rebuildSourceRows(const Captions& captions) {
    places_.clear();
    sourceTextRows_ = {};
    for (const CaptionSegment& segment : captions.committed) {
        if (!captions.clearedSegmentIDs.contains(segment.id))
            addSourceSegment(segment);
    }
    mergedBilingual_.rebuild(sourceTextRows_);
    // Forces an update of the live tail, which leaves out committed rows.
    liveTailSignature_.reset();
    ++sourceRevision_;
    ++sourceFullRebuildCount_;
}

bool LiveCaptionDisplayCache::appendSourceRowsIfPossible(const Captions& captions) {
    using Edge = SourceSegmentEdgeSignature;
    if (!sourceSignature_ || sourceSignature_->clearedCount != captions.clearedSegmentIDs.size())
        return false;
    const SourceSegmentArraySignature& previous = sourceSignature_->committed;
    if (captions.committed.size() <= previous.count)
        return false;
    if (previous.count > 0 && (*previous.first != Edge::of(captions.committed.front()) ||
                               *previous.last != Edge::of(captions.committed[previous.count - 1])))
        return false;
    const std::size_t oldRowCount = sourceTextRows_.size();
    for (const CaptionSegment& segment : captions.committed.subspan(previous.count)) {
        if (captions.clearedSegmentIDs.contains(segment.id))
            continue;
        addSourceSegment(segment);
        // The row is committed now, so it is no longer shown in the live tail.
        if (isShownInLiveTail(segment.id))
            liveTailSignature_.reset();
    }
    mergedBilingual_.patchAfterAppend(sourceTextRows_, oldRowCount);
    ++sourceRevision_;
    // If rows were cleared, the statistics count an append as a full rebuild, although it is cheap.
    ++(captions.clearedSegmentIDs.empty() ? sourceAppendUpdateCount_ : sourceFullRebuildCount_);
    return true;
}

void LiveCaptionDisplayCache::addSourceSegment(const CaptionSegment& segment) {
    Place place{.segment = places_.size(), .row = {}};
    if (auto row = LiveCaptionDisplaySegment::from(segment)) {
        place.row = static_cast<std::uint32_t>(sourceTextRows_.size());
        sourceTextRows_.push_back(std::move(*row));
    }
    places_[segment.id] = place;
}

void LiveCaptionDisplayCache::patchSourceRows(const Patch& patch) {
    const std::string text(Text::trimmed(patch.translatedText.value_or("")));
    std::vector<std::size_t> affected;
    for (const UUID& id : patch.segmentIDs) {
        const auto at = places_.find(id);
        if (at == places_.end() || !at->second.row)
            continue;
        const std::size_t index = *at->second.row;
        LiveCaptionDisplaySegment row = sourceTextRows_[index];
        row.translationUnitID = patch.translationUnitID;
        row.translatedText = id == patch.resultSegmentID ? text : "";
        sourceTextRows_.set(index, std::move(row));
        affected.push_back(index);
    }
    if (affected.empty())
        return;
    mergedBilingual_.patch(sourceTextRows_, affected);
    ++sourceRevision_;
}

// Live rows

void LiveCaptionDisplayCache::updateLiveTailRows(const Captions& captions) {
    LiveTailSignature signature{LiveTailSegmentArraySignature::of(captions.liveLeading),
                                LiveTailSegmentArraySignature::of(captions.softCaptions),
                                captions.clearedSegmentIDs.size()};
    if (liveTailSignature_ == signature)
        return;
    liveTailSignature_ = std::move(signature);
    liveTailSegments_.clear();
    liveTailRows_ = {};
    for (const auto segments : {captions.liveLeading, captions.softCaptions}) {
        for (const CaptionSegment& segment : segments) {
            auto row = LiveCaptionDisplaySegment::from(segment);
            if (!row || captions.clearedSegmentIDs.contains(segment.id) ||
                places_.contains(segment.id) || isShownInLiveTail(segment.id))
                continue;
            liveTailSegments_.push_back(segment);
            liveTailRows_.push_back(std::move(*row));
        }
    }
    MergedBilingualRows merged;
    merged.rebuild(liveTailRows_);
    mergedBilingualLiveTailRows_ = merged.rows();
    ++sourceRevision_;
}

bool LiveCaptionDisplayCache::isShownInLiveTail(const UUID& id) const {
    return std::ranges::any_of(liveTailSegments_,
                               [&](const CaptionSegment& segment) { return segment.id == id; });
}

void LiveCaptionDisplayCache::updateLivePartial(const Captions& captions) {
    const CaptionSegment& partial = captions.partial;
    auto row = LiveCaptionDisplaySegment::from(partial);
    const bool isVisible = row && !captions.clearedSegmentIDs.contains(partial.id) &&
                           !places_.contains(partial.id) && !isShownInLiveTail(partial.id);
    PartialSignature signature{SegmentEdgeSignature::of(partial), isVisible};
    if (partialSignature_ == signature)
        return;
    partialSignature_ = std::move(signature);
    livePartialSegment_ = isVisible ? std::optional(partial) : std::nullopt;
    livePartialRow_ = isVisible ? std::move(row) : std::nullopt;
    ++sourceRevision_;
}

// Translations

void LiveCaptionDisplayCache::updateTranslationRows(const Captions& captions, bool force,
                                                    const Patch* patch) {
    auto signature =
        TranslationSignature::of(captions.committed, captions.clearedSegmentIDs.size());
    const auto before = std::exchange(translationSignature_, signature);
    const bool isChanged = before != signature;
    if (force || (isChanged && !(before && before->isContinuedBy(captions.committed, signature,
                                                                 patch != nullptr)))) {
        rebuildTranslationRows(captions);
        return;
    }
    const std::size_t rowsBefore = translationRows_.size();
    if (isChanged) {
        for (const CaptionSegment& segment : captions.committed.subspan(before->committedCount))
            addTranslationRow(captions, segment);
    }
    if (!patch) {
        translationRevision_ += isChanged ? 1 : 0;
        return;
    }
    if (translationRows_.size() != rowsBefore)
        ++translationRevision_;
    // A signature contains only the first and the last row, so it can stay equal although the unit
    // has a new text. The text is shown here in any case.
    if (patch->translatedText && places_.contains(patch->resultSegmentID) &&
        !patchTranslationRows(*patch))
        rebuildTranslationRows(captions);
}

/// Puts the text into its row, or adds a row at the end. Returns false if neither is possible.
bool LiveCaptionDisplayCache::patchTranslationRows(const Patch& patch) {
    const std::string text(Text::trimmed(*patch.translatedText));
    if (translationRows_.empty() || text.empty())
        return false;
    const auto row = translationRowIndexByResultSegmentID_.find(patch.resultSegmentID);
    if (row != translationRowIndexByResultSegmentID_.end()) {
        if (Text::equal(translationRows_[row->second], text))
            return true;
        translationRows_.set(row->second, text);
    } else {
        const std::size_t segment = places_.at(patch.resultSegmentID).segment;
        if (segment < lastTranslatedSegmentIndex_)
            return false;
        translationRowIndexByResultSegmentID_[patch.resultSegmentID] = translationRows_.size();
        lastTranslatedSegmentIndex_ = segment;
        translationRows_.push_back(text);
    }
    ++translationRevision_;
    return true;
}

void LiveCaptionDisplayCache::rebuildTranslationRows(const Captions& captions) {
    translationRows_ = {};
    translationRowIndexByResultSegmentID_.clear();
    lastTranslatedSegmentIndex_ = 0;
    for (const CaptionSegment& segment : captions.committed)
        addTranslationRow(captions, segment);
    ++translationRevision_;
}

void LiveCaptionDisplayCache::addTranslationRow(const Captions& captions,
                                                const CaptionSegment& segment) {
    const auto visible = TranslationPresentationBuilder::visibleTranslations(
        std::span(&segment, 1), captions.clearedSegmentIDs);
    if (visible.empty())
        return;
    translationRowIndexByResultSegmentID_[segment.id] = translationRows_.size();
    translationRows_.push_back(visible.front());
    if (const auto at = places_.find(segment.id); at != places_.end())
        lastTranslatedSegmentIndex_ = at->second.segment;
}

} // namespace tessarune
