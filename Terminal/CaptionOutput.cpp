#include "Terminal/CaptionOutput.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>

namespace tessarune {

std::string liveText(const CaptionCore& core) {
    std::vector<std::string> parts;
    const auto add = [&](const CaptionSegment& row) {
        const std::string_view text = Text::trimmed(row.sourceText);
        if (!text.empty())
            parts.emplace_back(text);
    };
    for (const auto& row : *core.liveLeadingSentences)
        add(row);
    for (const auto& row : *core.softCaptionSegments)
        add(row);
    add(*core.currentPartial);
    return Text::joined(parts, " ");
}

bool isPreviewOf(const CaptionPreview& preview, std::span<const CaptionSegment> rows) {
    if (preview.text.empty() || rows.empty())
        return false;
    const std::string key = GhostTranslationPlanner::normalizedKey(preview.source);
    return std::ranges::any_of(rows, [&](const CaptionSegment& row) {
        return Text::equal(GhostTranslationPlanner::normalizedKey(row.sourceText), key);
    });
}

std::string translationFailureText(std::string_view error, std::string_view target) {
    if (!TranslationSupport::isLanguageResourceNotReadyDisplayMessage(error))
        return std::string(error);
    return localized("the model for this language is missing or damaged; to download it: "
                     "tessarune-terminal --languages download %@",
                     {std::string(target)});
}

} // namespace tessarune
