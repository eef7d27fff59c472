#include "Tessarune/playback/TimedSentences.h"

#include <algorithm>
#include <string>

namespace tessarune {

namespace {

/// If a sentence is shorter than this many seconds, its end is invalid.
constexpr double shortestSentence = 0.05;

} // namespace

TimedSentences::TimedSentences(std::optional<HistoryWordTimeline> timeline)
    : timeline_(std::move(timeline).value_or(HistoryWordTimeline())) {
    if (timeline_.sentences.empty())
        timeline_.sentences = timeline_.derivedSentencesFromWords();
    for (auto& sentence : timeline_.sentences) {
        sentence.start = HistoryWordTimeline::saneTime(sentence.start);
        sentence.end = HistoryWordTimeline::saneTime(sentence.end);
    }
    for (std::size_t i = 0; i < timeline_.words.size(); ++i) {
        if (const auto& id = timeline_.words[i].segmentID)
            firstWords_.try_emplace(*id, i);
    }
}

const TimedSentences::Sentence* TimedSentences::sentenceTiming(std::size_t index) const {
    return index < timeline_.sentences.size() ? &timeline_.sentences[index] : nullptr;
}

std::optional<double> TimedSentences::sentenceEnd(std::size_t index) const {
    const Sentence& sentence = timeline_.sentences.at(index);
    if (sentence.end >= sentence.start + shortestSentence)
        return sentence.end;
    const auto next = std::find_if(
        timeline_.sentences.begin() + static_cast<std::ptrdiff_t>(index), timeline_.sentences.end(),
        [&](const Sentence& later) { return later.start >= sentence.start + shortestSentence; });
    return next == timeline_.sentences.end() ? std::nullopt : std::optional(next->start);
}

std::pair<std::size_t, std::size_t> TimedSentences::wordsOf(std::size_t sentence) const {
    const Sentence& own = timeline_.sentences[sentence];
    const auto& words = timeline_.words;
    const auto index = [&](auto word) { return static_cast<std::size_t>(word - words.begin()); };
    if (own.segmentID) {
        const auto known = firstWords_.find(*own.segmentID);
        if (known == firstWords_.end())
            return {0, 0};
        const auto last =
            std::find_if(words.begin() + static_cast<std::ptrdiff_t>(known->second), words.end(),
                         [&](const auto& word) { return word.segmentID != own.segmentID; });
        return {known->second, index(last)};
    }
    const auto firstFrom = [&](double time) {
        return index(std::lower_bound(words.begin(), words.end(), time,
                                      [](const auto& word, double t) { return word.t < t; }));
    };
    const Sentence* next = sentenceTiming(sentence + 1);
    return {firstFrom(own.start), next ? firstFrom(next->start) : words.size()};
}

std::vector<SentenceToken> TimedSentences::tokens(std::size_t index) const {
    std::vector<SentenceToken> tokens;
    if (index >= timeline_.sentences.size())
        return tokens;
    const std::string& text = timeline_.sentences[index].source;
    std::size_t from = 0;
    const auto [first, last] = wordsOf(index);
    for (std::size_t i = first; i < last; ++i) {
        const auto& word = timeline_.words[i];
        const std::size_t found = word.w.empty() ? std::string::npos : text.find(word.w, from);
        if (found == std::string::npos)
            continue;
        tokens.push_back({found, word.w.size(), word.t});
        from = found + word.w.size();
    }
    return tokens;
}

std::optional<std::size_t>
TimedSentences::activeTokenIndex(const std::vector<SentenceToken>& tokens, double time) {
    const auto later = std::find_if(tokens.begin(), tokens.end(),
                                    [&](const SentenceToken& token) { return token.start > time; });
    if (later == tokens.begin())
        return std::nullopt;
    return static_cast<std::size_t>(later - tokens.begin()) - 1;
}

} // namespace tessarune
