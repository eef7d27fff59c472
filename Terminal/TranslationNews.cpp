#include "Terminal/TranslationNews.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

bool showsOutcome(const CaptionSegment& row) {
    return row.translationResultSegmentID == row.id && (row.translatedText || row.translationError);
}

std::vector<std::size_t> TranslationNews::take(const CaptionCore::Rows& rows, std::size_t count) {
    std::vector<std::size_t> found;
    takenUnits_.resize(count - finished_);
    for (std::size_t i = finished_; i < count; ++i) {
        auto& taken = takenUnits_[i - finished_];
        if (!showsOutcome(rows[i]) || taken == rows[i].translationUnitID)
            continue;
        taken = rows[i].translationUnitID;
        found.push_back(i);
    }
    for (; finished_ < count && rows[finished_].translatedText; ++finished_)
        takenUnits_.pop_front();
    return found;
}

std::span<const CaptionSegment> unitRows(const CaptionCore::Rows& rows, std::size_t index) {
    std::size_t first = index;
    while (first > 0 && rows[first - 1].translationUnitID == rows[index].translationUnitID)
        --first;
    return std::span(rows).subspan(first, index - first + 1);
}

std::string sourceText(std::span<const CaptionSegment> rows) {
    std::vector<std::string_view> texts;
    for (const CaptionSegment& row : rows)
        texts.push_back(Text::trimmed(row.sourceText));
    return Text::joined(texts, " ");
}

} // namespace tessarune
