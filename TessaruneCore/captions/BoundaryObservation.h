#pragma once

#include "TessaruneCore/segmentation/BoundaryDecision.h"

#include <string>
#include <string_view>

namespace tessarune {

/// A boundary decision with pieces or leading sentences, as the core reports it. Of the decisions
/// about partials, the core reports only those that freeze a sentence or change the leading
/// sentences.
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
