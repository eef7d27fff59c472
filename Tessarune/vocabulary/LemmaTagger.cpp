#include "Tessarune/vocabulary/LemmaTagger.h"

#include "Tessarune/vocabulary/LemmaExceptions.h"

#include <map>
#include <string_view>
#include <unordered_set>

namespace tessarune {

namespace {

using Words = std::unordered_set<std::string_view>;

/// What the previous word says about a word.
enum class Position { anywhere, afterDeterminer, afterSubject, afterBe };

Position positionAfter(const std::string& before) {
    // "this" and "some" are left out, because a verb can follow them: "this leaves us".
    static const Words determiners{"a",   "an",  "the",   "my",    "your",  "his",
                                   "its", "our", "their", "every", "whose", "no"};
    static const Words subjects{"i",   "you",   "he",     "she",   "it",   "we",    "they",
                                "who", "to",    "will",   "would", "can",  "could", "shall",
                                "may", "might", "should", "must",  "not",  "do",    "does",
                                "did", "let",   "never",  "has",   "have", "had"};
    static const Words formsOfBe{"am", "is", "are", "was", "were", "be", "been", "being"};
    if (determiners.contains(before))
        return Position::afterDeterminer;
    if (subjects.contains(before))
        return Position::afterSubject;
    return formsOfBe.contains(before) ? Position::afterBe : Position::anywhere;
}

/// The relative likelihood of a reading.
double weight(const WordReading& reading, const std::string& form, Position position) {
    // An inflection is one of several forms that share the uses of their lemma.
    constexpr double shareOfAnInflection = 0.25;
    constexpr double unlikely = 0.125;
    constexpr double impossible = 0.001; // not 0, so that a sole reading is still chosen
    constexpr double usesOfARareWord = 0.5;
    double likelihood = reading.uses + usesOfARareWord;
    if (reading.lemma != form)
        likelihood *= shareOfAnInflection;
    const bool isVerb = reading.partOfSpeech == PartOfSpeech::verb;
    const bool isNoun = reading.partOfSpeech == PartOfSpeech::noun;
    if (position == Position::afterDeterminer && isVerb)
        return likelihood * impossible;
    // After "be", a form in -ing is rarely a noun ("they are building"), but another form may be a
    // noun ("these are buildings").
    const bool isOutOfPlace = position == Position::afterSubject ||
                              (position == Position::afterBe && form.ends_with("ing"));
    return isNoun && isOutOfPlace ? likelihood * unlikely : likelihood;
}

} // namespace

std::vector<std::string> LemmaTagger::lemmas(const std::vector<std::string>& sentence) {
    std::vector<std::string> found;
    found.reserve(sentence.size());
    for (std::size_t i = 0; i < sentence.size(); ++i)
        found.push_back(lemma(sentence[i], i > 0 ? sentence[i - 1] : std::string()));
    return found;
}

const std::vector<WordReading>& LemmaTagger::readings(const std::string& form) {
    const auto known = known_.find(form);
    return known != known_.end() ? known->second
                                 : known_.emplace(form, lexicon_.readings(form)).first->second;
}

std::string LemmaTagger::lemma(const std::string& form, const std::string& before) {
    if (const auto exception = LemmaExceptions::lemma(form))
        return std::string(*exception);
    std::map<std::string, double> weights;
    for (const auto& reading : readings(form))
        weights[reading.lemma] += weight(reading, form, positionAfter(before));
    const std::string* best = &form;
    double bestWeight = 0;
    for (const auto& [lemma, total] : weights) {
        if (total > bestWeight) {
            best = &lemma;
            bestWeight = total;
        }
    }
    return *best;
}

} // namespace tessarune
