#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The general implementation behind `Text`, which passes whole texts through ICU. Tests use it as
/// the reference for every fast path.
namespace tessarune::Text::SlowPath {

/// The byte offsets at which characters end.
std::vector<std::size_t> characterEnds(std::string_view text);
std::vector<std::string_view> characters(std::string_view text);
bool equal(std::string_view a, std::string_view b);
bool hasPrefix(std::string_view text, std::string_view start);
std::string canonical(std::string_view text);
std::string lowercased(std::string_view text);

} // namespace tessarune::Text::SlowPath
