#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A word as a search compares it, and where it stands in the text.
struct SearchToken {
    std::string text;
    std::size_t offset = 0; ///< in bytes
    std::size_t length = 0;

    bool operator==(const SearchToken&) const = default;
};

/// How text is cut for the search: queries and transcripts alike, so that they meet. Pure
/// functions, any thread.
///
/// A token is a run of letters and digits, folded; apostrophes in it do not count ("dont" finds
/// "don't"). In scripts without blanks between words (Chinese, Japanese, Thai and others) and in
/// Korean, where words grow endings, each character is a token, and what was typed is found as a
/// sequence of them.
namespace SearchTokens {

std::vector<SearchToken> cut(std::string_view text);

/// The tokens of a text with a blank between each two.
std::string joined(std::string_view text);

} // namespace SearchTokens

} // namespace tessarune
