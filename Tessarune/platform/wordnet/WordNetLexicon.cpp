#include "Tessarune/platform/wordnet/WordNetLexicon.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/text/Text.h"

#include <wn.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <memory>
#include <string>
#include <unordered_map>

namespace tessarune {

namespace {

/// The library copies words into buffers of 256 bytes and checks no length.
constexpr std::size_t longestWord = 60;

struct LibraryPart {
    PartOfSpeech partOfSpeech;
    int number; ///< of the part of speech in the library
};
constexpr std::array libraryParts{
    LibraryPart{PartOfSpeech::noun, NOUN}, LibraryPart{PartOfSpeech::verb, VERB},
    LibraryPart{PartOfSpeech::adjective, ADJ}, LibraryPart{PartOfSpeech::adverb, ADV}};

/// A writable copy of a word, with "_" for blanks: the library modifies its argument.
class WordBuffer {
  public:
    explicit WordBuffer(std::string_view word) {
        std::ranges::copy(word, bytes_.begin());
        std::ranges::replace(bytes_, ' ', '_');
    }
    char* bytes() { return bytes_.data(); }

  private:
    std::array<char, WORDBUF> bytes_{};
};

using IndexEntry = std::unique_ptr<::Index, decltype(&free_index)>;
using Synonyms = std::unique_ptr<::Synset, decltype(&free_synset)>;

IndexEntry indexEntry(std::string_view lemma, int part) {
    return {index_lookup(WordBuffer(lemma).bytes(), part), &free_index};
}

/// The library and its files; a single object per process, used under its lock.
class WordNetLibrary {
  public:
    WordNetLibrary() {
        display_message = [](char* message) {
            TessaruneLog::app.notice([message] { return std::string(message); });
            return 0;
        };
        isOpen_ = wninit() == 0;
        if (isOpen_)
            readUses();
    }

    bool canLookUp(std::string_view word) const {
        return isOpen_ && !word.empty() && word.size() <= longestWord && Text::isASCII(word);
    }

    /// How often a lemma occurs in the texts in which WordNet counted word senses; 0 if unknown.
    int uses(const std::string& lemma, int part) const {
        const auto found = uses_.find(lemma + '%' + std::to_string(part));
        return found == uses_.end() ? 0 : found->second;
    }

    std::vector<WordReading> readings(std::string_view form) const {
        std::vector<WordReading> found;
        for (const auto& [partOfSpeech, part] : libraryParts) {
            const auto add = [&, partOfSpeech = partOfSpeech, part = part](std::string lemma) {
                const bool isKnown = std::ranges::any_of(found, [&](const WordReading& reading) {
                    return reading.partOfSpeech == partOfSpeech && reading.lemma == lemma;
                });
                const int count = uses(lemma, part);
                if (!isKnown)
                    found.push_back({partOfSpeech, std::move(lemma), count});
            };
            if (indexEntry(form, part))
                add(std::string(form));
            WordBuffer word(form);
            for (const char* lemma = morphstr(word.bytes(), part); lemma;
                 lemma = morphstr(nullptr, part))
                add(lemma);
        }
        return found;
    }

    std::vector<WordDefinition> definitions(std::string_view lemma) const {
        auto parts = libraryParts;
        std::ranges::stable_sort(parts, [&](const LibraryPart& a, const LibraryPart& b) {
            return uses(std::string(lemma), a.number) > uses(std::string(lemma), b.number);
        });
        std::vector<WordDefinition> found;
        for (const auto& [partOfSpeech, part] : parts) {
            const IndexEntry entry = indexEntry(lemma, part);
            for (int i = 0; entry && i < entry->off_cnt; ++i) {
                WordBuffer word(lemma);
                const Synonyms sense(
                    read_synset(part, static_cast<long>(entry->offset[i]), word.bytes()),
                    &free_synset);
                if (sense && sense->defn)
                    found.push_back(definition(partOfSpeech, sense->defn));
            }
        }
        return found;
    }

  private:
    /// Adds up the counts of each lemma's senses. A line consists of a sense ("lemma%kind:…::"),
    /// its number and its count.
    void readUses() {
        if (!cntlistfp)
            return;
        std::array<char, LINEBUF> line;
        std::rewind(cntlistfp);
        while (std::fgets(line.data(), static_cast<int>(line.size()), cntlistfp)) {
            std::string_view text(line.data());
            text = Text::trimmed(text);
            const auto key = text.find('%');
            const auto blank = text.rfind(' ');
            if (key == std::string_view::npos || blank == std::string_view::npos || blank < key)
                continue;
            // Satellite adjectives have a separate kind, 5; here they count as adjectives.
            const char kind = text[key + 1] == '5' ? '3' : text[key + 1];
            int count = 0;
            std::from_chars(text.data() + blank + 1, text.data() + text.size(), count);
            uses_[std::string(text.substr(0, key + 1)) + kind] += count;
        }
    }

    /// Parses a gloss: "(definition; "example"; "example")".
    static WordDefinition definition(PartOfSpeech partOfSpeech, std::string_view gloss) {
        if (gloss.starts_with('(') && gloss.ends_with(')'))
            gloss = gloss.substr(1, gloss.size() - 2);
        WordDefinition made{partOfSpeech, {}, {}};
        const auto firstExample = gloss.find("; \"");
        made.text = Text::trimmed(gloss.substr(0, firstExample));
        for (auto at = firstExample; at != std::string_view::npos;) {
            const std::size_t start = at + 3;
            at = gloss.find("; \"", start);
            const auto end = gloss.rfind('"', at);
            if (end != std::string_view::npos && end > start)
                made.examples.emplace_back(gloss.substr(start, end - start));
        }
        return made;
    }

    bool isOpen_ = false;
    std::unordered_map<std::string, int> uses_;
};

/// Asks the library under its lock. Returns an empty answer for words that it cannot handle.
template <typename Question>
auto askWordNet(std::string_view word, Question question) {
    static Mutex lock;
    const MutexLock guard(lock);
    static const WordNetLibrary library;
    using Answer = decltype(question(library));
    return library.canLookUp(word) ? question(library) : Answer();
}

} // namespace

std::vector<WordReading> WordNetLexicon::readings(std::string_view form) {
    return askWordNet(form, [&](const WordNetLibrary& library) { return library.readings(form); });
}

std::vector<WordDefinition> WordNetLexicon::definitions(std::string_view lemma) {
    return askWordNet(lemma,
                      [&](const WordNetLibrary& library) { return library.definitions(lemma); });
}

} // namespace tessarune
