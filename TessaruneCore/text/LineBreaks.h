#pragma once

#include <string_view>
#include <vector>

/// Where lines may break, by Unicode Standard Annex 14: between words, between Chinese characters,
/// never before a comma. Pure, any thread.
namespace tessarune::Text {

/// Splits `text` into pieces between which a line may break, each with its trailing blanks. Invalid
/// UTF-8 is a single piece.
std::vector<std::string_view> linePieces(std::string_view text);

} // namespace tessarune::Text
