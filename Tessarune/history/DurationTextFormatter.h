#pragma once

#include <string>

namespace tessarune::DurationTextFormatter {

/// "04:05", and from an hour on "1:04:05". Drops fractions of a second; an invalid duration counts
/// as 0.
std::string compact(double seconds);

} // namespace tessarune::DurationTextFormatter
