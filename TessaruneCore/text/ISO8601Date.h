#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Times in files: "2025-10-09T12:00:00Z". Pure functions, independent of locale and time zone.
namespace tessarune::ISO8601Date {

/// Formats seconds since 1970 without their fraction. Times outside the years 1 to 9999 are
/// clamped; NaN becomes 1970.
std::string text(double secondsSince1970);

/// Also accepts fractions of a second, and an offset (±hh:mm or ±hhmm) in place of the "Z";
/// `nullopt` for any other text.
std::optional<double> parse(std::string_view text);

} // namespace tessarune::ISO8601Date
