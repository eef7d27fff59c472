#pragma once

#include "TessaruneCore/UUID.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// One translation result for the display, which then updates only the rows of the unit.
struct LiveCaptionDisplayTranslationPatch {
    UUID translationUnitID;
    std::vector<UUID> segmentIDs;              ///< the unit's rows, in order
    UUID resultSegmentID;                      ///< the row that shows the text
    std::optional<std::string> translatedText; ///< `nullopt`: the unit failed

    bool operator==(const LiveCaptionDisplayTranslationPatch&) const = default;
};

} // namespace tessarune
