#pragma once

#include <string>
#include <string_view>

namespace tessarune {

/// FNV-1a, 64 bit, over the bytes of `text`, as 16 lower-case hexadecimal digits. Diagnostics name
/// a text by it, so that tools can follow the text through files that do not hold it.
std::string fnv1a64Hex(std::string_view text);

} // namespace tessarune
