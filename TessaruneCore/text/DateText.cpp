#include "TessaruneCore/text/DateText.h"

#include <unicode/smpdtfmt.h>

#include <map>
#include <memory>
#include <utility>

namespace tessarune::DateText {

namespace {

/// Returns a cached formatter, because creating one takes twenty times as long as using it, and
/// lists format thousands of dates. Null if it cannot be created.
const icu::SimpleDateFormat* formatOf(std::string_view pattern, std::string_view locale) {
    constexpr std::size_t maximumFormats = 16;
    thread_local std::map<std::pair<std::string, std::string>,
                          std::unique_ptr<icu::SimpleDateFormat>>
        formats;
    const std::pair<std::string, std::string> key{pattern, locale};
    const auto known = formats.find(key);
    if (known != formats.end())
        return known->second.get();
    if (formats.size() >= maximumFormats)
        formats.clear();
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(key.first),
                                                          icu::Locale(key.second.c_str()), status);
    if (U_FAILURE(status))
        format.reset();
    return (formats[key] = std::move(format)).get();
}

} // namespace

std::string formatted(double secondsSince1970, std::string_view pattern, std::string_view locale) {
    constexpr double millisecondsPerSecond = 1000;
    std::string result;
    const icu::SimpleDateFormat* const format = formatOf(pattern, locale);
    if (!format)
        return result;
    icu::UnicodeString text;
    format->format(secondsSince1970 * millisecondsPerSecond, text);
    return text.toUTF8String(result);
}

} // namespace tessarune::DateText
