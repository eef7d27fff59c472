#include "TessaruneCore/text/TextSlowPath.h"

#include "TessaruneCore/text/CodePoints.h"

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/normlzr.h>
#include <unicode/unistr.h>

#include <memory>
#include <stdexcept>

namespace tessarune::Text::SlowPath {

namespace {

/// ICU fails only if its data is missing; no text can cause that.
void require(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("ICU: ") + u_errorName(status));
}

icu::UnicodeString utf16(std::string_view text) {
    icu::UnicodeString result;
    for (std::size_t at = 0; at < text.size();)
        result.append(static_cast<UChar32>(decode(text, at)));
    return result;
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

/// Expensive to create and stateful, hence one per thread.
icu::BreakIterator& characterBreaks() {
    thread_local const std::unique_ptr<icu::BreakIterator> breaks = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> iterator(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        require(status);
        return iterator;
    }();
    return *breaks;
}

} // namespace

std::vector<std::size_t> characterEnds(std::string_view text) {
    const icu::UnicodeString units = utf16(text);
    icu::BreakIterator& breaks = characterBreaks();
    breaks.setText(units);
    std::vector<std::size_t> ends;
    std::size_t at = 0;
    std::int32_t unit = 0;
    breaks.first();
    for (auto end = breaks.next(); end != icu::BreakIterator::DONE; end = breaks.next()) {
        while (unit < end)
            unit += U16_LENGTH(static_cast<UChar32>(decode(text, at)));
        ends.push_back(at);
    }
    return ends;
}

std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> result;
    std::size_t start = 0;
    for (const std::size_t end : characterEnds(text)) {
        result.push_back(text.substr(start, end - start));
        start = end;
    }
    return result;
}

bool equal(std::string_view a, std::string_view b) {
    UErrorCode status = U_ZERO_ERROR;
    const auto order = icu::Normalizer::compare(utf16(a), utf16(b), 0, status);
    require(status);
    return order == 0;
}

bool hasPrefix(std::string_view text, std::string_view start) {
    const auto textCharacters = characters(text);
    const auto startCharacters = characters(start);
    if (startCharacters.size() > textCharacters.size())
        return false;
    for (std::size_t i = 0; i < startCharacters.size(); ++i) {
        if (!equal(textCharacters[i], startCharacters[i]))
            return false;
    }
    return true;
}

std::string canonical(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const auto* composer = icu::Normalizer2::getNFCInstance(status);
    require(status);
    const icu::UnicodeString composed = composer->normalize(utf16(text), status);
    require(status);
    return utf8(composed);
}

std::string lowercased(std::string_view text) {
    return utf8(utf16(text).toLower(icu::Locale::getRoot()));
}

} // namespace tessarune::Text::SlowPath
