#include "TessaruneCore/captions/CorrectionObservationRecord.h"

#include "TessaruneCore/text/JSON.h"

namespace tessarune {

std::optional<std::string> CorrectionObservationRecord::line() const {
    return JSON::Object()
        .add("t", t)
        .add("shownText", shownText)
        .add("finalText", finalText)
        .add("droppedWords", droppedWords)
        .add("addedWords", addedWords)
        .add("commonWords", commonWords)
        .line();
}

} // namespace tessarune
