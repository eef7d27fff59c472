#pragma once

#include "TessaruneCore/segmentation/BoundaryContext.h"
#include "TessaruneCore/segmentation/BoundaryDecision.h"

#include <string_view>

namespace tessarune {

/// Seam: between recognised text and everything that depends on where sentences begin and end.
///
/// Confined to its owner's thread; it has no clock of its own. No operation fails: empty text gives
/// an empty decision.
class BoundaryEngine {
  public:
    virtual ~BoundaryEngine() = default;

    /// Forgets what was seen.
    virtual void reset() = 0;

    /// `text` is the whole current guess of the utterance, `now` in seconds.
    virtual BoundaryDecision ingestPartial(std::string_view text, const BoundaryContext& context,
                                           double now) = 0;

    /// A final leaves nothing open: only `hardPieces` and `reasons` are filled.
    virtual BoundaryDecision ingestFinal(std::string_view text, const BoundaryContext& context) = 0;
};

} // namespace tessarune
