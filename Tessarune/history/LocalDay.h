#pragma once

#include <ctime>

/// Days of the computer's time zone. Moments are seconds since 1970. Any thread.
namespace tessarune::LocalDay {

std::tm timeOf(double moment);

/// The first moment of a day. As in std::tm, `year` counts from 1900 and `month` from 0. `day` may
/// lie outside the month, such as 0 or 32. If the clock skips midnight, the result is the first
/// moment after the skipped time.
double start(int year, int month, int day);

/// The first moment of the day that is `daysLater` days after the day of `moment`.
double start(double moment, int daysLater);

} // namespace tessarune::LocalDay
