#pragma once

#include "Tessarune/search/SearchQuery.h"
#include "TessaruneCore/UUID.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune {

/// The index cannot be used. A damaged one, or one of another version, has to be made anew; one
/// that is only not available now (a full disk, another program that writes) stays.
struct SearchIndexFailed : std::runtime_error {
    SearchIndexFailed(const std::string& what, bool isDamage)
        : std::runtime_error(what), isDamaged(isDamage) {}
    bool isDamaged;
};

/// What the index keeps of a recording: texts as SearchTokens::joined gives them.
struct IndexedTexts {
    UUID id;
    std::string stamp; ///< of the files that they are from
    std::string source;
    std::string translation;
};

/// Seam: an index over the texts of all recordings, made of them and replaceable by them. One
/// thread at a time. Everything throws SearchIndexFailed.
class SearchIndex {
  public:
    virtual ~SearchIndex() = default;

    /// The recordings that it holds, with their stamps.
    virtual std::map<UUID, std::string> stamps() = 0;
    /// Adds recordings or replaces what it held of them: all or, where it fails, none.
    virtual void replace(const std::vector<IndexedTexts>& texts) = 0;
    /// They are not found any more; their words stay in the file until `eraseTraces` is done.
    virtual void remove(const std::vector<UUID>& ids) = 0;
    /// Erases a part of what removed texts left in the file, also in an earlier run of the program;
    /// false once nothing is left.
    virtual bool eraseTraces() = 0;

    /// The recordings that match, in no order.
    virtual std::vector<UUID> find(const SearchQuery& query) = 0;
};

} // namespace tessarune
