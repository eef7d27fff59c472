#include "Tessarune/display/CaptionStageRows.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"

#include <algorithm>

namespace tessarune {

namespace {

/// A preview belongs to one of the newest sentences, so only this many settled rows are searched.
constexpr std::size_t ghostReach = 32;

} // namespace

CaptionStageRows::CaptionStageRows(const LiveCaptionDisplayFrame& frame, Block block, bool merges)
    : block_(block), ghost_(Text::trimmed(frame.ghostTranslationText)) {
    if (block == Block::translations) {
        translations_ = frame.translationTail;
        // As in the bilingual block, a preview disappears when its sentence has a translation.
        const CaptionStageRows bilingual(frame, Block::bilingual, false);
        if (bilingual.hasGhost() || bilingual.isGhostOfPart(frame))
            tail_.push_back({"", ghost_, true, false});
        return;
    }
    const bool isMerged = merges && block == Block::bilingual;
    settled_ = isMerged ? frame.mergedBilingualSourceTail : frame.sourceTextTail;
    addTail(frame, isMerged ? frame.mergedBilingualLiveTailRows : frame.liveTailRows);
    if (block == Block::bilingual && !ghost_.empty())
        findGhostRow(frame);
}

void CaptionStageRows::addTail(const LiveCaptionDisplayFrame& frame,
                               const LiveCaptionDisplayRows& live) {
    const auto add = [this](const LiveCaptionDisplaySegment& row, bool isGrowing) {
        tail_.push_back({row.sourceText,
                         block_ == Block::bilingual ? row.translatedText : std::string(), false,
                         isGrowing});
    };
    for (const LiveCaptionDisplaySegment& row : live)
        add(row, false);
    // The error of a failed start is shown as this row, too, but it does not grow.
    if (frame.livePartialRow)
        add(*frame.livePartialRow, frame.sessionPhase != LiveSessionPhase::failed);
}

void CaptionStageRows::findGhostRow(const LiveCaptionDisplayFrame& frame) {
    const std::string key =
        GhostTranslationPlanner::normalizedKey(frame.ghostTranslationSourceText);
    if (key.empty())
        return;
    for (auto row = tail_.rbegin(); row != tail_.rend(); ++row) {
        if (row->translation.empty() &&
            GhostTranslationPlanner::normalizedKey(row->source) == key) {
            row->translation = ghost_;
            row->isGhost = true;
            return;
        }
    }
    const std::size_t unsearched = settled_.size() - std::min(settled_.size(), ghostReach);
    for (std::size_t i = settled_.size(); i > unsearched; --i) {
        if (settled_[i - 1].translatedText.empty() &&
            settled_[i - 1].normalizedSourceKey() == key) {
            ghostRow_ = i - 1;
            return;
        }
    }
}

bool CaptionStageRows::hasGhost() const {
    return ghostRow_ || std::ranges::any_of(tail_, &CaptionStageRow::isGhost);
}

/// Whether the untranslated rows that may still change contain the preview's sentence, even if it
/// has no row of its own.
bool CaptionStageRows::isGhostOfPart(const LiveCaptionDisplayFrame& frame) const {
    const std::string key =
        GhostTranslationPlanner::normalizedKey(frame.ghostTranslationSourceText);
    if (ghost_.empty() || key.empty())
        return false;
    std::string open = " ";
    for (const CaptionStageRow& row : tail_) {
        if (row.translation.empty())
            open += GhostTranslationPlanner::normalizedKey(row.source) + " ";
    }
    return open.find(" " + key + " ") != std::string::npos;
}

CaptionStageRow CaptionStageRows::row(std::size_t index) const {
    if (index >= settledSize())
        return tail_[index - settledSize()];
    if (block_ == Block::translations)
        return {"", translations_[index], false, false};
    const LiveCaptionDisplaySegment& settled = settled_[index];
    if (block_ == Block::source)
        return {settled.sourceText, "", false, false};
    if (ghostRow_ == index)
        return {settled.sourceText, ghost_, true, false};
    return {settled.sourceText, settled.translatedText, false, false};
}

std::size_t CaptionStageRows::growing() const {
    return !tail_.empty() && tail_.back().isGrowing ? size() - 1 : size();
}

std::vector<std::size_t> CaptionStageRows::changedSince(const CaptionStageRows& before) const {
    std::vector<std::size_t> changed;
    const auto compare = [&](std::size_t index) {
        if (!(row(index) == before.row(index)))
            changed.push_back(index);
    };
    if (block_ == before.block_)
        settled_.forEachUnshared(before.settled_, compare);
    else // another block draws the same rows differently
        for (std::size_t i = 0; i < std::min(settledSize(), before.settledSize()); ++i)
            compare(i);
    translations_.forEachUnshared(before.translations_, compare);
    for (const auto& ghost : {ghostRow_, before.ghostRow_}) {
        if (ghost && *ghost < std::min(settledSize(), before.settledSize()))
            compare(*ghost);
    }
    // From this index on, at least one of the two lists has no settled rows.
    const std::size_t common = std::min(size(), before.size());
    for (std::size_t i = std::min(settledSize(), before.settledSize()); i < common; ++i)
        compare(i);
    std::ranges::sort(changed);
    changed.erase(std::unique(changed.begin(), changed.end()), changed.end());
    return changed;
}

} // namespace tessarune
