#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"

#include <string>

/// One line that describes a boundary decision, for the diagnostics display. Pure.
namespace tessarune::BoundarySummary {

std::string text(const BoundaryObservation& observation);

} // namespace tessarune::BoundarySummary
