#include "TessaruneCore/segmentation/BoundaryDecision.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

bool BoundaryDecision::operator==(const BoundaryDecision& other) const {
    return Text::equal(softPieces, other.softPieces) && Text::equal(hardPieces, other.hardPieces) &&
           Text::equal(leading, other.leading) && Text::equal(tail, other.tail) &&
           reasons == other.reasons;
}

} // namespace tessarune
