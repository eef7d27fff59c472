#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Compares a final with the text that was on screen: counts the words that the final keeps, drops
/// and adds. Pure functions; time is O(n·m) in the two lengths.
namespace tessarune::CorrectionDiff {

struct WordCounts {
    std::int64_t dropped = 0;
    std::int64_t added = 0;
    std::int64_t common = 0;

    bool operator==(const WordCounts&) const = default;
};

/// The common words are the longest common subsequence of the normalised words.
WordCounts wordCounts(std::string_view shown, std::string_view final);

/// The blank-separated words in lower case, reduced to letters and numbers. Words without any are
/// dropped. The words are in NFC, so canonically equivalent words have the same bytes.
std::vector<std::string> normalizedWords(std::string_view text);

} // namespace tessarune::CorrectionDiff
