#include "bench/words/MadeUpSpeech.h"

#include "Tessarune/vocabulary/CoreWords.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune::bench {

namespace {

constexpr std::size_t rareWords = 27'000;
constexpr std::size_t chineseCharacters = 3'500;
constexpr std::size_t wordsASentence = 12;

/// The cumulative frequencies of `count` words, the most frequent first. About every twentieth word
/// of a text is the most frequent one, as in English; with `i + 1` instead of `i + 2` it would be
/// about every tenth.
std::vector<double> zipfSums(std::size_t count) {
    std::vector<double> sums;
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sums.push_back(sum += 1.0 / static_cast<double>(i + 2));
    return sums;
}

} // namespace

MadeUpSpeech::MadeUpSpeech(unsigned seed) : random_(seed) {
    for (const char* word : {"the", "of", "and", "to", "a", "in", "that", "it", "is", "was"})
        words_.emplace_back(word);
    for (auto& word : loadCoreWords())
        words_.push_back(std::move(word));
    // A rare word consists of two frequent ones.
    std::uniform_int_distribution<std::size_t> any(0, words_.size() - 1);
    for (std::size_t i = 0; i < rareWords; ++i)
        words_.push_back(words_[any(random_)] + words_[any(random_)]);
    constexpr char32_t firstHan = 0x4E00;
    for (std::size_t i = 0; i < chineseCharacters; ++i)
        Text::append(characters_.emplace_back(), firstHan + static_cast<char32_t>(i * 5));
    std::ranges::shuffle(characters_, random_);
    wordSums_ = zipfSums(words_.size());
    characterSums_ = zipfSums(characters_.size());
}

std::size_t MadeUpSpeech::pick(const std::vector<double>& sums) {
    std::uniform_real_distribution<double> anywhere(0, sums.back());
    const auto at = std::ranges::upper_bound(sums, anywhere(random_)) - sums.begin();
    return std::min(static_cast<std::size_t>(at), sums.size() - 1);
}

std::string MadeUpSpeech::transcript(std::size_t words) {
    std::string text;
    for (std::size_t i = 1; i <= words; ++i) {
        text += words_[pick(wordSums_)];
        text += i % wordsASentence == 0 || i == words ? ".\n" : " ";
    }
    return text;
}

std::string MadeUpSpeech::bilingual(const std::string& transcript) {
    std::string text;
    for (std::size_t start = 0; start < transcript.size();) {
        const std::size_t end = transcript.find('\n', start);
        text += transcript.substr(start, end - start) + "\n";
        for (std::size_t i = 0; i < wordsASentence * 3 / 2; ++i)
            text += characters_[pick(characterSums_)];
        text += "。\n\n";
        start = end + 1;
    }
    return text;
}

std::string MadeUpSpeech::commonCharacters(std::size_t count) const {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += characters_[i];
    return text;
}

} // namespace tessarune::bench
