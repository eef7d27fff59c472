#pragma once

#include "TessaruneCore/segmentation/BoundaryDecision.h"

#include <string>
#include <string_view>

namespace tessarune {

/// A boundary decision that the core reports: it has pieces, and it is that of a final, froze a
/// sentence or changed the leading sentences.
struct BoundaryObservation {
    enum class Phase { partial, final };

    Phase phase = Phase::partial;
    double t = 0; ///< the core's clock
    std::string inputText;
    BoundaryDecision decision;

    bool operator==(const BoundaryObservation&) const;
};

std::string_view name(BoundaryObservation::Phase phase);

} // namespace tessarune
