#pragma once

#include <string>
#include <vector>

namespace tessarune {

/// The words to know first, the most frequent first: lemmas in lower case. docs/vocabulary.md says
/// where the list is from.
std::vector<std::string> loadCoreWords();

} // namespace tessarune
