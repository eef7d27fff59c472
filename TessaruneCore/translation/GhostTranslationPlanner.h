#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Chooses the text whose translation is shown as a preview, and compares such texts. Pure
/// functions, safe from any thread.
namespace tessarune::GhostTranslationPlanner {

inline constexpr std::size_t minimumWords = 2;

/// The newest complete sentence of the live text, or its newest soft clause if it has no complete
/// sentence. `nullopt` if there is neither, or if the candidate has fewer than `leastWords` words
/// (separated by blanks).
std::optional<std::string> latestCandidate(const BoundaryObservation& observation,
                                           std::size_t leastWords = minimumWords);

/// The letters and digits of the text in lower case, with a single blank for each run of other
/// characters between them. Candidates with equal keys are treated as the same text.
std::string normalizedKey(std::string_view text);

/// Whether the source texts have equal keys and the target languages are equal.
bool matches(std::string_view source, std::string_view target, std::string_view currentSource,
             std::string_view currentTarget);

} // namespace tessarune::GhostTranslationPlanner
