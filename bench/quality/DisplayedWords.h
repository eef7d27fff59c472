#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Splits a text into words whose changes are counted.
///
/// A word is a run of characters that are not white space. A Han ideograph is a word of its own,
/// together with the punctuation after it: Chinese has no blanks, and its recognisers change single
/// characters.
namespace tessarune::DisplayedWords {

/// The words as they are printed.
std::vector<std::string> asPrinted(std::string_view text);

/// The words as they sound: in lower case, only letters and digits. Words without any of these are
/// left out. The result is canonical: equivalent words have the same bytes.
std::vector<std::string> asSpoken(std::string_view text);

} // namespace tessarune::DisplayedWords
