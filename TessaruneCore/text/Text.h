#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// All that the program knows about characters. Texts are UTF-8.
///
/// A character is an extended grapheme cluster (Unicode Standard Annex 29), and two texts are equal
/// if they are canonically equivalent (Annex 15): "é" composed and decomposed is one character and
/// the same text. Every function has a fast path for ASCII and goes through ICU otherwise; both
/// give the same answer. Bytes that are no UTF-8 count as U+FFFD each and are never a failure.
///
/// Pure functions, safe from any thread. Views returned point into the argument.
namespace tessarune::Text {

// Characters

/// The characters of `text` in order.
std::vector<std::string_view> characters(std::string_view text);
/// The last character of a text that is not empty.
std::string_view lastCharacter(std::string_view text);
/// How many characters `text` has.
std::size_t length(std::string_view text);
/// The first `count` characters, or all.
std::string_view prefix(std::string_view text, std::size_t count);
/// What is left without the first `count` characters.
std::string_view dropFirst(std::string_view text, std::size_t count);
/// `text` if it has at most `limit` characters, else its first `limit` followed by `mark`.
std::string truncated(std::string_view text, std::size_t limit, std::string_view mark);

// Comparison, by canonical equivalence

bool equal(std::string_view a, std::string_view b);
bool equal(const std::vector<std::string>& a, const std::vector<std::string>& b);
/// Whether `text` begins with the characters of `start`.
bool hasPrefix(std::string_view text, std::string_view start);
/// A text that is the same bytes for all equivalent texts: for keys of sets and maps.
std::string canonical(std::string_view text);

// White space

/// Without white space and newlines at both ends: code points of category Z, U+0009 to U+000D and
/// U+0085.
std::string_view trimmed(std::string_view text);
/// Without blanks and tabs (category Zs and U+0009) at both ends; line ends stay.
std::string_view trimmedOfBlanks(std::string_view text);
/// Whether the first code point of a character has the property White_Space.
bool isWhiteSpace(std::string_view character);
/// The pieces between characters U+0020, empty ones dropped. Other white space does not separate.
std::vector<std::string_view> splitAtBlanks(std::string_view text);
/// The maximal runs of characters that are not white space.
std::vector<std::string_view> splitOnWhiteSpace(std::string_view text);
/// As many as `splitAtBlanks` and `splitOnWhiteSpace` would give.
std::size_t countOfBlankSeparated(std::string_view text);
std::size_t countOfWhiteSpaceSeparated(std::string_view text);
/// How many characters are not white space.
std::size_t countOfNonWhiteSpace(std::string_view text);
/// Each run of code points with White_Space becomes one blank.
std::string collapsingWhiteSpace(std::string_view text);
std::string joined(const std::vector<std::string>& parts, std::string_view separator);
std::string joined(const std::vector<std::string_view>& parts, std::string_view separator);

// Case and classes

/// The full lower-case mapping of the root locale, final sigma included.
std::string lowercased(std::string_view text);
/// Letters: categories L and M.
bool isLetter(char32_t codePoint);
/// Letters, marks and digits: categories L, M, N.
bool isAlphanumeric(char32_t codePoint);
/// Letters or numbers without marks: categories L, N.
bool isLetterOrNumber(char32_t codePoint);
bool isWhiteSpace(char32_t codePoint);
/// A Han ideograph of U+4E00 to U+9FFF or U+3400 to U+4DBF; kana and hangul are none.
bool isCJKIdeograph(char32_t codePoint);
bool containsCJK(std::string_view text);

// Code points

/// The code points in order; each byte that is no UTF-8 gives U+FFFD.
std::vector<char32_t> codePoints(std::string_view text);
char32_t firstCodePoint(std::string_view text);
void append(std::string& text, char32_t codePoint);
bool isValidUTF8(std::string_view bytes);
/// Without the bytes at the end that only begin a code point, as they stand where a file was cut.
std::string_view withoutCutCharacter(std::string_view bytes);
/// Whether all bytes are below 128. Each is a character then (CR LF are one), and may be walked as
/// such where CR LF makes no difference.
bool isASCII(std::string_view text);

// Numbers

/// The shortest digits that read back as the same double, with ".0" where it would be a whole
/// number without: 0.6, 1.0, 1760000000.25. The same in every locale.
std::string shortest(double value);
/// As "%.<decimals>f" in the C locale.
std::string fixed(double value, int decimals);

} // namespace tessarune::Text
