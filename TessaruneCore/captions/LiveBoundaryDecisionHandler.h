#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"

#include <optional>
#include <string>

namespace tessarune::LiveBoundaryDecisionHandler {

/// The reason to ask the recogniser for an early final after this boundary decision, or `nullopt`
/// if it should not be asked. `appleAnalyzerEarlyFinalize` is the setting of that name. Pure.
std::optional<std::string> engineFinalizationReason(const BoundaryObservation& observation,
                                                    bool appleAnalyzerEarlyFinalize);

} // namespace tessarune::LiveBoundaryDecisionHandler
