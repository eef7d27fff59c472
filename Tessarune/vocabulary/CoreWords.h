#pragma once

#include <string>
#include <vector>

namespace tessarune {

/// Returns the core words: lemmas in lower case, the most frequent first. The frequency of the last
/// three is unknown. docs/vocabulary.md names the source of the list.
std::vector<std::string> loadCoreWords();

} // namespace tessarune
