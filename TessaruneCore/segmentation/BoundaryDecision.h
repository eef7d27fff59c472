#pragma once

#include "TessaruneCore/segmentation/BoundaryReason.h"

#include <string>
#include <vector>

namespace tessarune {

/// The result of a boundary engine for one text.
struct BoundaryDecision {
    std::vector<std::string> softPieces{}; ///< clauses, for soft display only; never committed
    std::vector<std::string> hardPieces{}; ///< fixed by this decision, in reading order
    std::vector<std::string> leading{};    ///< complete by punctuation, not fixed yet
    std::string tail{};                    ///< the unfinished rest
    std::vector<BoundaryReason> reasons{}; ///< each once, in the order in which they were first met

    /// Compares texts by canonical equivalence.
    bool operator==(const BoundaryDecision&) const;
};

} // namespace tessarune
