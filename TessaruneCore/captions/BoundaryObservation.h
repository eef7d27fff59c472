#pragma once

#include "TessaruneCore/segmentation/BoundaryDecision.h"

#include <string>
#include <string_view>

namespace tessarune {

/// A boundary decision that changed the captions, as the core reports it.
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
