#pragma once

#include <optional>
#include <string>

namespace tessarune {

/// One word of a committed row with the times known for it, in seconds since 1970.
struct WordEvent {
    std::string word;
    std::optional<double> firstSeenAt; ///< when a result first had a word at this position
    std::optional<double> revealedAt;  ///< when the word was first on screen
    std::optional<double> audioStart;  ///< when the word was spoken, as the final states
    std::optional<double> audioEnd;

    bool operator==(const WordEvent&) const;
};

} // namespace tessarune
