#pragma once

#include "TessaruneCore/segmentation/BoundaryContext.h"
#include "TessaruneCore/segmentation/BoundaryDecision.h"

#include <string_view>

namespace tessarune {

/// Interface: decides where sentences begin and end in recognised text.
///
/// Confined to its owner's thread; it has no clock, so callers pass the time. No operation fails;
/// the decision for an empty text is empty.
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
