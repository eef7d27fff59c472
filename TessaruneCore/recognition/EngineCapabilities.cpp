#include "TessaruneCore/recognition/EngineCapabilities.h"

#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/text/Text.h"

namespace tessarune {

std::string_view diagnosticLabel(BoundaryUnit unit) {
    return unit == BoundaryUnit::words ? "words" : "characters";
}

std::optional<BoundaryUnit> boundaryUnit(std::string_view rawValue) {
    for (const auto unit : {BoundaryUnit::words, BoundaryUnit::characters}) {
        if (rawValue == diagnosticLabel(unit))
            return unit;
    }
    return std::nullopt;
}

EngineCapabilities EngineCapabilities::localized(std::string_view localeIdentifier) const {
    EngineCapabilities copy = *this;
    if (Text::hasPrefix(Text::lowercased(localeIdentifier), "zh")) {
        copy.boundaryUnit = BoundaryUnit::characters;
        copy.maxUnpunctuatedUnits = SentenceSegmenter::maxUnpunctuatedCharacters;
    }
    return copy;
}

} // namespace tessarune
