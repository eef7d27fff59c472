#pragma once

#include "Tessarune/vocabulary/VocabularyTypes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The addresses of dictionaries and pronunciations. Pure functions without network access. The
// sites and their paths are data at the top of VocabularyAddresses.cpp.

namespace tessarune {

namespace VocabularyDictionary {

/// The page of a word; `nullopt` for an empty word.
std::optional<std::string> url(VocabularyDictionaryProvider provider, std::string_view word);

} // namespace VocabularyDictionary

namespace VocabularyPronunciationAudioSource {

/// The addresses that the site's naming scheme suggests for the sound of a word.
std::vector<std::string> directURLs(VocabularyPronunciationSource source, std::string_view word);

/// The pages that contain the address of the sound, for use if no direct address works.
std::vector<std::string> lookupURLs(VocabularyPronunciationSource source, std::string_view word);

/// The name of the source's accent in the paths of its site; empty if they contain none.
std::string_view accentDirectory(VocabularyPronunciationSource source);

/// The absolute address of the page's first sound that lies in the accent's folder `directory`.
std::optional<std::string> firstAudioURL(std::string_view html, std::string_view pageURL,
                                         std::string_view directory);

} // namespace VocabularyPronunciationAudioSource

} // namespace tessarune
