#pragma once

#include "Tessarune/vocabulary/Lexicon.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Returns the code ("en") of a text's main language; `nullopt` if that is uncertain. Any
/// thread.
using DominantLanguage = std::function<std::optional<std::string>(std::string_view text)>;

/// The words of one recording, counted by token and by lemma. A plain value.
struct HistoryWordStats {
    struct Occurrence {
        int sentenceIndex = 0; ///< among the non-empty lines of the transcript, from 0
        int tokenIndexInSentence = 0;
        std::string token;

        bool operator==(const Occurrence&) const = default;
    };

    struct TokenEntry {
        int rank = 0; ///< 1 is the most frequent
        std::string token;
        int count = 0;
        double share = 0; ///< of all tokens, 0 to 1
        std::vector<int> sentenceIndices;
        std::vector<Occurrence> occurrences;

        bool operator==(const TokenEntry&) const = default;
    };

    struct VocabularyEntry {
        int rank = 0;
        std::string lemma;
        int count = 0;
        double share = 0;
        std::vector<int> sentenceIndices;
        std::vector<Occurrence> occurrences;
        std::vector<TokenEntry> forms; ///< the forms of this lemma, ranked among themselves

        bool operator==(const VocabularyEntry&) const = default;
    };

    std::string languageCode; ///< "en" if the language is uncertain
    int tokenCount = 0;
    int uniqueTokenCount = 0;
    int vocabularyCount = 0; ///< different lemmas
    int sentenceCount = 0;
    std::optional<double> durationSeconds;
    double averageTokensPerSentence = 0;
    std::vector<TokenEntry> tokenEntries;
    std::vector<VocabularyEntry> vocabularyEntries;

    bool operator==(const HistoryWordStats&) const = default;

    /// Counts a transcript that has one sentence per line. If `sentenceCount` is 0, the number of
    /// non-empty lines is used. Lemmas are English: in another language a token is its own lemma.
    /// Any thread; takes one or two seconds for eight hours of speech.
    static HistoryWordStats build(std::string_view sourceText, int sentenceCount,
                                  std::optional<double> durationSeconds, Lexicon& lexicon,
                                  const DominantLanguage& dominantLanguage);
};

} // namespace tessarune
