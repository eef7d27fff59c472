#pragma once

#include "TessaruneCore/segmentation/BoundaryContext.h"
#include "TessaruneCore/segmentation/BoundaryDecision.h"

#include <string_view>

namespace tessarune {

/// Seam: decides where sentences begin and end in recognised text.
///
/// Confined to its owner's thread; it has no clock of its own. No operation fails; empty text gives
/// an empty decision.
class BoundaryEngine {
  public:
    virtual ~BoundaryEngine() = default;

    /// Forgets all previous texts.
    virtual void reset() = 0;

    /// `text` is the whole current partial of the utterance; `now` is in seconds.
    virtual BoundaryDecision ingestPartial(std::string_view text, const BoundaryContext& context,
                                           double now) = 0;

    /// A final leaves nothing open: only `hardPieces` and `reasons` are filled.
    virtual BoundaryDecision ingestFinal(std::string_view text, const BoundaryContext& context) = 0;
};

} // namespace tessarune
