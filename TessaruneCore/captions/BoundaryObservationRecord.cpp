#include "TessaruneCore/captions/BoundaryObservationRecord.h"

#include "TessaruneCore/text/JSON.h"

#include <utility>

namespace tessarune {

BoundaryObservationRecord::BoundaryObservationRecord(BoundaryObservation observation)
    : t(observation.t),
      phase(name(observation.phase)),
      inputText(std::move(observation.inputText)),
      softPieces(std::move(observation.decision.softPieces)),
      hardPieces(std::move(observation.decision.hardPieces)),
      leading(std::move(observation.decision.leading)),
      tail(std::move(observation.decision.tail)) {
    for (const auto& reason : observation.decision.reasons)
        reasons.push_back(reason.diagnosticValue());
}

std::optional<std::string> BoundaryObservationRecord::line() const {
    return JSON::Object()
        .add("t", t)
        .add("phase", phase)
        .add("inputText", inputText)
        .add("softPieces", softPieces)
        .add("hardPieces", hardPieces)
        .add("leading", leading)
        .add("tail", tail)
        .add("reasons", reasons)
        .line();
}

} // namespace tessarune
