#pragma once

#include "Tessarune/search/SearchQuery.h"
#include "TessaruneCore/UUID.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune {

/// Thrown if the index cannot be used. If `isDamaged`, it is damaged or of another version and must
/// be rebuilt. Otherwise it is kept, because the failure may be temporary (a full disk, another
/// program that writes).
struct SearchIndexFailed : std::runtime_error {
    SearchIndexFailed(const std::string& what, bool isDamage)
        : std::runtime_error(what), isDamaged(isDamage) {}
    bool isDamaged;
};

/// The indexed texts of a recording, in the form that `SearchTokens::joined` returns.
struct IndexedTexts {
    UUID id;
    std::string stamp; ///< of the recording's sidecars
    std::string source;
    std::string translation;
};

/// Interface: an index of the texts of all recordings, which can be rebuilt from the transcripts.
/// One thread at a time. All functions may throw `SearchIndexFailed`.
class SearchIndex {
  public:
    virtual ~SearchIndex() = default;

    /// The indexed recordings, with their stamps.
    virtual std::map<UUID, std::string> stamps() = 0;
    /// Adds or replaces recordings: all of them, or none on failure.
    virtual void replace(const std::vector<IndexedTexts>& texts) = 0;
    /// Removes recordings from the results of searches. Their words remain in the file until
    /// `eraseTraces` returns false.
    virtual void remove(const std::vector<UUID>& ids) = 0;
    /// Erases some of the removed words from the file, including those of an earlier run; false
    /// once none are left.
    virtual bool eraseTraces() = 0;

    /// The recordings that match, in any order.
    virtual std::vector<UUID> find(const SearchQuery& query) = 0;
};

} // namespace tessarune
