#include "Tessarune/platform/translation-engine/TranslationEngine.h"

#include "Tessarune/platform/translation-engine/TranslationEngineABI.h"
#include "Tessarune/platform/translation-engine/VocabularyFile.h"
#include "TessaruneCore/text/Localization.h"

namespace tessarune {

namespace {

using namespace translationABI;

BorrowedText borrowed(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string copied(const BorrowedText& text) {
    return {reinterpret_cast<const char*>(text.data), text.length};
}

std::string takeText(OwnedText text) {
    std::string copy(reinterpret_cast<const char*>(text.data), text.length);
    tessarune_text_free(text);
    return copy;
}

} // namespace

TranslationEngine::TranslationEngine(const Files& files) {
    try {
        VocabularyFile::requireComplete(files.sourceVocabulary);
        if (files.targetVocabulary != files.sourceVocabulary)
            VocabularyFile::requireComplete(files.targetVocabulary);
    } catch (const std::exception& flaw) {
        throw TranslationEngineError(flaw.what());
    }
    OwnedText failure{};
    engine_ = tessarune_engine_load(borrowed(files.model.native()),
                                    borrowed(files.sourceVocabulary.native()),
                                    borrowed(files.targetVocabulary.native()), &failure);
    if (engine_ == nullptr)
        throw TranslationEngineError(
            localized("%@ cannot be loaded: %@", {files.model.string(), takeText(failure)}));
}

TranslationEngine::~TranslationEngine() {
    tessarune_engine_free(engine_);
}

std::string TranslationEngine::translate(std::string_view text) const {
    OwnedText result{};
    const bool isTranslated = tessarune_engine_translate(engine_, borrowed(text), &result);
    std::string translation = takeText(result);
    if (!isTranslated)
        throw TranslationEngineError(translation);
    return translation;
}

TranslationCatalogueSource TranslationCatalogueSource::ofEngine() {
    const CatalogueSource source = tessarune_catalogue_source();
    return {copied(source.endpoint) + "/v1/buckets/main/collections/" + copied(source.collection) +
                "/records",
            copied(source.attachments), static_cast<int>(source.majorVersion)};
}

} // namespace tessarune
