#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The width of text on a terminal. Pure functions, any thread.
namespace tessarune::Text {

/// The terminal cells that `text` fills on one line: two for a wide character (East Asian wide and
/// full-width, emoji), none for control and formatting characters.
std::size_t columns(std::string_view text);

/// Wraps `text` into lines of at most `width` cells. Lines break at blanks and after wide
/// characters such as Chinese ones, but if possible not before closing punctuation or after opening
/// punctuation. A text without such a place breaks anywhere. The blank at a break is dropped. No
/// line is empty; a character wider than `width` gets a line of its own.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// `text` if it fills at most `width` cells, else the longest prefix that fits together with a "…"
/// after it.
std::string fitted(std::string_view text, std::size_t width);

/// `text` padded with trailing blanks to at least `width` cells.
std::string padded(std::string_view text, std::size_t width);

/// Makes `text` safe for display. U+FFFD replaces control characters (a terminal obeys them),
/// directional controls (they can reverse the text after them), line and paragraph separators, and
/// invalid UTF-8 bytes. Line feeds and tabs stay.
std::string printable(std::string_view text);

/// The same for one line: replaces each run of white space by one blank.
std::string printableLine(std::string_view text);

} // namespace tessarune::Text
