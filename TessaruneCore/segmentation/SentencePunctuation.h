#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// Which characters end a sentence or a clause. The colon, the ideographic comma and the character
/// '…' end neither. Pure functions, safe from any thread.
namespace tessarune::SentencePunctuation {

/// A set of the properties below.
using Traits = std::uint8_t;

inline constexpr Traits whiteSpace = 1;
inline constexpr Traits terminal = 2;          ///< ends a sentence
inline constexpr Traits clause = 4;            ///< ends a clause
inline constexpr Traits closing = 8;           ///< stays with the piece that it closes
inline constexpr Traits cutsWithoutSpace = 16; ///< Chinese marks, which cut even without a blank
inline constexpr Traits fullStop = 32;         ///< "."
inline constexpr Traits wrapsWord = 64; ///< ignored around a word that may be an abbreviation

namespace detail {
consteval std::array<Traits, 128> makeAsciiTraits() {
    std::array<Traits, 128> traits{};
    for (char c : {'\t', '\n', '\v', '\f', '\r', ' '})
        traits[static_cast<unsigned char>(c)] = whiteSpace;
    traits['.'] = terminal | fullStop;
    traits['?'] = traits['!'] = terminal;
    traits[','] = traits[';'] = clause;
    for (char c : {'"', '\'', ')', ']', '}'})
        traits[static_cast<unsigned char>(c)] = closing | wrapsWord;
    return traits;
}
inline constexpr std::array<Traits, 128> asciiTraits = makeAsciiTraits();
} // namespace detail

/// The properties of an ASCII character.
inline Traits traitsOfASCII(char character) {
    return detail::asciiTraits[static_cast<unsigned char>(character)];
}

/// The properties of any character. Punctuation with combining marks has none.
Traits traits(std::string_view character);

/// The terminal or clause punctuation at the end of a piece. White space around the piece and
/// closing quotes and brackets after the punctuation are ignored.
struct EndMark {
    char32_t character;
    Traits traits;
};
std::optional<EndMark> endMark(std::string_view piece);

} // namespace tessarune::SentencePunctuation
