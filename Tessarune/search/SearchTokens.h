#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A word in the form that searches compare, and its position in the text.
struct SearchToken {
    std::string text;
    std::size_t offset = 0; ///< in bytes
    std::size_t length = 0;

    bool operator==(const SearchToken&) const = default;
};

/// Splits queries and transcripts into tokens. Pure functions, any thread.
///
/// A token is a run of letters and digits, folded by `Text::folded`; apostrophes in it are ignored
/// ("dont" finds "don't"). In scripts without blanks between words (Chinese, Japanese, Thai and
/// others) and in Korean, where words have endings, each code point is a token, and a query matches
/// as a sequence of tokens.
namespace SearchTokens {

std::vector<SearchToken> cut(std::string_view text);

/// The tokens of a text, joined with blanks.
std::string joined(std::string_view text);

} // namespace SearchTokens

} // namespace tessarune
