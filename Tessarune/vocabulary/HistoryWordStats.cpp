#include "Tessarune/vocabulary/HistoryWordStats.h"

#include "Tessarune/vocabulary/LemmaTagger.h"
#include "Tessarune/vocabulary/WordForms.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/WordBreaks.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace tessarune {

namespace {

using Stats = HistoryWordStats;

constexpr std::string_view english = "en";

std::vector<std::string_view> sentencesOf(std::string_view text) {
    std::vector<std::string_view> sentences;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        if (const auto sentence = Text::trimmed(text.substr(0, end)); !sentence.empty())
            sentences.push_back(sentence);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return sentences;
}

std::vector<std::string> tokensOf(std::string_view sentence) {
    const std::string prepared = WordForms::prepare(sentence);
    std::vector<std::string> tokens;
    for (const std::string_view word : Text::words(prepared)) {
        if (auto token = WordForms::normalizeToken(word))
            tokens.push_back(std::move(*token));
    }
    return tokens;
}

/// Gives each distinct text a number, counted from 0.
class Numbering {
  public:
    std::size_t of(const std::string& text) {
        return numbers_.emplace(text, numbers_.size()).first->second;
    }

  private:
    std::unordered_map<std::string, std::size_t> numbers_;
};

void add(Stats::TokenEntry& entry, const Stats::Occurrence& occurrence) {
    entry.token = occurrence.token;
    entry.occurrences.push_back(occurrence);
}

/// Fills in the derived fields and sorts the entries: the most frequent first, equal counts in
/// alphabetical order.
template <typename Entry>
void rank(std::vector<Entry>& entries, std::string Entry::*name, int tokenCount) {
    for (Entry& entry : entries) {
        entry.count = static_cast<int>(entry.occurrences.size());
        entry.share = static_cast<double>(entry.count) / tokenCount;
        for (const auto& occurrence : entry.occurrences) {
            // Occurrences come in the order of the text.
            if (entry.sentenceIndices.empty() ||
                entry.sentenceIndices.back() != occurrence.sentenceIndex)
                entry.sentenceIndices.push_back(occurrence.sentenceIndex);
        }
    }
    std::ranges::sort(entries, [name](const Entry& a, const Entry& b) {
        return a.count != b.count ? a.count > b.count : a.*name < b.*name;
    });
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries[i].rank = static_cast<int>(i) + 1;
}

/// Collects the occurrences of all words, by token and by lemma.
class OccurrenceLists {
  public:
    void add(Stats::Occurrence occurrence, const std::string& lemma) {
        entryOf(tokens_, occurrence.token, tokenEntries_).occurrences.push_back(occurrence);
        auto& vocabulary = entryOf(lemmas_, lemma, vocabularyEntries_);
        vocabulary.lemma = lemma;
        auto form =
            std::ranges::find(vocabulary.forms, occurrence.token, &Stats::TokenEntry::token);
        if (form == vocabulary.forms.end())
            form = vocabulary.forms.emplace(form);
        tessarune::add(*form, occurrence);
        vocabulary.occurrences.push_back(std::move(occurrence));
        ++tokenCount_;
    }

    void finish(Stats& stats) {
        for (auto& entry : tokenEntries_)
            entry.token = entry.occurrences.front().token;
        rank(tokenEntries_, &Stats::TokenEntry::token, tokenCount_);
        rank(vocabularyEntries_, &Stats::VocabularyEntry::lemma, tokenCount_);
        for (auto& entry : vocabularyEntries_)
            rank(entry.forms, &Stats::TokenEntry::token, tokenCount_);
        stats.tokenCount = tokenCount_;
        stats.uniqueTokenCount = static_cast<int>(tokenEntries_.size());
        stats.vocabularyCount = static_cast<int>(vocabularyEntries_.size());
        stats.tokenEntries = std::move(tokenEntries_);
        stats.vocabularyEntries = std::move(vocabularyEntries_);
    }

  private:
    template <typename Entry>
    static Entry& entryOf(Numbering& numbers, const std::string& text,
                          std::vector<Entry>& entries) {
        const std::size_t number = numbers.of(text);
        if (number == entries.size())
            entries.emplace_back();
        return entries[number];
    }

    Numbering tokens_;
    Numbering lemmas_;
    std::vector<Stats::TokenEntry> tokenEntries_;
    std::vector<Stats::VocabularyEntry> vocabularyEntries_;
    int tokenCount_ = 0;
};

} // namespace

HistoryWordStats HistoryWordStats::build(std::string_view sourceText, int sentenceCount,
                                         std::optional<double> durationSeconds, Lexicon& lexicon,
                                         const DominantLanguage& dominantLanguage) {
    HistoryWordStats stats;
    stats.languageCode = dominantLanguage(sourceText).value_or(std::string(english));
    stats.durationSeconds = durationSeconds;
    const auto sentences = sentencesOf(sourceText);
    stats.sentenceCount = sentenceCount > 0 ? sentenceCount : static_cast<int>(sentences.size());

    LemmaTagger tagger(lexicon);
    OccurrenceLists lists;
    for (std::size_t sentence = 0; sentence < sentences.size(); ++sentence) {
        const auto tokens = tokensOf(sentences[sentence]);
        const auto lemmas = stats.languageCode == english ? tagger.lemmas(tokens) : tokens;
        for (std::size_t i = 0; i < tokens.size(); ++i)
            lists.add({static_cast<int>(sentence), static_cast<int>(i), tokens[i]}, lemmas[i]);
    }
    lists.finish(stats);
    if (stats.sentenceCount > 0)
        stats.averageTokensPerSentence =
            static_cast<double>(stats.tokenCount) / stats.sentenceCount;
    return stats;
}

} // namespace tessarune
