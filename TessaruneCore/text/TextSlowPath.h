#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What `Text` does where it knows no short cut: the whole text through ICU, by the book. Apart
/// from `Text` only its tests use this, as the answer that every short cut has to give too.
namespace tessarune::Text::SlowPath {

/// The byte offset of the end of each character.
std::vector<std::size_t> characterEnds(std::string_view text);
std::vector<std::string_view> characters(std::string_view text);
bool equal(std::string_view a, std::string_view b);
bool hasPrefix(std::string_view text, std::string_view start);
std::string canonical(std::string_view text);
std::string lowercased(std::string_view text);

} // namespace tessarune::Text::SlowPath
