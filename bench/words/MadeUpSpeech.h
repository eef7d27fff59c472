#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace tessarune::bench {

/// Generates text with the statistics of speech: the frequencies of words and Chinese characters
/// follow Zipf's law, as in a language. The same seed always generates the same text.
class MadeUpSpeech {
  public:
    explicit MadeUpSpeech(unsigned seed);

    /// A transcript with one sentence per line. Each has about a dozen words and a full stop.
    std::string transcript(std::size_t words);
    /// The sentences of `transcript` as a bilingual transcript, with Chinese translations of one
    /// and a half characters per word.
    std::string bilingual(const std::string& transcript);

    /// The `count` most frequent Chinese characters.
    std::string commonCharacters(std::size_t count) const;

  private:
    /// Picks an index at random, by cumulative frequencies.
    std::size_t pick(const std::vector<double>& sums);

    std::mt19937 random_;
    std::vector<std::string> words_;
    std::vector<std::string> characters_;
    std::vector<double> wordSums_;
    std::vector<double> characterSums_;
};

} // namespace tessarune::bench
