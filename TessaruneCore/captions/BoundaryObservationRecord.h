#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// One line of a boundary log.
struct BoundaryObservationRecord {
    double t = 0;
    std::string phase;
    std::string inputText;
    std::vector<std::string> softPieces;
    std::vector<std::string> hardPieces;
    std::vector<std::string> leading;
    std::string tail;
    std::vector<std::string> reasons; ///< diagnostic values

    explicit BoundaryObservationRecord(BoundaryObservation observation);

    /// A JSON object with every key and without a line feed; `nullopt` if `t` is not finite.
    std::optional<std::string> line() const;
};

} // namespace tessarune
