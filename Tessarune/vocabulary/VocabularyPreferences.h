#pragma once

#include "Tessarune/shell/Setting.h"
#include "Tessarune/vocabulary/VocabularyTypes.h"

#include <vector>

namespace tessarune {

/// What the user chose for looking up and hearing words. Each is observable and stored at once.
/// Main queue; the store must outlive it.
class VocabularyPreferences {
    // Before the settings, which enter themselves when they are made.
    std::vector<AnySetting*> all_;

  public:
    explicit VocabularyPreferences(UserDefaults& store);

    Setting<VocabularyDictionaryProvider> dictionaryProvider;
    Setting<VocabularyPronunciationSource> pronunciationSource;
    Setting<VocabularyProgressLibrary> progressLibrary;

    const std::vector<AnySetting*>& all() const { return all_; }
};

} // namespace tessarune
