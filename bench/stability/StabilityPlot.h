#pragma once

#include "bench/stability/StabilityReport.h"

#include <string>

namespace tessarune::StabilityPlot {

/// An SVG picture that suits light and dark pages. On the left the words erased per word, one bar a
/// row, lighter where only case or punctuation changed; on the right how many words are settled how
/// soon after they first appeared.
std::string svg(const StabilityReport& report);

} // namespace tessarune::StabilityPlot
