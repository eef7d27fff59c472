#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// What single characters mean for the cutting of text. The colon, the ideographic comma and the
/// ellipsis mean nothing. Pure functions, safe from any thread.
namespace tessarune::SentencePunctuation {

/// A set of the properties below.
using Traits = std::uint8_t;

inline constexpr Traits whiteSpace = 1;
inline constexpr Traits terminal = 2;          ///< ends a sentence
inline constexpr Traits clause = 4;            ///< ends a clause
inline constexpr Traits closing = 8;           ///< stays with the piece that it closes
inline constexpr Traits cutsWithoutSpace = 16; ///< Chinese marks, which no blank follows
inline constexpr Traits fullStop = 32;         ///< "."
inline constexpr Traits wrapsWord = 64;        ///< taken off a word before it is looked up

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

/// Of a character that is one byte below 128.
inline Traits traitsOfASCII(char character) {
    return detail::asciiTraits[static_cast<unsigned char>(character)];
}

/// Of any character; one with combining marks is none of the marks above.
Traits traits(std::string_view character);

/// The mark that a piece ends in, white space, closing quotes and brackets aside, if it is terminal
/// or clause punctuation.
struct EndMark {
    char32_t character;
    Traits traits;
};
std::optional<EndMark> endMark(std::string_view piece);

} // namespace tessarune::SentencePunctuation
