#pragma once

#include <string>
#include <vector>

namespace tessarune {

/// Returns the core words, the most frequent first: lemmas in lower case. docs/vocabulary.md names
/// the source of the list.
std::vector<std::string> loadCoreWords();

} // namespace tessarune
