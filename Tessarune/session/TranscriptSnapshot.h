#pragma once

#include <string>

namespace tessarune {

/// The texts of a session at one moment.
struct TranscriptSnapshot {
    std::string sourceText;
    std::string bilingualText;

    bool operator==(const TranscriptSnapshot&) const = default;
};

} // namespace tessarune
