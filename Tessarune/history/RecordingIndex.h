#pragma once

#include "Tessarune/audio/RecordingMetadata.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The content of "recordings.json": a JSON array of entries. It keeps unknown content: unknown
/// keys of an entry, the written form of an unchanged value, and elements that are not entries.
/// `sort` puts these elements last, and `salvaged` drops them.
///
/// A value, for one thread at a time.
class RecordingIndex {
  public:
    /// `nullopt` if the text is not a JSON array.
    static std::optional<RecordingIndex> decoded(std::string_view json);

    /// The entries that can still be found in a text that is no longer a JSON array, plus those in
    /// `entries` (one per string) that the text has lost. Takes time in proportion to the size of
    /// its input, whatever that contains.
    static RecordingIndex salvaged(std::string_view damaged,
                                   const std::vector<std::string>& entries = {});

    std::vector<RecordingMetadata> recordings() const;
    std::optional<RecordingMetadata> find(const UUID& id) const;

    /// The ids of all elements, even of those that are not entries.
    std::set<UUID> ids() const;
    /// The ids of elements that are not valid entries, unless another element is a valid entry with
    /// this id.
    std::set<UUID> damagedEntries() const;
    /// Whether there are elements without a readable id.
    bool hasNamelessElements() const;

    /// Replaces the entry of the same id, or adds one.
    void put(const RecordingMetadata& recording);
    void removeIf(const std::function<bool(const RecordingMetadata&)>& matches);

    /// Sorts the entries newest first; elements that are not entries go last.
    void sort();

    /// Pretty-printed, with sorted keys.
    std::string encoded() const;
    /// One entry as written in the index; `nullopt` if the id is unknown.
    std::optional<std::string> encodedEntry(const UUID& id) const;

  private:
    struct Element {
        std::shared_ptr<const nlohmann::json> source;
        std::optional<RecordingMetadata> recording; ///< `nullopt` if the source is not an entry
    };

    std::vector<Element> elements_;
};

} // namespace tessarune
