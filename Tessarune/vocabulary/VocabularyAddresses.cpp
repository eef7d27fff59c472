#include "Tessarune/vocabulary/VocabularyAddresses.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

// Data: the sites, their paths and the naming schemes of their sounds.

struct DictionarySite {
    VocabularyDictionaryProvider provider;
    std::string_view beforeWord;
    std::string_view afterWord;
};

constexpr std::string_view youdaoSite = "https://dict.youdao.com";
constexpr std::string_view cambridgeSite = "https://dictionary.cambridge.org";
constexpr std::string_view oxfordSite = "https://www.oxfordlearnersdictionaries.com";
constexpr std::string_view collinsSite = "https://www.collinsdictionary.com";

constexpr std::array<DictionarySite, 7> dictionarySites{{
    {VocabularyDictionaryProvider::youdaoEnglishChinese,
     "https://dict.youdao.com/result?word=", "&lang=en"},
    {VocabularyDictionaryProvider::cambridgeEnglishChinese,
     "https://dictionary.cambridge.org/dictionary/english-chinese-simplified/", ""},
    {VocabularyDictionaryProvider::cambridgeEnglish,
     "https://dictionary.cambridge.org/dictionary/english/", ""},
    {VocabularyDictionaryProvider::oxfordLearners,
     "https://www.oxfordlearnersdictionaries.com/definition/english/", ""},
    {VocabularyDictionaryProvider::collins, "https://www.collinsdictionary.com/dictionary/english/",
     ""},
    {VocabularyDictionaryProvider::longman, "https://www.ldoceonline.com/dictionary/", ""},
    {VocabularyDictionaryProvider::merriamWebster, "https://www.merriam-webster.com/dictionary/",
     ""},
}};

enum class SoundSite { youdao, cambridge, oxford, collins };

struct SoundOfAccent {
    VocabularyPronunciationSource source;
    SoundSite site;
    std::string_view directory; ///< the accent in the site's paths
    std::string_view mark;      ///< the accent in its file names or queries
};

constexpr std::array<SoundOfAccent, 8> sounds{{
    {VocabularyPronunciationSource::youdaoUS, SoundSite::youdao, "", "2"},
    {VocabularyPronunciationSource::youdaoUK, SoundSite::youdao, "", "1"},
    {VocabularyPronunciationSource::cambridgeUS, SoundSite::cambridge, "us_pron", ""},
    {VocabularyPronunciationSource::cambridgeUK, SoundSite::cambridge, "uk_pron", ""},
    {VocabularyPronunciationSource::collinsUS, SoundSite::collins, "en_us", ""},
    {VocabularyPronunciationSource::collinsUK, SoundSite::collins, "en_gb", ""},
    {VocabularyPronunciationSource::oxfordUS, SoundSite::oxford, "us_pron", "__us"},
    {VocabularyPronunciationSource::oxfordUK, SoundSite::oxford, "uk_pron", "__gb"},
}};

constexpr std::string_view soundFolder = "/media/english/";

const SoundOfAccent& soundOf(VocabularyPronunciationSource source) {
    return *std::ranges::find(sounds, source, &SoundOfAccent::source);
}

/// Encodes everything except letters, digits and "-._~" as "%XX", so that no character can end a
/// path segment or a query value.
std::string percentEncoded(std::string_view text) {
    constexpr std::string_view hexadecimal = "0123456789ABCDEF";
    std::string encoded;
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        const bool isPlain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= '0' && byte <= '9') ||
                             std::string_view("-._~").find(byte) != std::string_view::npos;
        if (isPlain) {
            encoded += byte;
        } else {
            encoded += '%';
            encoded += hexadecimal[value >> 4U];
            encoded += hexadecimal[value & 0xFU];
        }
    }
    return encoded;
}

std::string normalized(std::string_view word) {
    return Text::lowercased(Text::trimmed(word));
}

/// The folders in which Cambridge and Oxford keep a word: its first character, its first three and
/// its first five, each padded with "_", then the word itself.
std::string nameParts(const std::string& word) {
    std::string parts;
    for (const std::size_t length : {1U, 3U, 5U}) {
        std::string part(Text::prefix(word, length));
        part.append(length - Text::length(part), '_');
        parts += '/' + percentEncoded(part);
    }
    return parts + '/' + percentEncoded(word);
}

} // namespace

std::optional<std::string> VocabularyDictionary::url(VocabularyDictionaryProvider provider,
                                                     std::string_view word) {
    const std::string_view trimmed = Text::trimmed(word);
    if (trimmed.empty())
        return std::nullopt;
    const auto& site = *std::ranges::find(dictionarySites, provider, &DictionarySite::provider);
    return std::string(site.beforeWord) + percentEncoded(trimmed) + std::string(site.afterWord);
}

namespace VocabularyPronunciationAudioSource {

std::vector<std::string> directURLs(VocabularyPronunciationSource source, std::string_view word) {
    const std::string name = normalized(word);
    if (name.empty())
        return {};
    const SoundOfAccent& sound = soundOf(source);
    const std::string directory(sound.directory);
    const std::string folder = std::string(soundFolder) + directory;
    switch (sound.site) {
    case SoundSite::youdao:
        return {std::string(youdaoSite) + "/dictvoice?audio=" + percentEncoded(name) +
                "&type=" + std::string(sound.mark)};
    case SoundSite::cambridge:
        return {std::string(cambridgeSite) + folder + nameParts(name) + ".mp3"};
    case SoundSite::oxford:
        return {std::string(oxfordSite) + folder + nameParts(name) + std::string(sound.mark) +
                "_1.mp3"};
    case SoundSite::collins:
        return {std::string(collinsSite) + "/sounds/hwd_sounds/" + directory + "_" +
                percentEncoded(name) + ".mp3"};
    }
    return {};
}

std::vector<std::string> lookupURLs(VocabularyPronunciationSource source, std::string_view word) {
    const auto page = [word](VocabularyDictionaryProvider provider) {
        const auto found = VocabularyDictionary::url(provider, normalized(word));
        return found ? std::vector{*found} : std::vector<std::string>();
    };
    switch (soundOf(source).site) {
    case SoundSite::cambridge:
        return page(VocabularyDictionaryProvider::cambridgeEnglish);
    case SoundSite::oxford:
        return page(VocabularyDictionaryProvider::oxfordLearners);
    case SoundSite::collins:
        return page(VocabularyDictionaryProvider::collins);
    case SoundSite::youdao:
        return {};
    }
    return {};
}

std::string_view accentDirectory(VocabularyPronunciationSource source) {
    return soundOf(source).directory;
}

std::optional<std::string> firstAudioURL(std::string_view html, std::string_view pageURL,
                                         std::string_view directory) {
    constexpr std::string_view attribute = "src=\"";
    const std::string folder = std::string(soundFolder) + std::string(directory) + "/";
    for (auto at = html.find(attribute); at != std::string_view::npos;
         at = html.find(attribute, at + 1)) {
        std::string_view rest = html.substr(at + attribute.size());
        const std::string_view value = rest.substr(0, rest.find('"'));
        if (value.size() == rest.size() || value.find(folder) == std::string_view::npos)
            continue;
        std::string found(value);
        constexpr std::string_view ampersand = "&amp;";
        for (auto mark = found.find(ampersand); mark != std::string::npos;
             mark = found.find(ampersand, mark + 1))
            found.replace(mark, ampersand.size(), "&");
        const auto scheme = pageURL.substr(0, std::min(pageURL.find("//"), pageURL.size()));
        const auto host =
            pageURL.substr(0, std::min(pageURL.find('/', scheme.size() + 2), pageURL.size()));
        if (found.starts_with("//"))
            return std::string(scheme) + found;
        if (found.starts_with('/'))
            return std::string(host) + found;
        if (found.find("://") == std::string::npos)
            return std::string(host) + "/" + found;
        return found;
    }
    return std::nullopt;
}

} // namespace VocabularyPronunciationAudioSource

} // namespace tessarune
