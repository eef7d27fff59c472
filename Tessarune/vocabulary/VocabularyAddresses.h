#pragma once

#include "Tessarune/vocabulary/VocabularyTypes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The addresses of dictionaries and of the sound of words. Pure functions; nothing here touches the
// network. The sites and their paths are data at the top of VocabularyAddresses.cpp.

namespace tessarune {

namespace VocabularyDictionary {

/// The page of a word; nothing for an empty one.
std::optional<std::string> url(VocabularyDictionaryProvider provider, std::string_view word);

} // namespace VocabularyDictionary

namespace VocabularyPronunciationAudioSource {

/// Where a site may have the sound of a word, by the scheme of its files.
std::vector<std::string> directURLs(VocabularyPronunciationSource source, std::string_view word);

/// The pages that name the sound, where no guess was right.
std::vector<std::string> lookupURLs(VocabularyPronunciationSource source, std::string_view word);

/// The folder in which a site keeps the sounds of the source's accent.
std::string_view accentDirectory(VocabularyPronunciationSource source);

/// The first sound in a page that lies in the accent's folder, as an absolute address.
std::optional<std::string> firstAudioURL(std::string_view html, std::string_view pageURL,
                                         std::string_view directory);

} // namespace VocabularyPronunciationAudioSource

} // namespace tessarune
