#include "Tessarune/vocabulary/VocabularyPreferences.h"

#include "TessaruneCore/text/Localization.h"

#include <string>
#include <utility>

namespace tessarune {

namespace {

template <typename Choices>
auto storedWords(const Choices& choices) {
    using Choice = typename Choices::value_type::first_type;
    std::vector<std::pair<Choice, std::string>> words;
    words.reserve(choices.size());
    for (const auto& [choice, word] : choices)
        words.emplace_back(choice, std::string(word));
    return wordCodec(std::move(words));
}

} // namespace

VocabularyPreferences::VocabularyPreferences(UserDefaults& store)
    : dictionaryProvider(store, all_, "Vocabulary.defaultDictionaryProvider",
                         {SettingGroup::application,
                          localizationKey("The dictionary that a word is looked up in.")},
                         VocabularyDictionaryProvider::youdaoEnglishChinese,
                         storedWords(vocabularyDictionaryProviders)),
      pronunciationSource(store, all_, "Vocabulary.defaultPronunciationSource",
                          {SettingGroup::application,
                           localizationKey("Where the sound of a word is fetched from.")},
                          VocabularyPronunciationSource::youdaoUS,
                          storedWords(vocabularyPronunciationSources)),
      progressLibrary(store, all_, "Vocabulary.progressLibrary",
                      {SettingGroup::application,
                       localizationKey("The list of words that progress is measured against.")},
                      VocabularyProgressLibrary::core, storedWords(vocabularyProgressLibraries)) {}

} // namespace tessarune
