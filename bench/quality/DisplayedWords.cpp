#include "bench/quality/DisplayedWords.h"

#include "TessaruneCore/captions/CorrectionDiff.h"
#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune::DisplayedWords {

namespace {

/// Splits a run of visible characters before each ideograph, and after an ideograph if letters
/// follow.
template <typename Use>
void forEachWord(std::string_view run, Use use) {
    std::size_t start = 0;
    std::size_t at = 0;
    bool afterIdeograph = false;
    for (const std::string_view character : Text::characters(run)) {
        const char32_t codePoint = Text::firstCodePoint(character);
        const bool isIdeograph = Text::isCJKIdeograph(codePoint);
        const bool begins = isIdeograph || (afterIdeograph && Text::isAlphanumeric(codePoint));
        if (begins && at > start) {
            use(run.substr(start, at - start));
            start = at;
        }
        if (begins)
            afterIdeograph = isIdeograph;
        at += character.size();
    }
    use(run.substr(start));
}

} // namespace

std::vector<std::string> asPrinted(std::string_view text) {
    std::vector<std::string> words;
    for (const std::string_view run : Text::splitOnWhiteSpace(text))
        forEachWord(run, [&](std::string_view word) { words.emplace_back(word); });
    return words;
}

std::vector<std::string> asSpoken(std::string_view text) {
    std::vector<std::string> words;
    for (const std::string& word : asPrinted(text)) {
        for (std::string& heard : CorrectionDiff::normalizedWords(word))
            words.push_back(std::move(heard));
    }
    return words;
}

} // namespace tessarune::DisplayedWords
