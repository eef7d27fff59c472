#pragma once

#include <string_view>
#include <vector>

namespace tessarune::Text {

/// The words of `text` in order, without punctuation and white space, by the word boundaries of
/// Unicode Standard Annex 29; Chinese, Japanese and Thai are divided with ICU's dictionaries. A
/// hyphen or an apostrophe between two words joins them. Returned views point into `text`. Any
/// thread.
std::vector<std::string_view> words(std::string_view text);

} // namespace tessarune::Text
