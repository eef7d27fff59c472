#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Chooses the text to translate before it is committed (ghost translation), and tells whether two
/// such texts are the same. Pure functions, safe from any thread.
namespace tessarune::GhostTranslationPlanner {

inline constexpr std::size_t minimumWords = 2;

/// The newest complete sentence of the live text, else its newest soft clause; `nullopt` if that
/// has fewer words (separated by blanks) than required.
std::optional<std::string> latestCandidate(const BoundaryObservation& observation,
                                           std::size_t leastWords = minimumWords);

/// The text without case, punctuation and spacing. Candidates with equal keys are the same.
std::string normalizedKey(std::string_view text);

bool matches(std::string_view source, std::string_view target, std::string_view currentSource,
             std::string_view currentTarget);

} // namespace tessarune::GhostTranslationPlanner
