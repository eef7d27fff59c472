#pragma once

#include <string>
#include <string_view>

namespace tessarune::Text {

/// `text` as a search compares it: without differences of case, diacritics (U+0300 to U+036F) and
/// compatible forms such as full-width letters and ligatures. Any thread.
std::string folded(std::string_view text);

} // namespace tessarune::Text
