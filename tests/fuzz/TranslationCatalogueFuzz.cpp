// Any bytes as the published list of translation models: no crash, and every model offered for
// download has checksums and all the files that the engine needs.
#include "Tessarune/platform/translation-engine/TranslationCatalogue.h"
#include "tests/fuzz/Fuzz.h"

#include <stdexcept>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessarune;
    static const TranslationCatalogueSource source{"https://list", "https://files", 3};
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::optional<TranslationCatalogue> catalogue;
    try {
        catalogue = TranslationCatalogue::parse(text, source);
    } catch (const std::runtime_error&) {
        return 0; // not a list
    }
    for (const char* target : {"fr", "ja", "th", ""}) {
        const TranslationPair pair{"en", target};
        const std::optional<AvailableModel> model = catalogue->model(pair);
        fuzz::require(model.has_value() == catalogue->lists(pair),
                      "a listed pair without a model, or a model of an unlisted pair");
        if (!model)
            continue;
        StoredModel stored;
        for (const FileToFetch& file : model->files) {
            fuzz::require(file.sha256.size() == 64 && file.isZstd, "a file without a checksum");
            fuzz::require(file.url.starts_with("https://files/"), "a file from somewhere else");
            stored.files.push_back({file.name, 0, file.sha256});
        }
        translationFilesOf(stored);
    }
    return 0;
}
