#pragma once

#include "TessaruneCore/segmentation/BoundaryReason.h"

#include <string>
#include <vector>

namespace tessarune {

/// The result of a boundary engine for one text.
struct BoundaryDecision {
    std::vector<std::string> softPieces{}; ///< clauses, for soft display only
    std::vector<std::string> hardPieces{}; ///< to be committed: newly frozen, or of a final
    std::vector<std::string> leading{};    ///< complete sentences, not frozen yet
    std::string tail{};                    ///< the unfinished end
    std::vector<BoundaryReason> reasons{}; ///< distinct, in the order of first occurrence

    /// Compares texts by canonical equivalence.
    bool operator==(const BoundaryDecision&) const;
};

} // namespace tessarune
