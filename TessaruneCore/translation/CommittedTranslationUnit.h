#pragma once

#include "TessaruneCore/UUID.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Consecutive committed rows that are translated as one text. Equality compares texts by canonical
/// equivalence.
struct CommittedTranslationUnit {
    UUID translationUnitID;       ///< new for each planned unit
    std::vector<UUID> segmentIDs; ///< all members in order, blank ones included
    UUID resultSegmentID;         ///< the member that will show the translation: the last one
    std::string sourceText;       ///< "" if all members are blank
    /// The `committedAt` of the first member that has text and a `committedAt`; seconds since 1970.
    std::optional<double> committedAt;

    bool operator==(const CommittedTranslationUnit& other) const;
};

} // namespace tessarune
