#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The key by which texts are compared for stability and duplicate suppression. Sentences that
/// differ only in case, common punctuation or spacing share a key. Brackets and curly quotes are
/// significant.
///
/// Keys are normalised, so canonically equivalent keys are the same bytes and == compares them.
namespace tessarune::SentenceStabilityKey {

std::string normalize(std::string_view text);
std::vector<std::string> normalize(const std::vector<std::string>& texts);

/// The same key computed without the fast paths; tests compare the two.
std::string normalizeByCodePoints(std::string_view text);

} // namespace tessarune::SentenceStabilityKey
