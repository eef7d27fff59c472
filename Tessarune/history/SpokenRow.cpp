#include "Tessarune/history/SpokenRow.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

namespace tessarune {

namespace {

using Sentence = HistoryWordTimeline::Sentence;

/// The longest pause between two rows of one translation, in seconds.
constexpr double longestPauseInside = 3;

/// The times at which the words of each sentence begin.
class WordTimes {
  public:
    WordTimes(const std::vector<HistoryWordTimeline::Word>& words,
              const std::vector<Sentence>& sentences)
        : sentences_(sentences) {
        for (const auto& word : words) {
            if (word.segmentID)
                bySegment_[*word.segmentID].push_back(word.t);
            else
                nameless_.push_back(word.t);
        }
        std::ranges::sort(nameless_);
    }

    std::vector<double> of(std::size_t index) const {
        const Sentence& sentence = sentences_[index];
        if (sentence.segmentID) {
            const auto found = bySegment_.find(*sentence.segmentID);
            return found == bySegment_.end() ? std::vector<double>() : found->second;
        }
        const double until = index + 1 < sentences_.size()
                                 ? sentences_[index + 1].start
                                 : std::numeric_limits<double>::infinity();
        return {std::ranges::lower_bound(nameless_, sentence.start),
                std::ranges::lower_bound(nameless_, std::max(until, sentence.start))};
    }

  private:
    const std::vector<Sentence>& sentences_;
    std::unordered_map<UUID, std::vector<double>> bySegment_;
    std::vector<double> nameless_;
};

/// Sets where and when the words of the row begin. Leaves `row.words` empty unless `times` has
/// exactly one time per word.
void setWords(SpokenRow& row, const std::vector<double>& times) {
    const auto tokens = Text::splitOnWhiteSpace(row.source);
    if (tokens.size() != times.size())
        return;
    double last = row.start;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        last = std::clamp(HistoryWordTimeline::saneTime(times[i]), last, std::max(last, row.end));
        row.words.emplace_back(static_cast<std::size_t>(tokens[i].data() - row.source.data()),
                               last);
    }
}

/// Divides the time between row `from - 1` and row `to` equally among the rows between them.
void spread(std::vector<SpokenRow>& rows, std::size_t from, std::size_t to, double duration) {
    double at = from > 0 ? rows[from - 1].end : 0;
    const double until =
        to < rows.size() ? rows[to].start : HistoryWordTimeline::saneTime(duration);
    const double each = std::max(0.0, until - at) / static_cast<double>(to - from);
    for (std::size_t i = from; i < to; ++i) {
        rows[i].start = at;
        rows[i].end = at += each;
    }
}

/// Joins the rows of each translated unit; the last row of a unit has the translation.
std::vector<SpokenRow> joined(std::vector<SpokenRow> rows) {
    std::vector<SpokenRow> units;
    bool isOpen = false;
    for (auto& row : rows) {
        if (!isOpen || row.start - units.back().end > longestPauseInside) {
            units.push_back(std::move(row));
        } else {
            SpokenRow& unit = units.back();
            const std::size_t offset = unit.source.size() + 1;
            unit.source += " " + row.source;
            unit.translation = std::move(row.translation);
            // A row without word times counts as one word.
            if (unit.words.empty())
                unit.words.emplace_back(0, unit.start);
            unit.words.emplace_back(offset, row.start);
            for (const auto& [at, time] : row.words) {
                if (at > 0)
                    unit.words.emplace_back(at + offset, time);
            }
            unit.end = std::max(unit.end, row.end);
        }
        isOpen = units.back().translation.empty();
    }
    return units;
}

} // namespace

double SpokenRow::timeAt(std::size_t at) const {
    const auto next =
        std::ranges::upper_bound(words, at, {}, &std::pair<std::size_t, double>::first);
    const auto before = next == words.begin() ? std::pair(std::size_t{0}, start) : *(next - 1);
    const auto after = next == words.end() ? std::pair(source.size(), end) : *next;
    if (after.first <= before.first)
        return at >= source.size() ? end : before.second;
    const double part = static_cast<double>(std::min(at, after.first) - before.first) /
                        static_cast<double>(after.first - before.first);
    return before.second + part * (after.second - before.second);
}

std::vector<SpokenRow> SpokenRow::of(const HistoryTranscriptExportDocument& document,
                                     const std::vector<HistoryWordTimeline::Word>& words,
                                     double duration, bool joinsTranslated) {
    const auto& sentences = document.sentenceTimings;
    const WordTimes times(words, sentences);
    std::vector<SpokenRow> rows;
    std::vector<std::size_t> timed;
    for (auto& text : document.transcriptRows()) {
        SpokenRow row{std::move(text.source), std::move(text.translation), 0, 0, {}};
        if (text.sentence) {
            const Sentence& sentence = sentences[*text.sentence];
            row.start = HistoryWordTimeline::saneTime(sentence.start);
            row.end = std::max(row.start, HistoryWordTimeline::saneTime(sentence.end));
            setWords(row, times.of(*text.sentence));
            timed.push_back(rows.size());
        }
        rows.push_back(std::move(row));
    }
    timed.push_back(rows.size());
    std::size_t from = 0;
    for (const std::size_t next : timed) {
        if (next > from)
            spread(rows, from, next, duration);
        from = next + 1;
    }
    std::ranges::stable_sort(rows, {}, &SpokenRow::start);
    return joinsTranslated ? joined(std::move(rows)) : rows;
}

} // namespace tessarune
