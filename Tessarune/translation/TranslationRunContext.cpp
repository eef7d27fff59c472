#include "Tessarune/translation/TranslationRunContext.h"

#include "TessaruneCore/translation/TranslationSupport.h"

namespace tessarune {

TranslationRunContext TranslationRunContext::forTarget(std::string target) {
    const std::string source(TranslationSupport::defaultSourceLanguage);
    const bool passThrough = TranslationSupport::isSameLanguageTarget(target, source);
    return {std::move(target), source, passThrough};
}

} // namespace tessarune
