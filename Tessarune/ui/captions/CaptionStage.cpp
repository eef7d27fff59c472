#include "Tessarune/ui/captions/CaptionStage.h"

#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "TessaruneCore/text/Text.h"

#include <functional>
#include <string>

namespace tessarune::CaptionStage {

bool hasCaptionOutput(const LiveCaptionDisplayFrame& frame) {
    return !frame.sourceTextTail.empty() || !frame.liveTailRows.empty() || frame.livePartialRow ||
           !frame.translationTail.empty() || !Text::trimmed(frame.ghostTranslationText).empty();
}

std::optional<CaptionEmptyPresentation> emptyPresentation(const LiveCaptionDisplayFrame& frame) {
    if (hasCaptionOutput(frame))
        return std::nullopt;
    if (Text::equal(frame.statusMessage, LiveCaptionUserMessages::silentTitle()))
        return CaptionEmptyPresentation::silent;
    switch (frame.sessionPhase) {
    case LiveSessionPhase::idle:
    case LiveSessionPhase::failed:
        return CaptionEmptyPresentation::idle;
    case LiveSessionPhase::preparing:
    case LiveSessionPhase::loading:
    case LiveSessionPhase::listening:
        return CaptionEmptyPresentation::checking;
    case LiveSessionPhase::stopping:
        break;
    }
    return std::nullopt;
}

std::uint64_t contentRevision(const LiveCaptionDisplayFrame& frame) {
    std::uint64_t revision = 0;
    const auto mix = [&revision](std::uint64_t value) { revision = revision * 1'000'003 + value; };
    mix(static_cast<std::uint64_t>(frame.sourceRevision));
    mix(static_cast<std::uint64_t>(frame.translationRevision));
    mix(std::hash<std::string>()(frame.ghostTranslationText));
    mix(std::hash<std::string>()(frame.ghostTranslationSourceText));
    return revision;
}

} // namespace tessarune::CaptionStage
