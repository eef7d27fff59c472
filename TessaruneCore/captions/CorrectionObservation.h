#pragma once

#include <cstdint>
#include <string>

namespace tessarune {

/// How a final differs from the text that was last on screen.
struct CorrectionObservation {
    double t = 0;                  ///< the core's clock when the final arrived
    std::string shownText;         ///< leading sentences and tail, without frozen sentences
    std::string finalText;         ///< trimmed
    std::int64_t droppedWords = 0; ///< words of `shownText` outside the common subsequence
    std::int64_t addedWords = 0;   ///< words of `finalText` outside the common subsequence
    std::int64_t commonWords = 0;

    bool operator==(const CorrectionObservation&) const;
};

} // namespace tessarune
