#pragma once

#include "Tessarune/vocabulary/Lexicon.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The code of the language that most of a text is in ("en"); `nullopt` if that is uncertain. Any
/// thread.
using DominantLanguage = std::function<std::optional<std::string>(std::string_view text)>;

/// The words of one recording, counted by form and by lemma. A plain value.
struct HistoryWordStats {
    struct Occurrence {
        int sentenceIndex = 0;
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
        std::vector<TokenEntry> forms; ///< as they stand for this lemma; ranked among themselves

        bool operator==(const VocabularyEntry&) const = default;
    };

    std::string languageCode;
    int tokenCount = 0;
    int uniqueTokenCount = 0;
    int vocabularyCount = 0;
    int sentenceCount = 0;
    std::optional<double> durationSeconds;
    double averageTokensPerSentence = 0;
    std::vector<TokenEntry> tokenEntries;
    std::vector<VocabularyEntry> vocabularyEntries;

    bool operator==(const HistoryWordStats&) const = default;

    /// Counts a transcript that has one sentence a line. A `sentenceCount` of 0 stands for the
    /// number of lines. Lemmas are English: a text in another language is counted as it stands.
    /// Any thread; takes one or two seconds for eight hours of speech.
    static HistoryWordStats build(std::string_view sourceText, int sentenceCount,
                                  std::optional<double> durationSeconds, Lexicon& lexicon,
                                  const DominantLanguage& dominantLanguage);
};

} // namespace tessarune
