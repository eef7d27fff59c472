#include "TessaruneCore/recognition/ModelCatalog.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune::ModelCatalog {

namespace {

RecognitionOption english(std::string id, std::string region, std::string flag,
                          std::string locale) {
    auto engine = RecognitionEngine::appleAnalyzer(locale);
    return {std::move(id),     "English (" + region + ")", std::move(flag),
            std::move(locale), std::move(engine),          std::string(groupEnglish)};
}

} // namespace

const std::vector<RecognitionOption>& recognitionOptions() {
    static const std::vector<RecognitionOption> options{
        english("apple-analyzer-en", "American", "🇺🇸", "en-US"),
        english("apple-analyzer-en-gb", "British", "🇬🇧", "en-GB"),
        english("apple-analyzer-en-au", "Australian", "🇦🇺", "en-AU"),
        english("apple-analyzer-en-ca", "Canadian", "🇨🇦", "en-CA"),
        english("apple-analyzer-en-in", "Indian", "🇮🇳", "en-IN"),
        english("apple-analyzer-en-ie", "Irish", "🇮🇪", "en-IE"),
        english("apple-analyzer-en-nz", "New Zealand", "🇳🇿", "en-NZ"),
        english("apple-analyzer-en-za", "South African", "🇿🇦", "en-ZA"),
    };
    return options;
}

const std::vector<RecognitionOption>& visibleRecognitionOptions() {
    return recognitionOptions();
}

std::optional<RecognitionOption> recognitionOption(std::string_view id) {
    for (const auto& option : recognitionOptions()) {
        if (Text::equal(option.id, id))
            return option;
    }
    return std::nullopt;
}

std::string normalizedRecognitionOptionID(std::string_view id) {
    return std::string(recognitionOption(id) ? id : defaultRecognitionOptionID);
}

} // namespace tessarune::ModelCatalog
