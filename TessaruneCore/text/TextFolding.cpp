#include "TessaruneCore/text/TextFolding.h"

#include "TessaruneCore/text/Text.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <stdexcept>

namespace tessarune::Text {

std::string folded(std::string_view text) {
    if (isASCII(text))
        return lowercased(text);
    UErrorCode status = U_ZERO_ERROR;
    const auto* decomposer = icu::Normalizer2::getNFKDInstance(status);
    const auto utf8 = icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size()));
    icu::UnicodeString units = icu::UnicodeString::fromUTF8(utf8).foldCase();
    if (U_SUCCESS(status))
        units = decomposer->normalize(units, status);
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("ICU: ") + u_errorName(status));
    icu::UnicodeString kept;
    for (std::int32_t i = 0; i < units.length(); ++i) {
        const char16_t unit = units[i];
        if (unit < 0x300 || unit > 0x36F)
            kept.append(unit);
    }
    std::string result;
    kept.toUTF8String(result);
    return result;
}

} // namespace tessarune::Text
