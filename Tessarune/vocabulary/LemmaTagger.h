#pragma once

#include "Tessarune/vocabulary/Lexicon.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// Finds the lemmas of English sentences.
///
/// A form with several readings ("saw", "meeting", "left") is settled by how common each of them is
/// and by the word before it: after "the" stands no verb, after "they" no noun. One thread; keeps
/// what the lexicon said, so one tagger serves one text.
class LemmaTagger {
  public:
    /// The lexicon must outlive it.
    explicit LemmaTagger(Lexicon& lexicon) : lexicon_(lexicon) {}

    /// The lemma of each of the words of a sentence, which are in lower case. A word that nobody
    /// knows is its own lemma.
    std::vector<std::string> lemmas(const std::vector<std::string>& sentence);

  private:
    const std::vector<WordReading>& readings(const std::string& form);
    std::string lemma(const std::string& form, const std::string& before);

    Lexicon& lexicon_;
    std::unordered_map<std::string, std::vector<WordReading>> known_;
};

} // namespace tessarune
