#pragma once

#include <cstddef>
#include <string_view>

/// Reading code points, and which of them need no thought; for the sources of `Text` and its tests.
namespace tessarune::Text {

char32_t decodeMultibyte(std::string_view text, std::size_t& at);

/// The code point at `at`, which moves on behind it. A byte that is no UTF-8 gives U+FFFD.
inline char32_t decode(std::string_view text, std::size_t& at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80) {
        ++at;
        return byte;
    }
    return decodeMultibyte(text, at);
}

/// The code point that ends at `end`, which moves back before it.
char32_t decodeBackwards(std::string_view text, std::size_t& end);

/// U+0009 to U+000D and the blank: what counts as white space in ASCII, by every rule.
inline bool isASCIIWhiteSpace(char32_t codePoint) {
    return codePoint == ' ' || (codePoint >= '\t' && codePoint <= '\r');
}

/// Whether a code point surely never joins another plain one, neither in a character (apart from CR
/// LF) nor by normalisation, and is its own normal form. Covers what captions mostly consist of;
/// false only means that ICU has to be asked.
bool isPlain(char32_t codePoint);

} // namespace tessarune::Text
