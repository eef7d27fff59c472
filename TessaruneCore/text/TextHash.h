#pragma once

#include <string>
#include <string_view>

namespace tessarune {

/// FNV-1a, 64 bit, over the bytes of `text`, as 16 lower-case hexadecimal digits. Diagnostics files
/// identify a text by its hash, so tools can follow the text without seeing it.
std::string fnv1a64Hex(std::string_view text);

} // namespace tessarune
