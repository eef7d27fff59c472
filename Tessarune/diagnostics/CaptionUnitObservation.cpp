#include "Tessarune/diagnostics/CaptionUnitObservation.h"

#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextHash.h"

#include <algorithm>

namespace tessarune::CaptionUnitObservation {

namespace {

template <typename T>
void put(JSON::Value& object, const char* key, const std::optional<T>& value) {
    if constexpr (std::is_same_v<T, UUID>) {
        if (value)
            object[key] = value->text();
    } else if (value) {
        object[key] = *value;
    }
}

} // namespace

std::string_view translationRole(const CaptionSegment& segment) {
    if (!segment.translationUnitID)
        return "none";
    return segment.translationResultSegmentID == segment.id ? "result" : "member";
}

std::string preview(std::string_view text) {
    constexpr std::size_t previewCharacters = 180;
    std::string flat(Text::prefix(text, previewCharacters));
    std::ranges::replace_if(
        flat, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return flat;
}

JSON::Value unit(std::size_t index, const CaptionSegment& segment, Texts texts) {
    JSON::Value object{
        {"index", index},
        {"id", segment.id.text()},
        {"state", name(segment.state)},
        {"freezeKind", name(segment.freezeKind)},
        {"revision", segment.revision},
        {"revisionCount", segment.revisionCount},
        {"translationRole", translationRole(segment)},
        {"startedAt", segment.startedAt},
        {"sourceCharacters", Text::length(segment.sourceText)},
        {"sourceWords", Text::countOfWhiteSpaceSeparated(segment.sourceText)},
        {"sourceHash", fnv1a64Hex(segment.sourceText)},
    };
    put(object, "translationUnitID", segment.translationUnitID);
    put(object, "translationResultSegmentID", segment.translationResultSegmentID);
    put(object, "translationUnitIndex", segment.translationUnitIndex);
    put(object, "translationUnitCount", segment.translationUnitCount);
    put(object, "endedAt", segment.endedAt);
    put(object, "committedAt", segment.committedAt);
    put(object, "firstSeenAt", segment.firstSeenAt);
    const auto& translated = segment.translatedText;
    if (translated) {
        object["translationCharacters"] = Text::length(*translated);
        object["translationHash"] = fnv1a64Hex(*translated);
    }
    if (texts == Texts::full) {
        object["sourceText"] = segment.sourceText;
        put(object, "translationText", translated);
        put(object, "translationError", segment.translationError);
        return object;
    }
    object["sourcePreview"] = preview(segment.sourceText);
    object["hasTranslation"] = translated.has_value();
    if (translated)
        object["translationPreview"] = preview(*translated);
    object["hasTranslationError"] = segment.translationError.has_value();
    return object;
}

} // namespace tessarune::CaptionUnitObservation
