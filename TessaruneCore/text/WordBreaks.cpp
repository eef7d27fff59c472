#include "TessaruneCore/text/WordBreaks.h"

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace tessarune::Text {

namespace {

void requireWordBreaks(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("ICU: ") + u_errorName(status));
}

/// Expensive to create and stateful, hence one per thread.
icu::BreakIterator& wordBreaks() {
    thread_local const std::unique_ptr<icu::BreakIterator> breaks = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> iterator(
            icu::BreakIterator::createWordInstance(icu::Locale::getRoot(), status));
        requireWordBreaks(status);
        return iterator;
    }();
    return *breaks;
}

/// Whether the text between two words joins them.
bool joins(std::string_view between) {
    return between == "-" || between == "'";
}

} // namespace

std::vector<std::string_view> words(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    UText bytes = UTEXT_INITIALIZER;
    utext_openUTF8(&bytes, text.data(), static_cast<std::int64_t>(text.size()), &status);
    requireWordBreaks(status);
    const std::unique_ptr<UText, decltype(&utext_close)> closer(&bytes, &utext_close);
    icu::BreakIterator& breaks = wordBreaks();
    breaks.setText(&bytes, status);
    requireWordBreaks(status);

    std::vector<std::string_view> found;
    std::size_t lastEnd = 0; // of the last word
    auto start = static_cast<std::size_t>(breaks.first());
    for (auto next = breaks.next(); next != icu::BreakIterator::DONE; next = breaks.next()) {
        const auto end = static_cast<std::size_t>(next);
        if (breaks.getRuleStatus() >= UBRK_WORD_NONE_LIMIT) {
            if (!found.empty() && joins(text.substr(lastEnd, start - lastEnd))) {
                const auto first = static_cast<std::size_t>(found.back().data() - text.data());
                found.back() = text.substr(first, end - first);
            } else {
                found.push_back(text.substr(start, end - start));
            }
            lastEnd = end;
        }
        start = end;
    }
    return found;
}

} // namespace tessarune::Text
