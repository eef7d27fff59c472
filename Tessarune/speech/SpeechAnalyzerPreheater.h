#pragma once

#include "Tessarune/speech/SpeechAnalyzerAssetStore.h"
#include "TessaruneCore/recognition/ModelCatalog.h"

#include <functional>
#include <set>
#include <string>

namespace tessarune {

/// Prepares the model of the chosen recognition language before the first session needs it. Main
/// queue only.
class SpeechAnalyzerPreheater {
  public:
    /// `selectedRecognitionOptionID` reads the setting. The store outlives this object.
    SpeechAnalyzerPreheater(SpeechAnalyzerAssetStore& store,
                            std::function<std::string()> selectedRecognitionOptionID)
        : store_(store), selectedRecognitionOptionID_(std::move(selectedRecognitionOptionID)) {}

    /// Preheats a locale at most once in the life of the program, so that only the user retries a
    /// failed download.
    void preheatSelectedOptionIfNeeded() {
        // An unknown stored id means the default, as at the start of a session.
        const auto option = ModelCatalog::recognitionOption(
            ModelCatalog::normalizedRecognitionOptionID(selectedRecognitionOptionID_()));
        if (option && preheatedLocales_.insert(option->localeIdentifier).second)
            store_.preheat(option->localeIdentifier);
    }

  private:
    SpeechAnalyzerAssetStore& store_;
    std::function<std::string()> selectedRecognitionOptionID_;
    std::set<std::string> preheatedLocales_;
};

} // namespace tessarune
