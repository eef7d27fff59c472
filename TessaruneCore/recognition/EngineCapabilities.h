#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tessarune {

/// The unit in which text without punctuation is measured.
enum class BoundaryUnit { words, characters };

/// "words" or "characters": the raw value, and the label in diagnostics.
std::string_view diagnosticLabel(BoundaryUnit unit);
/// `nullopt` for an unknown raw value.
std::optional<BoundaryUnit> boundaryUnit(std::string_view rawValue);

/// What a recogniser can do, and how its texts are measured.
struct EngineCapabilities {
    bool punctuatesNatively = false; ///< texts have punctuation
    /// The recogniser ends utterances by itself, so sentences are normally not frozen early.
    bool selfSegments = false;
    bool streamsWordByWord = false;                         ///< partials grow word by word
    bool providesWordTimestamps = false;                    ///< finals carry timed words
    bool isOnline = false;                                  ///< sound is sent to a server
    std::optional<std::int64_t> preferredCaptureSampleRate; ///< in Hz
    BoundaryUnit boundaryUnit = BoundaryUnit::words;
    /// Longer runs without punctuation are cut. Counted in `boundaryUnit`.
    std::int64_t maxUnpunctuatedUnits = 28;

    /// A copy for texts in this language: Chinese is measured in characters with a limit of 48.
    EngineCapabilities localized(std::string_view localeIdentifier) const;

    bool operator==(const EngineCapabilities&) const = default;
};

} // namespace tessarune
