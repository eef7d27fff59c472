#include "Tessarune/display/LiveCaptionDisplaySegment.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"

namespace tessarune {

std::optional<LiveCaptionDisplaySegment>
LiveCaptionDisplaySegment::from(const CaptionSegment& segment) {
    LiveCaptionDisplaySegment row;
    row.sourceText = Text::trimmed(segment.sourceText);
    if (row.sourceText.empty())
        return std::nullopt;
    row.id = segment.id;
    if (segment.translatedText)
        row.translatedText = Text::trimmed(*segment.translatedText);
    row.translationUnitID = segment.translationUnitID;
    row.revision = segment.revision;
    row.state = segment.state;
    return row;
}

std::string LiveCaptionDisplaySegment::normalizedSourceKey() const {
    return GhostTranslationPlanner::normalizedKey(sourceText);
}

} // namespace tessarune
