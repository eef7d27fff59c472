#pragma once

#include "TessaruneCore/recognition/EngineCapabilities.h"

#include <cstdint>

namespace tessarune {

/// The settings that a boundary engine gets with every text, so that changes take effect at once.
struct BoundaryContext {
    EngineCapabilities caps{};
    bool segment = false;         ///< split text into sentences at all
    bool freeze = false;          ///< freeze stable sentences before their final arrives
    bool clauseLevel = false;     ///< committed rows may end at clause punctuation
    bool softClauseLevel = false; ///< compute soft clause pieces for display
    double freezeStableSeconds = 0.6;
    std::int64_t maxUnpunctuatedWords = 28; ///< in `boundaryUnit`s
    BoundaryUnit boundaryUnit = BoundaryUnit::words;
    bool earlyCutSelfSegmenting = false; ///< freeze even if the recogniser segments by itself
};

} // namespace tessarune
