#include "Tessarune/speech/SpeechAnalyzerPreheater.h"

#include "TessaruneCore/recognition/ModelCatalog.h"

namespace tessarune {

void SpeechAnalyzerPreheater::preheatSelectedOptionIfNeeded() {
    // A stored id that is unknown means the default, as it will when a session starts.
    const auto option = ModelCatalog::recognitionOption(
        ModelCatalog::normalizedRecognitionOptionID(selectedRecognitionOptionID_()));
    if (option && preheatedLocales_.insert(option->localeIdentifier).second)
        store_.preheat(option->localeIdentifier);
}

} // namespace tessarune
