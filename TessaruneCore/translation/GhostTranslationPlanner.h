#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Chooses the text that is worth translating before it is committed, and tells whether two such
/// texts are the same. Pure functions, safe from any thread.
namespace tessarune::GhostTranslationPlanner {

inline constexpr std::size_t minimumWords = 2;

/// The newest complete sentence of the live text, or else its newest soft clause; nothing if that
/// one has fewer words (parts between blanks) than asked for.
std::optional<std::string> latestCandidate(const BoundaryObservation& observation,
                                           std::size_t leastWords = minimumWords);

/// The text without case, punctuation and spacing: what makes two candidates the same.
std::string normalizedKey(std::string_view text);

bool matches(std::string_view source, std::string_view target, std::string_view currentSource,
             std::string_view currentTarget);

} // namespace tessarune::GhostTranslationPlanner
