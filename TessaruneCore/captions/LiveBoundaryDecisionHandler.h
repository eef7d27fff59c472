#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"

#include <optional>
#include <string>

namespace tessarune::LiveBoundaryDecisionHandler {

/// Whether a boundary decision is worth asking the recogniser for an early final, and the reason to
/// give it; nothing if not. `appleAnalyzerEarlyFinalize` is the setting of that name. Pure.
std::optional<std::string> engineFinalizationReason(const BoundaryObservation& observation,
                                                    bool appleAnalyzerEarlyFinalize);

} // namespace tessarune::LiveBoundaryDecisionHandler
