#pragma once

#include <string_view>
#include <vector>

/// Where lines may break, by Unicode Standard Annex 14: between words, between Chinese characters,
/// never before a comma. Pure, any thread.
namespace tessarune::Text {

/// The pieces of `text` between which a line may break, each with the blanks behind it. Together
/// they are `text`. Invalid UTF-8 is one piece.
std::vector<std::string_view> linePieces(std::string_view text);

} // namespace tessarune::Text
