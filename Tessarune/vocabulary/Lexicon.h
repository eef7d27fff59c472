#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

enum class PartOfSpeech { noun, verb, adjective, adverb };

/// One meaning of a written form: a lemma as a part of speech.
struct WordReading {
    PartOfSpeech partOfSpeech = PartOfSpeech::noun;
    std::string lemma;
    /// How often the lemma occurs as this part of speech, in all its forms, in the lexicon's sample
    /// of texts.
    int uses = 0;

    bool operator==(const WordReading&) const = default;
};

/// One sense of a word.
struct WordDefinition {
    PartOfSpeech partOfSpeech = PartOfSpeech::noun;
    std::string text;
    std::vector<std::string> examples;

    bool operator==(const WordDefinition&) const = default;
};

/// Interface: an English dictionary on this computer. Any thread; calls may block each other. Words
/// are in lower case. For an unknown word, and if there is no dictionary, the lists are empty.
class Lexicon {
  public:
    virtual ~Lexicon() = default;

    /// The readings of `form`: as a lemma, if it is one, and as an inflection of other lemmas.
    virtual std::vector<WordReading> readings(std::string_view form) = 0;
    /// The senses of a lemma, the most frequent part of speech first.
    virtual std::vector<WordDefinition> definitions(std::string_view lemma) = 0;
};

} // namespace tessarune
