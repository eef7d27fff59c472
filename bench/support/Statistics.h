#pragma once

#include <vector>

/// Statistics of repeated measurements. Values may have any order; without values, the result is 0.
namespace tessarune::Statistics {

/// The smallest value V such that at least the fraction `share` (0 to 1) of all values is <= V.
double percentile(std::vector<double> values, double share);

/// The middle value, or the mean of the two in the middle.
double median(std::vector<double> values);

} // namespace tessarune::Statistics
