#pragma once

#include <cstddef>
#include <string_view>

/// Decodes code points and finds those that need no ICU (`isPlain`). For code that walks over
/// texts; all other code uses `Text.h`.
namespace tessarune::Text {

/// The general case of `decode`.
char32_t decodeMultibyte(std::string_view text, std::size_t& at);

/// Whether the next code point certainly has three bytes, as Han and kana do. Always false for the
/// first bytes E0 and ED, because not every second byte is valid after them.
inline bool surelyHasThreeBytes(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t offset) {
        return static_cast<unsigned char>(text[at + offset]);
    };
    return byte(0) > 0xE0 && byte(0) < 0xF0 && byte(0) != 0xED && text.size() - at >= 3 &&
           (byte(1) & 0xC0) == 0x80 && (byte(2) & 0xC0) == 0x80;
}

/// Decodes the code point at `at` and advances `at` past it. An invalid byte is decoded as U+FFFD.
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

/// Decodes the code point that ends at `end` and moves `end` to its start.
char32_t decodeBackwards(std::string_view text, std::size_t& end);

/// Whether a code point is white space in ASCII: U+0009 to U+000D or U+0020.
inline bool isASCIIWhiteSpace(char32_t codePoint) {
    return codePoint == ' ' || (codePoint >= '\t' && codePoint <= '\r');
}

/// Whether a code point is plain: it never combines with another plain one, neither in a character
/// (except CR LF) nor by normalisation, and it is its own normal form. Most caption text is plain;
/// other text is left to ICU.
bool isPlainByTable(char32_t codePoint);
inline bool isPlain(char32_t codePoint) {
    return codePoint < 0x80 || (codePoint >= 0x4E00 && codePoint <= 0x9FFF) ||
           isPlainByTable(codePoint);
}

} // namespace tessarune::Text
