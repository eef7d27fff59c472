#include "Tessarune/history/LocalDay.h"

#include <cmath>
#include <utility>

namespace tessarune {

std::tm LocalDay::timeOf(double moment) {
    const auto whole = static_cast<std::time_t>(std::floor(moment));
    std::tm local{};
    localtime_r(&whole, &local);
    return local;
}

double LocalDay::start(int year, int month, int day) {
    std::tm local{};
    local.tm_year = year;
    local.tm_mon = month;
    local.tm_mday = day;
    local.tm_isdst = -1;
    // If a midnight does not exist or occurs twice, `mktime` may be wrong by the clock change; the
    // loops below correct it.
    constexpr std::time_t step = 15L * 60;
    std::tm wanted = local;
    wanted.tm_hour = 12;
    std::mktime(&wanted); // turns it into a day that exists
    const auto isBefore = [&](std::time_t moment) {
        const std::tm at = timeOf(static_cast<double>(moment));
        return std::pair(at.tm_year, at.tm_yday) < std::pair(wanted.tm_year, wanted.tm_yday);
    };
    std::time_t start = std::mktime(&local);
    while (isBefore(start))
        start += step;
    while (!isBefore(start - 1))
        start -= step;
    return static_cast<double>(start);
}

double LocalDay::start(double moment, int daysLater) {
    const std::tm local = timeOf(moment);
    return start(local.tm_year, local.tm_mon, local.tm_mday + daysLater);
}

} // namespace tessarune
