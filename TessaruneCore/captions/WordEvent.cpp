#include "TessaruneCore/captions/WordEvent.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

bool WordEvent::operator==(const WordEvent& other) const {
    return Text::equal(word, other.word) && firstSeenAt == other.firstSeenAt &&
           revealedAt == other.revealedAt && audioStart == other.audioStart &&
           audioEnd == other.audioEnd;
}

} // namespace tessarune
