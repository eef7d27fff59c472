#include "TessaruneCore/text/LineBreaks.h"

#include "TessaruneCore/text/Text.h"

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <memory>

namespace tessarune::Text {

namespace {

/// Expensive to create and stateful, hence one per thread. Null if ICU's data is missing.
icu::BreakIterator* lineBreaks() {
    thread_local const std::unique_ptr<icu::BreakIterator> breaks = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> iterator(
            icu::BreakIterator::createLineInstance(icu::Locale::getRoot(), status));
        return U_SUCCESS(status) ? std::move(iterator) : nullptr;
    }();
    return breaks.get();
}

} // namespace

std::vector<std::string_view> linePieces(std::string_view text) {
    if (text.empty())
        return {};
    icu::BreakIterator* const breaks = lineBreaks();
    UErrorCode status = U_ZERO_ERROR;
    UText bytes = UTEXT_INITIALIZER;
    if (!breaks || !isValidUTF8(text) ||
        !utext_openUTF8(&bytes, text.data(), static_cast<std::int64_t>(text.size()), &status))
        return {text};
    breaks->setText(&bytes, status);
    std::vector<std::string_view> pieces;
    auto from = static_cast<std::size_t>(breaks->first());
    for (auto end = breaks->next(); U_SUCCESS(status) && end != icu::BreakIterator::DONE;
         end = breaks->next()) {
        const auto to = static_cast<std::size_t>(end);
        pieces.push_back(text.substr(from, to - from));
        from = to;
    }
    if (from < text.size())
        pieces.push_back(text.substr(from));
    utext_close(&bytes);
    return pieces;
}

} // namespace tessarune::Text
