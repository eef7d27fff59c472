#include "Terminal/CaptionOutput.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <vector>

namespace tessarune {

std::string liveText(const LiveCaptionDisplayFrame& frame) {
    std::vector<std::string_view> parts;
    for (const LiveCaptionDisplaySegment& row : frame.liveTailRows)
        parts.emplace_back(row.sourceText);
    if (frame.livePartialRow)
        parts.emplace_back(frame.livePartialRow->sourceText);
    return Text::joined(parts, " ");
}

bool hasPreviewOf(const LiveCaptionDisplayFrame& frame, std::string_view sourceText) {
    using GhostTranslationPlanner::normalizedKey;
    return !frame.ghostTranslationText.empty() &&
           Text::equal(normalizedKey(sourceText), normalizedKey(frame.ghostTranslationSourceText));
}

std::string translationFailureText(std::string_view error, std::string_view target) {
    if (!TranslationSupport::isLanguageResourceNotReadyDisplayMessage(error))
        return std::string(error);
    return localized("the model for this language is damaged, or has been removed; to download "
                     "it again: tessarune-terminal --languages download %@",
                     {std::string(target)});
}

} // namespace tessarune
