#include "TessaruneCore/captions/BoundaryObservation.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

bool BoundaryObservation::operator==(const BoundaryObservation& other) const {
    return phase == other.phase && t == other.t && Text::equal(inputText, other.inputText) &&
           decision == other.decision;
}

std::string_view name(BoundaryObservation::Phase phase) {
    return phase == BoundaryObservation::Phase::partial ? "partial" : "final";
}

} // namespace tessarune
