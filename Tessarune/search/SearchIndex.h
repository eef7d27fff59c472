#pragma once

#include "Tessarune/search/SearchQuery.h"
#include "TessaruneCore/UUID.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune {

/// The index cannot be used. A damaged one, or one of another version, must be rebuilt; one that is
/// temporarily unavailable (a full disk, another program that writes) is kept.
struct SearchIndexFailed : std::runtime_error {
    SearchIndexFailed(const std::string& what, bool isDamage)
        : std::runtime_error(what), isDamaged(isDamage) {}
    bool isDamaged;
};

/// The indexed texts of a recording, in the form of SearchTokens::joined.
struct IndexedTexts {
    UUID id;
    std::string stamp; ///< of the source files
    std::string source;
    std::string translation;
};

/// Seam: an index over the texts of all recordings, which can be rebuilt from them. One thread at a
/// time. Everything throws SearchIndexFailed.
class SearchIndex {
  public:
    virtual ~SearchIndex() = default;

    /// The indexed recordings, with their stamps.
    virtual std::map<UUID, std::string> stamps() = 0;
    /// Adds or replaces recordings: all of them, or none on failure.
    virtual void replace(const std::vector<IndexedTexts>& texts) = 0;
    /// Searches no longer find them; their words stay in the file until `eraseTraces` is done.
    virtual void remove(const std::vector<UUID>& ids) = 0;
    /// Erases a part of the remains of removed texts from the file, including those of an earlier
    /// run; false once nothing is left.
    virtual bool eraseTraces() = 0;

    /// The recordings that match, in no order.
    virtual std::vector<UUID> find(const SearchQuery& query) = 0;
};

} // namespace tessarune
