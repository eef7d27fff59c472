#pragma once

#include <array>
#include <string_view>
#include <utility>

namespace tessarune {

/// The dictionaries in which a word can be looked up.
enum class VocabularyDictionaryProvider {
    youdaoEnglishChinese,
    cambridgeEnglishChinese,
    cambridgeEnglish,
    oxfordLearners,
    collins,
    longman,
    merriamWebster
};

/// The sources of pronunciations.
enum class VocabularyPronunciationSource {
    youdaoUS,
    youdaoUK,
    cambridgeUS,
    cambridgeUK,
    collinsUS,
    collinsUK,
    oxfordUS,
    oxfordUK
};

/// The word list for measuring progress.
enum class VocabularyProgressLibrary { core };

// Each value with the name under which it is stored.

inline constexpr std::array<std::pair<VocabularyDictionaryProvider, std::string_view>, 7>
    vocabularyDictionaryProviders{{
        {VocabularyDictionaryProvider::youdaoEnglishChinese, "youdaoEnglishChinese"},
        {VocabularyDictionaryProvider::cambridgeEnglishChinese, "cambridgeEnglishChinese"},
        {VocabularyDictionaryProvider::cambridgeEnglish, "cambridgeEnglish"},
        {VocabularyDictionaryProvider::oxfordLearners, "oxfordLearners"},
        {VocabularyDictionaryProvider::collins, "collins"},
        {VocabularyDictionaryProvider::longman, "longman"},
        {VocabularyDictionaryProvider::merriamWebster, "merriamWebster"},
    }};

inline constexpr std::array<std::pair<VocabularyPronunciationSource, std::string_view>, 8>
    vocabularyPronunciationSources{{
        {VocabularyPronunciationSource::youdaoUS, "youdaoUS"},
        {VocabularyPronunciationSource::youdaoUK, "youdaoUK"},
        {VocabularyPronunciationSource::cambridgeUS, "cambridgeUS"},
        {VocabularyPronunciationSource::cambridgeUK, "cambridgeUK"},
        {VocabularyPronunciationSource::collinsUS, "collinsUS"},
        {VocabularyPronunciationSource::collinsUK, "collinsUK"},
        {VocabularyPronunciationSource::oxfordUS, "oxfordUS"},
        {VocabularyPronunciationSource::oxfordUK, "oxfordUK"},
    }};

inline constexpr std::array<std::pair<VocabularyProgressLibrary, std::string_view>, 1>
    vocabularyProgressLibraries{{{VocabularyProgressLibrary::core, "core"}}};

} // namespace tessarune
