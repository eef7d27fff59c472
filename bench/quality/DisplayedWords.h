#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What counts as a word when changes of a text are counted.
///
/// A word is a run of characters that are not white space. A Han ideograph is a word of its own,
/// together with the punctuation behind it: Chinese has no blanks, and its recognisers change
/// single characters.
namespace tessarune::DisplayedWords {

/// The words as they are printed.
std::vector<std::string> asPrinted(std::string_view text);

/// The words as they sound: lower case, letters and digits only. What has neither is no word.
/// Canonical, so that equivalent words are the same bytes.
std::vector<std::string> asSpoken(std::string_view text);

} // namespace tessarune::DisplayedWords
