#include "TessaruneCore/captions/CorrectionDiff.h"

#include "TessaruneCore/text/CharacterWalker.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cstddef>

namespace tessarune::CorrectionDiff {

namespace {

/// Two rows of the dynamic-programming table suffice, as only the length is needed.
std::int64_t longestCommonSubsequence(const std::vector<std::string>& a,
                                      const std::vector<std::string>& b) {
    std::vector<std::int64_t> above(b.size() + 1, 0);
    std::vector<std::int64_t> row(b.size() + 1, 0);
    for (const auto& word : a) {
        for (std::size_t j = 1; j <= b.size(); ++j)
            row[j] = word == b[j - 1] ? above[j - 1] + 1 : std::max(above[j], row[j - 1]);
        above.swap(row);
    }
    return above.back();
}

std::string lettersAndNumbers(std::string_view piece) {
    std::string kept;
    Text::CharacterWalker walker(piece);
    for (std::string_view character; walker.next(character);) {
        if (Text::isLetterOrNumber(Text::firstCodePoint(character)))
            kept += character;
    }
    return kept;
}

} // namespace

WordCounts wordCounts(std::string_view shown, std::string_view final) {
    const std::vector<std::string> a = normalizedWords(shown);
    const std::vector<std::string> b = normalizedWords(final);
    const std::int64_t common = longestCommonSubsequence(a, b);
    return {static_cast<std::int64_t>(a.size()) - common,
            static_cast<std::int64_t>(b.size()) - common, common};
}

std::vector<std::string> normalizedWords(std::string_view text) {
    std::vector<std::string> words;
    const std::string lower = Text::lowercased(text);
    for (const std::string_view piece : Text::splitAtBlanks(lower)) {
        const std::string word = lettersAndNumbers(piece);
        if (!word.empty())
            words.push_back(Text::canonical(word));
    }
    return words;
}

} // namespace tessarune::CorrectionDiff
