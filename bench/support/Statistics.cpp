#include "bench/support/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessarune::Statistics {

double percentile(std::vector<double> values, double share) {
    if (values.empty())
        return 0;
    const double count = static_cast<double>(values.size());
    const double rank = std::clamp(std::ceil(share * count), 1.0, count);
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(rank) - 1;
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace tessarune::Statistics
