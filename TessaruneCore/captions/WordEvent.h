#pragma once

#include <optional>
#include <string>

namespace tessarune {

/// One word of a committed row with the times known for it, in seconds.
struct WordEvent {
    std::string word;
    std::optional<double> firstSeenAt; ///< when a guess first had a word in its place
    std::optional<double> revealedAt;  ///< when it was first on screen
    std::optional<double> audioStart;  ///< the recogniser's times
    std::optional<double> audioEnd;

    bool operator==(const WordEvent&) const;
};

} // namespace tessarune
