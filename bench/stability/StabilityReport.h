#pragma once

#include "bench/stability/StabilityMeasure.h"

#include <string>
#include <vector>

namespace tessarune {

/// A line of the table, and a colour of the plot.
struct StabilityRow {
    std::string name;
    MeasuredText text;
    bool isRecogniser = false; ///< the finals are its own, so it can't differ from them
};

/// What is said about some event logs together.
struct StabilityReport {
    std::string title; ///< which logs, how long
    std::vector<StabilityRow> rows;

    /// For a terminal; ends with a line feed.
    std::string table() const;
};

} // namespace tessarune
