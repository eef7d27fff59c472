#include "TessaruneCore/text/DateText.h"

#include <unicode/smpdtfmt.h>

namespace tessarune::DateText {

std::string formatted(double secondsSince1970, std::string_view pattern, std::string_view locale) {
    constexpr double millisecondsASecond = 1000;
    const auto utf8 = [](std::string_view text) {
        return icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size()));
    };
    UErrorCode status = U_ZERO_ERROR;
    const icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8(utf8(pattern)),
                                       icu::Locale(std::string(locale).c_str()), status);
    std::string result;
    if (U_FAILURE(status))
        return result;
    icu::UnicodeString text;
    format.format(secondsSince1970 * millisecondsASecond, text);
    return text.toUTF8String(result);
}

} // namespace tessarune::DateText
