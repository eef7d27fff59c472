#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The one text key for stability and for the suppression of duplicates: sentences that differ only
/// in case, common punctuation or spacing have the same key. Closing brackets count.
///
/// Keys are in a canonical form: two that are canonically equivalent are the same bytes, so they
/// are compared with ==.
namespace tessarune::SentenceStabilityKey {

std::string normalize(std::string_view text);
std::vector<std::string> normalize(const std::vector<std::string>& texts);

/// The same key without the quick ways, to test those against.
std::string normalizeByCodePoints(std::string_view text);

} // namespace tessarune::SentenceStabilityKey
