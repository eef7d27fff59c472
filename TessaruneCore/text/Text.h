#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// All rules about characters. Texts are UTF-8.
///
/// A character is an extended grapheme cluster (Unicode Standard Annex 29), and two texts are equal
/// if they are canonically equivalent (Annex 15): "é" composed and decomposed is one character and
/// the same text. The functions have fast paths for ASCII and common letters and otherwise use ICU,
/// with equal results. Each invalid UTF-8 byte is treated as U+FFFD; invalid text is never a
/// failure.
///
/// Pure functions, safe from any thread. Returned views point into the argument.
namespace tessarune::Text {

// Characters

/// The characters of `text` in order.
std::vector<std::string_view> characters(std::string_view text);
/// The last character of a non-empty text.
std::string_view lastCharacter(std::string_view text);
/// The number of characters.
std::size_t length(std::string_view text);
/// The first `count` characters, or all if there are fewer.
std::string_view prefix(std::string_view text, std::size_t count);
/// The text without its first `count` characters.
std::string_view dropFirst(std::string_view text, std::size_t count);
/// `text` if it has at most `limit` characters, else its first `limit` characters and `mark`.
std::string truncated(std::string_view text, std::size_t limit, std::string_view mark);

// Comparison, by canonical equivalence

bool equal(std::string_view a, std::string_view b);
bool equal(const std::vector<std::string>& a, const std::vector<std::string>& b);
/// Whether the first characters of `text` are those of `start`.
bool hasPrefix(std::string_view text, std::string_view start);
/// A normal form that is byte-identical for equivalent texts, for keys of sets and maps.
std::string canonical(std::string_view text);

// White space

/// Removes white space and newlines at both ends: code points of category Z, U+0009 to U+000D and
/// U+0085.
std::string_view trimmed(std::string_view text);
/// Removes blanks and tabs (category Zs and U+0009) at both ends; keeps line breaks.
std::string_view trimmedOfBlanks(std::string_view text);
/// Whether the first code point of a character has the property White_Space.
bool isWhiteSpace(std::string_view character);
/// Splits at the character U+0020 only; empty pieces are dropped.
std::vector<std::string_view> splitAtBlanks(std::string_view text);
/// The maximal runs of characters that are not white space.
std::vector<std::string_view> splitOnWhiteSpace(std::string_view text);
/// The numbers of pieces that `splitAtBlanks` and `splitOnWhiteSpace` return.
std::size_t countOfBlankSeparated(std::string_view text);
std::size_t countOfWhiteSpaceSeparated(std::string_view text);
/// The number of characters that are not white space.
std::size_t countOfNonWhiteSpace(std::string_view text);
/// Replaces each run of code points with White_Space by one blank.
std::string collapsingWhiteSpace(std::string_view text);
std::string joined(const std::vector<std::string>& parts, std::string_view separator);
std::string joined(const std::vector<std::string_view>& parts, std::string_view separator);

// Case and classes

/// The full lower-case mapping of the root locale, final sigma included.
std::string lowercased(std::string_view text);
/// Letters and marks: categories L and M.
bool isLetter(char32_t codePoint);
/// Letters, marks and numbers: categories L, M, N.
bool isAlphanumeric(char32_t codePoint);
/// Letters or numbers without marks: categories L, N.
bool isLetterOrNumber(char32_t codePoint);
bool isWhiteSpace(char32_t codePoint);
/// Whether it is a Han ideograph, U+4E00 to U+9FFF or U+3400 to U+4DBF; kana and hangul are not.
bool isCJKIdeograph(char32_t codePoint);
bool containsCJK(std::string_view text);

// Code points

/// The code points in order; each invalid UTF-8 byte gives U+FFFD.
std::vector<char32_t> codePoints(std::string_view text);
char32_t firstCodePoint(std::string_view text);
void append(std::string& text, char32_t codePoint);
bool isValidUTF8(std::string_view bytes);
/// Removes an incomplete code point at the end. A truncated file may end with one.
std::string_view withoutCutCharacter(std::string_view bytes);
/// Whether all bytes are below 128. Then each byte is a character, except that CR LF is a single
/// character.
bool isASCII(std::string_view text);

// Numbers

/// The shortest digits that read back as the same double, with ".0" for whole numbers: 0.6, 1.0,
/// 1760000000.25. From 1e16 on, and below 0.0001, with an exponent. Independent of the locale.
std::string shortest(double value);
/// Formats like "%.<decimals>f" in the C locale.
std::string fixed(double value, int decimals);

} // namespace tessarune::Text
