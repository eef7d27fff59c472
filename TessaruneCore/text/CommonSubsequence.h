#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tessarune {

/// The elements of two lists that form their longest common subsequence, as ascending pairs of
/// indices. Equal beginnings are paired directly; among several longest subsequences the earliest
/// elements are preferred. After the equal beginning, the lists have n and m elements left: time
/// and memory are O(n·m), and if n·m exceeds `largestTable`, only the beginning is paired.
template <typename A, typename B, typename Equal>
std::vector<std::pair<std::size_t, std::size_t>> commonSubsequence(const A& a, const B& b,
                                                                   Equal equal) {
    constexpr std::size_t largestTable = 4'000'000;
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    std::size_t begin = 0;
    for (; begin < a.size() && begin < b.size() && equal(a[begin], b[begin]); ++begin)
        pairs.emplace_back(begin, begin);
    const std::size_t rows = a.size() - begin;
    const std::size_t columns = b.size() - begin;
    if (columns > 0 && rows > largestTable / columns)
        return pairs;
    // For each pair of positions: the length of the longest common subsequence from there on.
    std::vector<std::uint32_t> rest((rows + 1) * (columns + 1), 0);
    const auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t& {
        return rest[i * (columns + 1) + j];
    };
    for (std::size_t i = rows; i-- > 0;) {
        for (std::size_t j = columns; j-- > 0;) {
            at(i, j) = equal(a[begin + i], b[begin + j]) ? at(i + 1, j + 1) + 1
                                                         : std::max(at(i + 1, j), at(i, j + 1));
        }
    }
    for (std::size_t i = 0, j = 0; i < rows && j < columns;) {
        if (equal(a[begin + i], b[begin + j])) {
            pairs.emplace_back(begin + i++, begin + j++);
        } else if (at(i + 1, j) >= at(i, j + 1)) {
            ++i;
        } else {
            ++j;
        }
    }
    return pairs;
}

} // namespace tessarune
