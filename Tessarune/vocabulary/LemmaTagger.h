#pragma once

#include "Tessarune/vocabulary/Lexicon.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// Finds the lemmas of English sentences.
///
/// Where a form has several readings ("saw", "meeting", "left"), the frequency of each reading and
/// the previous word decide: a verb never follows "the", and a noun rarely follows "they". One
/// thread. Caches the lexicon's answers, so use the same tagger for a whole text.
class LemmaTagger {
  public:
    /// The lexicon must outlive this.
    explicit LemmaTagger(Lexicon& lexicon) : lexicon_(lexicon) {}

    /// The lemma of each word of a lower-case sentence. An unknown word is its own lemma.
    std::vector<std::string> lemmas(const std::vector<std::string>& sentence);

  private:
    const std::vector<WordReading>& readings(const std::string& form);
    std::string lemma(const std::string& form, const std::string& before);

    Lexicon& lexicon_;
    std::unordered_map<std::string, std::vector<WordReading>> known_;
};

} // namespace tessarune
