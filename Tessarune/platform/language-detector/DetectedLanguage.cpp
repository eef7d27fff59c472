#include "Tessarune/platform/language-detector/DetectedLanguage.h"

#include "TessaruneCore/text/Text.h"

#include <cld2/public/compact_lang_det.h>

namespace tessarune {

std::optional<std::string> detectedLanguage(std::string_view text) {
    // In bytes. Enough to detect the language; limits the cost of a long transcript.
    constexpr std::size_t longestSample = 64UL * 1024;
    bool isReliable = false;
    int validBytes = 0; // unused: the language of invalid UTF-8 is UNKNOWN_LANGUAGE anyway
    const std::string_view sample = Text::withoutCutCharacter(text.substr(0, longestSample));
    constexpr bool isPlainText = true;
    const auto language = CLD2::DetectLanguageCheckUTF8(
        sample.data(), static_cast<int>(sample.size()), isPlainText, &isReliable, &validBytes);
    if (!isReliable || language == CLD2::UNKNOWN_LANGUAGE)
        return std::nullopt;
    return CLD2::LanguageCode(language);
}

} // namespace tessarune
