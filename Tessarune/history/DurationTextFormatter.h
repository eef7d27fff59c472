#pragma once

#include <string>

namespace tessarune::DurationTextFormatter {

/// "04:05", from an hour on "1:04:05". Fractions of a second are dropped; what is no duration
/// counts as none.
std::string compact(double seconds);

} // namespace tessarune::DurationTextFormatter
