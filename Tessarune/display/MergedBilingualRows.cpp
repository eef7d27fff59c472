#include "Tessarune/display/MergedBilingualRows.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <utility>

namespace tessarune {

void MergedBilingualRows::rebuild(const LiveCaptionDisplayRows& source) {
    rows_ = LiveCaptionDisplayRows();
    spans_.clear();
    append(source, {0, source.size()});
}

void MergedBilingualRows::patchAfterAppend(const LiveCaptionDisplayRows& source,
                                           std::size_t oldCount) {
    if (source.size() <= oldCount)
        return;
    if (oldCount > 0 && canMerge(source, oldCount - 1, oldCount)) {
        const Merged old = overlapping({oldCount - 1, oldCount});
        if (old.first < old.last) {
            const std::size_t lower = spans_[old.first].lower;
            replace({old.first, spans_.size()}, source, {lower, source.size()});
            return;
        }
    }
    append(source, {oldCount, source.size()});
}

void MergedBilingualRows::patch(const LiveCaptionDisplayRows& source,
                                std::span<const std::size_t> affected) {
    if (affected.empty() || *std::ranges::max_element(affected) >= source.size()) {
        rebuild(source);
        return;
    }
    Span range{*std::ranges::min_element(affected), *std::ranges::max_element(affected) + 1};
    while (range.lower > 0 && canMerge(source, range.lower - 1, range.lower))
        --range.lower;
    while (canMerge(source, range.upper - 1, range.upper))
        ++range.upper;
    // A row that left its unit may split its former merged row.
    const Merged merged = overlapping(range);
    if (merged.first == merged.last) {
        rebuild(source);
        return;
    }
    range.lower = std::min(range.lower, spans_[merged.first].lower);
    range.upper = std::max(range.upper, spans_[merged.last - 1].upper);
    replace(merged, source, range);
}

bool MergedBilingualRows::canMerge(const LiveCaptionDisplayRows& source, std::size_t first,
                                   std::size_t second) {
    return first < source.size() && second < source.size() && source[first].translationUnitID &&
           source[first].translationUnitID == source[second].translationUnitID;
}

/// Returns the merged rows that cover any of the source rows in `range`.
MergedBilingualRows::Merged MergedBilingualRows::overlapping(Span range) const {
    const auto first = std::ranges::partition_point(
        spans_, [&](const Span& span) { return span.upper <= range.lower; });
    const auto last = std::find_if(first, spans_.end(),
                                   [&](const Span& span) { return span.lower >= range.upper; });
    return {static_cast<std::size_t>(first - spans_.begin()),
            static_cast<std::size_t>(last - spans_.begin())};
}

/// Replaces the merged rows `merged` by new ones, made of the source rows in `range`.
void MergedBilingualRows::replace(Merged merged, const LiveCaptionDisplayRows& source, Span range) {
    MergedBilingualRows rebuilt;
    rebuilt.append(source, range);
    rows_.replace(merged.first, merged.last, rebuilt.rows_);
    const auto first = spans_.begin() + static_cast<std::ptrdiff_t>(merged.first);
    const auto last = spans_.begin() + static_cast<std::ptrdiff_t>(merged.last);
    spans_.insert(spans_.erase(first, last), rebuilt.spans_.begin(), rebuilt.spans_.end());
}

void MergedBilingualRows::append(const LiveCaptionDisplayRows& source, Span range) {
    std::size_t pending = range.lower; // the start of the open group
    for (std::size_t i = range.lower; i < range.upper; ++i) {
        if (source[i].state == CaptionSegmentState::partial) {
            appendGroup(source, {pending, i});
            appendGroup(source, {i, i + 1});
            pending = i + 1;
        } else if (pending < i && !canMerge(source, i, i - 1)) {
            appendGroup(source, {pending, i});
            pending = i;
        }
    }
    appendGroup(source, {pending, range.upper});
}

void MergedBilingualRows::appendGroup(const LiveCaptionDisplayRows& source, Span group) {
    if (group.lower == group.upper)
        return;
    spans_.push_back(group);
    if (group.upper - group.lower == 1) {
        rows_.append(source.element(group.lower));
        return;
    }
    LiveCaptionDisplaySegment row = source[group.upper - 1];
    std::vector<std::string_view> texts;
    for (std::size_t i = group.lower; i < group.upper; ++i) {
        if (!source[i].sourceText.empty())
            texts.push_back(source[i].sourceText);
    }
    row.sourceText = Text::joined(texts, " ");
    for (std::size_t i = group.lower; i < group.upper && row.translatedText.empty(); ++i)
        row.translatedText = source[i].translatedText;
    rows_.push_back(std::move(row));
}

} // namespace tessarune
