#pragma once

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune::testing {

/// The words of a text as they sound: lower case, letters and digits only.
inline std::vector<std::string> spokenWords(std::string_view text) {
    std::vector<std::string> words;
    const std::string lower = Text::lowercased(text);
    for (const std::string_view piece : Text::splitOnWhiteSpace(lower)) {
        std::string word;
        for (const char32_t codePoint : Text::codePoints(piece)) {
            if (Text::isAlphanumeric(codePoint))
                Text::append(word, codePoint);
        }
        if (!word.empty())
            words.push_back(std::move(word));
    }
    return words;
}

/// The words to replace, delete or insert to turn `heard` into `reference`, per word of
/// `reference`.
inline double wordErrorRate(std::string_view reference, std::string_view heard) {
    const std::vector<std::string> right = spokenWords(reference);
    const std::vector<std::string> said = spokenWords(heard);
    std::vector<std::size_t> row(said.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= right.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= said.size(); ++j) {
            const std::size_t replaced = diagonal + (right[i - 1] == said[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return right.empty() ? static_cast<double>(said.size())
                         : static_cast<double>(row.back()) / static_cast<double>(right.size());
}

} // namespace tessarune::testing
