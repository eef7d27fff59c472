#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// How many words of a shown text a final kept. Pure functions; time grows with the
/// product of the two lengths.
namespace tessarune::CorrectionDiff {

struct WordCounts {
    std::int64_t dropped = 0;
    std::int64_t added = 0;
    std::int64_t common = 0;

    bool operator==(const WordCounts&) const = default;
};

/// By the longest common subsequence of the normalised words.
WordCounts wordCounts(std::string_view shown, std::string_view final);

/// The lower-case pieces between blanks, letters and numbers only, empty ones dropped. Canonical:
/// words that are equivalent are the same bytes.
std::vector<std::string> normalizedWords(std::string_view text);

} // namespace tessarune::CorrectionDiff
