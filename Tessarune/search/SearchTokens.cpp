#include "Tessarune/search/SearchTokens.h"

#include "TessaruneCore/text/CodePoints.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextFolding.h"

#include <algorithm>
#include <array>

namespace tessarune::SearchTokens {

namespace {

struct CodePointRange {
    char32_t first;
    char32_t last;
};
/// The scripts in which each code point is a token.
constexpr std::array unspacedScripts{
    CodePointRange{0x0E00, 0x0EFF},  // Thai, Lao
    CodePointRange{0x1000, 0x109F},  // Burmese
    CodePointRange{0x1780, 0x17FF},  // Khmer
    CodePointRange{0x3005, 0x3007},  // iteration mark and zero of Han
    CodePointRange{0x3040, 0x30FF},  // kana
    CodePointRange{0x31F0, 0x31FF},  // more kana
    CodePointRange{0x3400, 0x4DBF},  // Han
    CodePointRange{0x4E00, 0x9FFF},  // Han
    CodePointRange{0xAC00, 0xD7A3},  // Korean
    CodePointRange{0xF900, 0xFAFF},  // Han
    CodePointRange{0xFF66, 0xFF9F},  // half-width kana
    CodePointRange{0x20000, 0x3FFFF} // Han
};

bool standsAlone(char32_t codePoint) {
    if (codePoint < unspacedScripts.front().first)
        return false;
    return std::ranges::any_of(unspacedScripts, [codePoint](const CodePointRange& range) {
        return codePoint >= range.first && codePoint <= range.last;
    });
}

bool isApostrophe(char32_t codePoint) {
    return codePoint == '\'' || codePoint == U'’';
}

std::string withoutApostrophes(std::string_view word) {
    std::string kept;
    for (std::size_t at = 0; at < word.size();) {
        const std::size_t start = at;
        if (!isApostrophe(Text::decode(word, at)))
            kept += word.substr(start, at - start);
    }
    return kept;
}

class Cutter {
  public:
    explicit Cutter(std::string_view text) : text_(text) {}

    std::vector<SearchToken> cut() {
        for (std::size_t at = 0; at < text_.size();) {
            const std::size_t start = at;
            const char32_t codePoint = Text::decode(text_, at);
            if (standsAlone(codePoint)) {
                endWord();
                add(start, at, text_.substr(start, at - start));
            } else if (Text::isAlphanumeric(codePoint)) {
                wordStart_ = hasWord_ ? wordStart_ : start;
                hasWord_ = true;
                wordEnd_ = at;
            } else if (!isApostrophe(codePoint) || wordEnd_ != start) {
                endWord(); // only an apostrophe after a letter lets the word continue
            }
        }
        endWord();
        return std::move(tokens_);
    }

  private:
    void endWord() {
        if (!hasWord_)
            return;
        const std::string_view word = text_.substr(wordStart_, wordEnd_ - wordStart_);
        // ’ begins with the byte 0xE2 in UTF-8; most words have neither apostrophe.
        if (word.find_first_of("'\xE2") == std::string_view::npos)
            add(wordStart_, wordEnd_, word);
        else
            add(wordStart_, wordEnd_, withoutApostrophes(word));
        hasWord_ = false;
    }
    void add(std::size_t start, std::size_t end, std::string_view raw) {
        std::string folded = Text::folded(raw);
        // Folding replaces a few ligatures by several words.
        std::erase(folded, ' ');
        if (!folded.empty())
            tokens_.push_back({std::move(folded), start, end - start});
    }

    std::string_view text_;
    std::vector<SearchToken> tokens_;
    bool hasWord_ = false;
    std::size_t wordStart_ = 0;
    std::size_t wordEnd_ = 0;
};

} // namespace

std::vector<SearchToken> cut(std::string_view text) {
    return Cutter(text).cut();
}

std::string joined(std::string_view text) {
    std::string tokens;
    tokens.reserve(text.size());
    for (const auto& token : cut(text)) {
        if (!tokens.empty())
            tokens += ' ';
        tokens += token.text;
    }
    return tokens;
}

} // namespace tessarune::SearchTokens
