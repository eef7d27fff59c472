#include "Tessarune/history/SubtitleText.h"

#include "TessaruneCore/text/LineBreaks.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <algorithm>

namespace tessarune {

SubtitleText::SubtitleText(std::string_view text) : text_(text) {
    for (const auto piece : Text::linePieces(text)) {
        const std::string_view bare = Text::trimmed(piece);
        if (Text::columns(bare) <= mostColumns) {
            add(piece);
            continue;
        }
        // A piece that is wider than a line may be broken anywhere.
        std::size_t at = 0;
        const auto cuts = Text::wrapped(bare, mostColumns);
        for (std::size_t i = 0; i < cuts.size(); ++i) {
            const bool isLast = i + 1 == cuts.size();
            add(piece.substr(at, isLast ? std::string_view::npos : cuts[i].size()));
            at += cuts[i].size();
        }
    }
}

void SubtitleText::add(std::string_view piece) {
    const auto offset = static_cast<std::size_t>(piece.data() - text_.data());
    pieces_.push_back({offset, allColumns_, Text::columns(Text::trimmed(piece))});
    allColumns_ += Text::columns(piece);
}

std::size_t SubtitleText::offset(std::size_t piece) const {
    return piece < pieces_.size() ? pieces_[piece].offset : text_.size();
}

std::size_t SubtitleText::columns(Range range) const {
    if (range.first >= range.second)
        return 0;
    const Piece& last = pieces_[range.second - 1];
    return last.before + last.columns - pieces_[range.first].before;
}

std::size_t SubtitleText::endOfLine(std::size_t first, std::size_t last, std::size_t width) const {
    std::size_t end = first + 1;
    while (end < last && columns({first, end + 1}) <= width)
        ++end;
    return end;
}

std::size_t SubtitleText::countOfLines(Range range, std::size_t width) const {
    std::size_t count = 0;
    for (std::size_t at = range.first; at < range.second; at = endOfLine(at, range.second, width))
        ++count;
    return count;
}

std::vector<std::string> SubtitleText::wrapped(Range range) const {
    const std::size_t count = countOfLines(range, mostColumns);
    std::size_t tooNarrow = 0;
    std::size_t width = mostColumns;
    while (width - tooNarrow > 1) {
        const std::size_t middle = (width + tooNarrow) / 2;
        const bool isEnough = countOfLines(range, middle) <= count;
        (isEnough ? width : tooNarrow) = middle;
    }
    std::vector<std::string> lines;
    for (std::size_t at = range.first; at < range.second;) {
        const std::size_t end = endOfLine(at, range.second, width);
        const auto line = Text::trimmed(text_.substr(offset(at), offset(end) - offset(at)));
        if (!line.empty())
            lines.emplace_back(line);
        at = end;
    }
    return lines;
}

std::vector<SubtitleText::Range> SubtitleText::parts(std::size_t count) const {
    std::vector<Range> ranges;
    std::size_t at = 0;
    for (std::size_t i = 1; i <= count; ++i) {
        const std::size_t from = at;
        // A piece belongs to the part that its middle lies in.
        while (at < pieces_.size() &&
               (i == count ||
                (pieces_[at].before * 2 + pieces_[at].columns) * count < allColumns_ * 2 * i))
            ++at;
        ranges.emplace_back(from, at);
    }
    return ranges;
}

std::size_t SubtitleText::countOfFittingParts(std::size_t count) const {
    const std::size_t least = columns({0, size()}) / (mostColumns * mostLines) + 1;
    std::size_t n = std::max({count, least, std::size_t{1}});
    while (n < size() &&
           !std::ranges::all_of(parts(n), [&](const Range& part) { return fits(part); }))
        ++n;
    return n;
}

} // namespace tessarune
