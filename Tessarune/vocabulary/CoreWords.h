#pragma once

#include <string>
#include <vector>

namespace tessarune {

/// The words to know first, the most frequent first: lemmas in lower case. docs/vocabulary.md names
/// the source of the list.
std::vector<std::string> loadCoreWords();

} // namespace tessarune
