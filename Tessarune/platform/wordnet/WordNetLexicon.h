#pragma once

#include "Tessarune/vocabulary/Lexicon.h"

namespace tessarune {

/// WordNet's dictionary and morphology.
///
/// The library keeps its open files and the state of a search in global variables, so all lexicons
/// of a process share one lock, and calls wait for each other. The first lookup opens the files; if
/// they are missing, this is logged once and the dictionary is empty.
class WordNetLexicon final : public Lexicon {
  public:
    std::vector<WordReading> readings(std::string_view form) override;
    std::vector<WordDefinition> definitions(std::string_view lemma) override;
};

} // namespace tessarune
