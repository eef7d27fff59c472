#include "Tessarune/history/HistoryWordTimeline.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace tessarune {

namespace {

/// The text without white space, because the white space of source and bilingual texts differs.
std::string comparableText(std::string_view text) {
    return Text::canonical(Text::joined(Text::splitOnWhiteSpace(text), ""));
}

/// The index of each text; `nullopt` for empty texts and for those that occur more than once.
std::unordered_map<std::string_view, std::optional<std::size_t>>
placesOf(const std::vector<std::string>& texts) {
    std::unordered_map<std::string_view, std::optional<std::size_t>> places;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const auto [place, isNew] = places.try_emplace(texts[i], i);
        if (!isNew || texts[i].empty())
            place->second.reset();
    }
    return places;
}

using Pair = std::pair<std::size_t, std::size_t>; // a row and its sentence

/// The largest set of pairs whose rows and sentences are in the same order.
std::vector<Pair> longestCommonOrder(const std::vector<Pair>& pairs) {
    // For each length, the chain of this length that ends earliest is kept: this is its last pair.
    std::vector<std::size_t> chainEnds;
    std::vector<std::optional<std::size_t>> predecessor(pairs.size());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto position = std::ranges::lower_bound(
            chainEnds, pairs[i].second, {}, [&](std::size_t pair) { return pairs[pair].second; });
        if (position != chainEnds.begin())
            predecessor[i] = *(position - 1);
        if (position == chainEnds.end())
            chainEnds.push_back(i);
        else
            *position = i;
    }
    std::vector<Pair> chain;
    for (auto at = chainEnds.empty() ? std::nullopt : std::optional(chainEnds.back()); at;
         at = predecessor[*at])
        chain.push_back(pairs[*at]);
    std::ranges::reverse(chain);
    return chain;
}

/// Finds the sentence of each row.
class RowMatch {
  public:
    RowMatch(const std::vector<std::string>& rows,
             const std::vector<HistoryWordTimeline::Sentence>& sentences)
        : found_(rows.size()) {
        std::ranges::transform(rows, std::back_inserter(rows_), comparableText);
        for (const auto& sentence : sentences)
            sentences_.push_back(comparableText(sentence.source));
    }

    std::vector<std::optional<std::size_t>> find() {
        std::vector<Pair> anchors = longestCommonOrder(samePairs());
        anchors.emplace_back(rows_.size(), sentences_.size());
        Pair from{0, 0};
        for (const Pair& to : anchors) {
            fillBetween(from, to);
            if (to.first < rows_.size())
                found_[to.first] = to.second;
            from = {to.first + 1, to.second + 1};
        }
        const bool anyMatch =
            std::ranges::any_of(found_, [](const auto& match) { return !!match; });
        const std::size_t common = std::min(rows_.size(), sentences_.size());
        if (!anyMatch) // no text matches: pair in order
            fillBetween({0, 0}, {common, common});
        return std::move(found_);
    }

  private:
    /// Pairs the texts that occur once on each side.
    std::vector<Pair> samePairs() const {
        std::vector<Pair> same;
        const auto places = placesOf(sentences_);
        for (const auto& [text, row] : placesOf(rows_)) {
            const auto found = places.find(text);
            if (row && found != places.end() && found->second)
                same.emplace_back(*row, *found->second);
        }
        std::ranges::sort(same);
        return same;
    }

    bool agrees(std::size_t row, std::size_t sentence) const {
        return sentences_[sentence].empty() || sentences_[sentence] == rows_[row];
    }

    void fillBetween(Pair from, Pair to) {
        // If the counts are equal, rows and sentences are assumed to differ only in the wording.
        const bool sameCount = to.first - from.first == to.second - from.second;
        const auto hasRemaining = [&] { return from.first < to.first && from.second < to.second; };
        for (; hasRemaining() && (sameCount || agrees(from.first, from.second));
             ++from.first, ++from.second)
            found_[from.first] = from.second;
        for (; hasRemaining() && agrees(to.first - 1, to.second - 1); --to.first, --to.second)
            found_[to.first - 1] = to.second - 1;
    }

    std::vector<std::string> rows_;
    std::vector<std::string> sentences_;
    std::vector<std::optional<std::size_t>> found_;
};

} // namespace

std::vector<std::optional<std::size_t>>
HistoryWordTimeline::sentencesOfRows(const std::vector<std::string>& rows,
                                     const std::vector<Sentence>& sentences) {
    return RowMatch(rows, sentences).find();
}

} // namespace tessarune
