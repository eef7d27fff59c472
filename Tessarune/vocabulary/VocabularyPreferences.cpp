#include "Tessarune/vocabulary/VocabularyPreferences.h"

#include "TessaruneCore/text/Localization.h"

#include <string>
#include <utility>

namespace tessarune {

namespace {

template <typename Choices>
auto nameCodecOf(const Choices& choices) {
    using Choice = typename Choices::value_type::first_type;
    std::vector<std::pair<Choice, std::string>> names;
    names.reserve(choices.size());
    for (const auto& [choice, name] : choices)
        names.emplace_back(choice, std::string(name));
    return wordCodec(std::move(names));
}

} // namespace

VocabularyPreferences::VocabularyPreferences(UserDefaults& store)
    : dictionaryProvider(
          store, all_, "Vocabulary.defaultDictionaryProvider",
          {SettingGroup::application, localizationKey("The dictionary for looking up words.")},
          VocabularyDictionaryProvider::youdaoEnglishChinese,
          nameCodecOf(vocabularyDictionaryProviders)),
      pronunciationSource(
          store, all_, "Vocabulary.defaultPronunciationSource",
          {SettingGroup::application, localizationKey("The source of pronunciations.")},
          VocabularyPronunciationSource::youdaoUS, nameCodecOf(vocabularyPronunciationSources)),
      progressLibrary(
          store, all_, "Vocabulary.progressLibrary",
          {SettingGroup::application, localizationKey("The word list for measuring progress.")},
          VocabularyProgressLibrary::core, nameCodecOf(vocabularyProgressLibraries)) {}

} // namespace tessarune
