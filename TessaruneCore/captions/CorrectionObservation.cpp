#include "TessaruneCore/captions/CorrectionObservation.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

bool CorrectionObservation::operator==(const CorrectionObservation& other) const {
    return t == other.t && Text::equal(shownText, other.shownText) &&
           Text::equal(finalText, other.finalText) && droppedWords == other.droppedWords &&
           addedWords == other.addedWords && commonWords == other.commonWords;
}

} // namespace tessarune
