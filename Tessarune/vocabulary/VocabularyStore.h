#pragma once

#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessarunePaths.h"
#include "TessaruneCore/observation/Published.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The words that the user knows or wants to keep, in "Vocabulary.json". Main queue.
///
/// Words are trimmed and in lower case. Each change is saved at once; if that fails, the failure is
/// logged and a new word stays in memory. A change is made to the present content of the file,
/// which another program may have replaced. If the file cannot be read or is invalid, the words in
/// memory stay, and the next save moves the file aside to "Vocabulary.json.unreadable" or a free
/// name like it. If there is no file at the start, the favourites are read from the older file
/// "HistoryWordFavorites.json".
class VocabularyStore {
  public:
    static constexpr std::string_view fileName = "Vocabulary.json";

    /// Loads the file. `files` must outlive this.
    VocabularyStore(FileSystem& files, const TessarunePaths& paths);

    using Words = std::vector<std::string>;

    /// Reads the file again if its content is not what this object last read or wrote.
    void refresh();
    /// Says for the user that the file was damaged when it was last read; empty if it was good, or
    /// is gone.
    std::string readingProblem() const;

    // Newest first.
    const Published<Words>& masteredWords() const { return masteredWords_; }
    const Published<Words>& favoriteWords() const { return favoriteWords_; }
    /// The core words, the most frequent first.
    const Published<Words>& coreWords() const { return coreWords_; }
    /// Why the last save failed; empty if it succeeded.
    const Published<std::string>& problem() const { return problem_; }

    bool isMastered(std::string_view word) const;
    bool isFavorite(std::string_view word) const;
    void markMastered(std::string_view word);
    void removeMastered(std::string_view word);
    void addFavorite(std::string_view word);
    void removeFavorite(std::string_view word);

    /// How many of the core words are mastered.
    std::size_t masteredCoreWords() const;

  private:
    void load();
    void save();
    std::filesystem::path freeNameAside();
    void add(Published<Words>& words, std::string_view word);
    void remove(Published<Words>& words, std::string_view word);

    FileSystem& files_;
    std::filesystem::path fileURL_;
    std::filesystem::path legacyFavoritesURL_;
    bool fileIsUnreadable_ = false;
    std::optional<std::size_t> seen_; ///< hash of the content that was last read or written
    Published<Words> masteredWords_;
    Published<Words> favoriteWords_;
    Published<Words> coreWords_;
    Published<std::string> problem_;
};

} // namespace tessarune
