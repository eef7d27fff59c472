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

/// The content of "recordings.json": a JSON array of entries. It keeps what it does not understand:
/// keys of an entry that it does not know, the written form of a value that did not change, and
/// whole elements that are no entries, which go behind the entries.
///
/// A value, for one thread at a time.
class RecordingIndex {
  public:
    /// Nothing if the text is no JSON array.
    static std::optional<RecordingIndex> decoded(std::string_view json);

    /// The entries that can still be found in a text that is no JSON array any more, and those that
    /// `entries` hold one each and the text has lost. Takes time in proportion to what it is given,
    /// whatever that holds.
    static RecordingIndex salvaged(std::string_view damaged,
                                   const std::vector<std::string>& entries = {});

    std::vector<RecordingMetadata> recordings() const;
    std::optional<RecordingMetadata> find(const UUID& id) const;

    /// The identities of all elements, also of those that are no entries.
    std::set<UUID> ids() const;
    /// Whether there are elements of which not even the identity can be read.
    bool hasNamelessElements() const;

    /// Replaces the entry of the same id, or adds one.
    void put(const RecordingMetadata& recording);
    bool removeIf(const std::function<bool(const RecordingMetadata&)>& matches);

    /// Newest first; the order among equals stays.
    void sort();

    /// Pretty-printed, with sorted keys.
    std::string encoded() const;
    /// One entry as it stands in the index; nothing if there is none of that id.
    std::optional<std::string> encodedEntry(const UUID& id) const;

  private:
    struct Element {
        std::shared_ptr<const nlohmann::json> source;
        std::optional<RecordingMetadata> recording; ///< absent if the source is no entry
    };

    std::vector<Element> elements_;
};

} // namespace tessarune
