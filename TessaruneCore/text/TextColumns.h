#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// How much room text takes on a screen of fixed cells. Pure functions, any thread.
namespace tessarune::Text {

/// The cells of a terminal that `text` fills on one line: two for a wide character (East Asian
/// wide and full-width, emoji), none for control characters.
std::size_t columns(std::string_view text);

/// `text` broken into lines of at most `width` cells, at blanks where there is one and anywhere
/// between characters where there is none, as in Chinese. The blank at a break is dropped. Never
/// empty lines; a character wider than `width` stands alone.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

} // namespace tessarune::Text
