#include "Tessarune/vocabulary/VocabularyStore.h"

#include "Tessarune/vocabulary/CoreWords.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <unordered_set>
#include <utility>

namespace tessarune {

namespace {

using VocabularyWords = VocabularyStore::Words;

std::string normalizedWord(std::string_view word) {
    return Text::lowercased(Text::trimmed(word));
}

/// Normalises the words; drops empty ones and duplicates. The first occurrence keeps its place.
VocabularyWords normalizedWords(const VocabularyWords& words) {
    VocabularyWords kept;
    std::unordered_set<std::string> seen;
    for (const auto& word : words) {
        std::string normalized = normalizedWord(word);
        if (!normalized.empty() && seen.insert(normalized).second)
            kept.push_back(std::move(normalized));
    }
    return kept;
}

bool contains(const VocabularyWords& words, std::string_view word) {
    return std::ranges::find(words, normalizedWord(word)) != words.end();
}

void logFailedLoad(const std::exception& error) {
    const std::string text = error.what();
    TessaruneLog::storage.notice([&] { return "Vocabulary load failed: " + text; });
}

/// Reads the texts of an array; false if the member is missing or not an array.
bool readWords(const JSON::Value& object, const char* key, VocabularyWords& words) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    if (found == object.end() || !found->is_array())
        return false;
    words.clear();
    for (const auto& element : *found) {
        if (element.is_string())
            words.push_back(element.get<std::string>());
    }
    return true;
}

} // namespace

VocabularyStore::VocabularyStore(FileSystem& files, const TessarunePaths& paths)
    : files_(files),
      fileURL_(paths.appSupportBase() / fileName),
      legacyFavoritesURL_(paths.appSupportBase() / "HistoryWordFavorites.json"),
      coreWords_(loadCoreWords()) {
    load();
}

void VocabularyStore::load() {
    if (files_.exists(fileURL_))
        return refresh();
    VocabularyWords favorites;
    try {
        if (!files_.exists(legacyFavoritesURL_) ||
            !readWords(JSON::parse(files_.read(legacyFavoritesURL_)), "words", favorites))
            return;
    } catch (const std::exception& error) {
        fileIsUnreadable_ = true;
        logFailedLoad(error);
        return;
    }
    favoriteWords_ = normalizedWords(favorites);
    save();
}

void VocabularyStore::refresh() {
    if (!files_.exists(fileURL_))
        return; // the next save writes it again
    VocabularyWords mastered;
    VocabularyWords favorites;
    try {
        const std::string text = files_.read(fileURL_);
        const std::size_t now = std::hash<std::string>()(text);
        if (std::exchange(seen_, now) == now)
            return;
        const JSON::Value stored = JSON::parse(text);
        const bool hasMastered = readWords(stored, "masteredWords", mastered);
        const bool hasFavorites = readWords(stored, "favoriteWords", favorites);
        fileIsUnreadable_ = !hasMastered || !hasFavorites;
    } catch (const std::exception& error) {
        fileIsUnreadable_ = true;
        seen_.reset();
        logFailedLoad(error);
    }
    // The words in memory are kept if the file is damaged, or lacks some because a save failed.
    if (fileIsUnreadable_ || !problem_->empty()) {
        mastered.insert(mastered.begin(), masteredWords_->begin(), masteredWords_->end());
        favorites.insert(favorites.begin(), favoriteWords_->begin(), favoriteWords_->end());
    }
    masteredWords_ = normalizedWords(mastered);
    favoriteWords_ = normalizedWords(favorites);
}

std::string VocabularyStore::readingProblem() const {
    if (!fileIsUnreadable_ || !files_.exists(fileURL_))
        return {};
    return localized(
        "The list of your words (%@) is damaged. When you mark the next word, the file "
        "is kept under another name.",
        {fileURL_.string()});
}

/// A free name for the unreadable file that is moved aside.
std::filesystem::path VocabularyStore::freeNameAside() {
    const std::string first = fileURL_.string() + ".unreadable";
    std::string name = first;
    for (int i = 2; files_.exists(name); ++i)
        name = first + "-" + std::to_string(i);
    return name;
}

void VocabularyStore::save() {
    try {
        files_.createDirectories(fileURL_.parent_path());
        const JSON::Value object{{"masteredWords", *masteredWords_},
                                 {"favoriteWords", *favoriteWords_}};
        const std::string text = JSON::pretty(object).value_or("{}");
        if (fileIsUnreadable_) {
            const std::filesystem::path next = fileURL_.string() + ".next";
            files_.writeAtomically(next, text);
            if (files_.exists(fileURL_))
                files_.rename(fileURL_, freeNameAside());
            files_.rename(next, fileURL_);
            fileIsUnreadable_ = false;
        } else {
            files_.writeAtomically(fileURL_, text);
        }
        seen_ = std::hash<std::string>()(text);
        problem_ = std::string();
    } catch (const std::exception& error) {
        problem_ = std::string(error.what());
        TessaruneLog::storage.fault(
            [&] { return std::string("Vocabulary save failed: ") + error.what(); });
    }
}

bool VocabularyStore::isMastered(std::string_view word) const {
    return contains(*masteredWords_, word);
}

bool VocabularyStore::isFavorite(std::string_view word) const {
    return contains(*favoriteWords_, word);
}

void VocabularyStore::markMastered(std::string_view word) {
    add(masteredWords_, word);
}

void VocabularyStore::removeMastered(std::string_view word) {
    remove(masteredWords_, word);
}

void VocabularyStore::addFavorite(std::string_view word) {
    add(favoriteWords_, word);
}

void VocabularyStore::removeFavorite(std::string_view word) {
    remove(favoriteWords_, word);
}

void VocabularyStore::add(Published<Words>& words, std::string_view word) {
    std::string normalized = normalizedWord(word); // observers may replace the caller's text
    refresh();
    if (normalized.empty() || contains(*words, normalized))
        return;
    words.mutate([&](Words& list) { list.insert(list.begin(), std::move(normalized)); });
    save();
}

void VocabularyStore::remove(Published<Words>& words, std::string_view word) {
    const std::string normalized = normalizedWord(word); // observers may replace the caller's text
    refresh();
    if (!contains(*words, normalized))
        return;
    words.mutate([&](Words& list) { std::erase(list, normalized); });
    save();
}

std::size_t VocabularyStore::masteredCoreWords() const {
    const std::unordered_set<std::string_view> mastered(masteredWords_->begin(),
                                                        masteredWords_->end());
    return static_cast<std::size_t>(std::ranges::count_if(
        *coreWords_, [&](const std::string& word) { return mastered.contains(word); }));
}

} // namespace tessarune
