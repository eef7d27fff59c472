#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The width of text on a terminal. Pure functions, any thread.
namespace tessarune::Text {

/// The terminal cells that `text` fills on one line: two for a wide character (East Asian wide and
/// full-width, emoji), none for control characters.
std::size_t columns(std::string_view text);

/// Wraps `text` into lines of at most `width` cells, at blanks if possible, otherwise between any
/// two characters, as in Chinese. The blank at a break is dropped. No line is empty; a character
/// wider than `width` gets a line of its own.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

} // namespace tessarune::Text
