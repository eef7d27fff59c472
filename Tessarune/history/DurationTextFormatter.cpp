#include "Tessarune/history/DurationTextFormatter.h"

#include <cstdio>

namespace tessarune::DurationTextFormatter {

std::string compact(double seconds) {
    constexpr double longest = 1e9; // some thirty years
    const auto whole = seconds > 0 && seconds < longest ? static_cast<long>(seconds) : 0L;
    const long hours = whole / 3600;
    char text[40];
    if (hours > 0)
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", hours, whole / 60 % 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "%02ld:%02ld", whole / 60, whole % 60);
    return text;
}

} // namespace tessarune::DurationTextFormatter
