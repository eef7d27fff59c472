#pragma once

#include <optional>
#include <string>

namespace tessarune {

/// One word of a committed row with the times known for it. The first two are host times, the
/// others seconds of the session's sound.
struct WordEvent {
    std::string word;
    std::optional<double> firstSeenAt; ///< when a result first had a word at this position
    std::optional<double> revealedAt;  ///< when it was first on screen
    std::optional<double> audioStart;  ///< start and end in the sound, from the final
    std::optional<double> audioEnd;

    bool operator==(const WordEvent&) const;
};

} // namespace tessarune
