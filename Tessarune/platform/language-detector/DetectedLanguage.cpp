#include "Tessarune/platform/language-detector/DetectedLanguage.h"

#include "TessaruneCore/text/Text.h"

#include <cld2/public/compact_lang_det.h>

namespace tessarune {

std::optional<std::string> detectedLanguage(std::string_view text) {
    // Enough to detect the language; bounds the cost for a long transcript.
    constexpr std::size_t longestSample = 64UL * 1024;
    bool isReliable = false;
    int validBytes = 0;
    const std::string_view sample = Text::withoutCutCharacter(text.substr(0, longestSample));
    const auto language = CLD2::DetectLanguageCheckUTF8(
        sample.data(), static_cast<int>(sample.size()), true, &isReliable, &validBytes);
    if (!isReliable || language == CLD2::UNKNOWN_LANGUAGE)
        return std::nullopt;
    return CLD2::LanguageCode(language);
}

} // namespace tessarune
