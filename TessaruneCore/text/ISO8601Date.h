#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Moments as files keep them: "2025-10-09T12:00:00Z". Pure functions, the same in every locale and
/// time zone.
namespace tessarune::ISO8601Date {

/// Seconds since 1970, without their fraction; what lies outside the years 1 to 9999 is moved to
/// the nearer end.
std::string text(double secondsSince1970);

/// Also with a fraction of a second, and with an offset (+hh:mm or +hhmm) for the "Z".
std::optional<double> parse(std::string_view text);

} // namespace tessarune::ISO8601Date
