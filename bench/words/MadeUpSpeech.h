#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace tessarune::bench {

/// Text with the statistics of speech: words and Chinese characters are as unequally frequent as in
/// a language (Zipf's law). The same seed gives the same text.
class MadeUpSpeech {
  public:
    explicit MadeUpSpeech(unsigned seed);

    /// A transcript, one sentence of about a dozen words a line, with a full stop.
    std::string transcript(std::size_t words);
    /// The same number of sentences as a bilingual transcript, with Chinese translations of a
    /// character and a half a word.
    std::string bilingual(const std::string& transcript);

    /// So many of the most frequent Chinese characters.
    std::string commonCharacters(std::size_t count) const;

  private:
    std::size_t pick(const std::vector<double>& sums);

    std::mt19937 random_;
    std::vector<std::string> words_;
    std::vector<std::string> characters_;
    std::vector<double> wordSums_;
    std::vector<double> characterSums_;
};

} // namespace tessarune::bench
