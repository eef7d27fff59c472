#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tessarune {

/// In which unit a run of text without punctuation is measured.
enum class BoundaryUnit { words, characters };

/// "words" or "characters": the raw value, and the label in diagnostics.
std::string_view diagnosticLabel(BoundaryUnit unit);
/// Nothing for an unknown raw value.
std::optional<BoundaryUnit> boundaryUnit(std::string_view rawValue);

/// What a recogniser does by itself, and so need not be done for it.
struct EngineCapabilities {
    bool punctuatesNatively = false; ///< text comes punctuated
    /// The recogniser ends utterances by itself, and cutting is left to it.
    bool selfSegments = false;
    bool streamsWordByWord = false;                         ///< partials grow word by word
    bool providesWordTimestamps = false;                    ///< finals carry words
    bool isOnline = false;                                  ///< recognition leaves the machine
    std::optional<std::int64_t> preferredCaptureSampleRate; ///< in Hz
    BoundaryUnit boundaryUnit = BoundaryUnit::words;
    std::int64_t maxUnpunctuatedUnits = 28; ///< longer runs without punctuation are cut

    /// A copy for texts of that language: Chinese is measured in characters, 48 of them.
    EngineCapabilities localized(std::string_view localeIdentifier) const;

    bool operator==(const EngineCapabilities&) const = default;
};

} // namespace tessarune
