#pragma once

#include "Tessarune/shell/Setting.h"
#include "Tessarune/vocabulary/VocabularyTypes.h"

#include <vector>

namespace tessarune {

/// The user's choices for looking up and hearing words. Each can be observed and is stored at once.
/// Main queue; the store must outlive this.
class VocabularyPreferences {
    // Declared before the settings, whose constructors add them to this list.
    std::vector<AnySetting*> all_;

  public:
    explicit VocabularyPreferences(UserDefaults& store);

    Setting<VocabularyDictionaryProvider> dictionaryProvider;
    Setting<VocabularyPronunciationSource> pronunciationSource;
    Setting<VocabularyProgressLibrary> progressLibrary;

    const std::vector<AnySetting*>& all() const { return all_; }
};

} // namespace tessarune
