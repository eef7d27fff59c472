#pragma once

#include <cstddef>
#include <string_view>

/// Reading code points, and which of them need no thought; for the sources of `Text` and its tests.
namespace tessarune::Text {

char32_t decodeMultibyte(std::string_view text, std::size_t& at);

/// Whether the next code point surely has three bytes, as Han and kana do. After E0 and ED not
/// every byte may follow.
inline bool surelyHasThreeBytes(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t offset) {
        return static_cast<unsigned char>(text[at + offset]);
    };
    return byte(0) > 0xE0 && byte(0) < 0xF0 && byte(0) != 0xED && text.size() - at >= 3 &&
           (byte(1) & 0xC0) == 0x80 && (byte(2) & 0xC0) == 0x80;
}

/// The code point at `at`, which moves on behind it. A byte that is no UTF-8 gives U+FFFD.
inline char32_t decode(std::string_view text, std::size_t& at) {
    const auto byte = [&](std::size_t offset) -> char32_t {
        return static_cast<unsigned char>(text[at + offset]);
    };
    char32_t codePoint = byte(0);
    if (codePoint < 0x80) {
        ++at;
    } else if (surelyHasThreeBytes(text, at)) {
        codePoint = (byte(0) & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
        at += 3;
    } else {
        codePoint = decodeMultibyte(text, at);
    }
    return codePoint;
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
bool isPlainByTable(char32_t codePoint);
inline bool isPlain(char32_t codePoint) {
    return codePoint < 0x80 || (codePoint >= 0x4E00 && codePoint <= 0x9FFF) ||
           isPlainByTable(codePoint);
}

} // namespace tessarune::Text
