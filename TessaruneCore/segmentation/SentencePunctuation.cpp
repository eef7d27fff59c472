#include "TessaruneCore/segmentation/SentencePunctuation.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune::SentencePunctuation {

namespace {

/// The Greek question mark is canonically equivalent to the semicolon.
char32_t canonical(char32_t codePoint) {
    return codePoint == U'\u037E' ? U';' : codePoint;
}

Traits traitsOfMark(char32_t codePoint) {
    switch (codePoint) {
    case U'。':
    case U'？':
    case U'！':
        return terminal | cutsWithoutSpace;
    case U'，':
    case U'；':
        return clause | cutsWithoutSpace;
    case U'\u037E':
        return clause;
    case U'”':
    case U'’':
        return closing | wrapsWord;
    case U'）':
    case U'】':
    case U'」':
    case U'』':
        return closing;
    default:
        return 0;
    }
}

std::size_t bytesOfCodePoint(char lead) {
    const auto byte = static_cast<unsigned char>(lead);
    return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

} // namespace

Traits traits(std::string_view character) {
    if (character.size() == 1 && Text::isASCII(character))
        return traitsOfASCII(character[0]);
    const char32_t first = Text::firstCodePoint(character);
    if (Text::isWhiteSpace(first))
        return whiteSpace;
    return character.size() == bytesOfCodePoint(character[0]) ? traitsOfMark(first) : Traits{0};
}

std::optional<EndMark> endMark(std::string_view piece) {
    piece = Text::trimmed(piece);
    while (!piece.empty()) {
        const std::string_view last = Text::lastCharacter(piece);
        const Traits lastTraits = traits(last);
        if ((lastTraits & closing) == 0) {
            if ((lastTraits & (terminal | clause)) == 0)
                return std::nullopt;
            return EndMark{canonical(Text::firstCodePoint(last)), lastTraits};
        }
        piece.remove_suffix(last.size());
    }
    return std::nullopt;
}

} // namespace tessarune::SentencePunctuation
