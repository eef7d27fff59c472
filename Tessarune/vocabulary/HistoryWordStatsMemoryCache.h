#pragma once

#include "Tessarune/vocabulary/HistoryWordStats.h"
#include "TessaruneCore/UUID.h"

#include <compare>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

namespace tessarune {

/// Identifies the inputs of statistics. The hash and the length in bytes identify the text.
struct HistoryWordStatsCacheKey {
    std::optional<UUID> recordingID;
    std::uint64_t sourceHash = 0;
    std::size_t sourceLength = 0;
    int sentenceCount = 0;
    std::int64_t durationMillis = 0;

    static HistoryWordStatsCacheKey of(std::optional<UUID> recordingID, std::string_view sourceText,
                                       int sentenceCount, std::optional<double> durationSeconds);

    auto operator<=>(const HistoryWordStatsCacheKey&) const = default;
};

/// A cache of the statistics of the recordings viewed most recently. One thread.
class HistoryWordStatsMemoryCache {
  public:
    static constexpr std::size_t limit = 12;

    using Value = std::shared_ptr<const HistoryWordStats>;

    /// Null if nothing is cached for `key`. A hit makes the entry the most recently used one.
    Value value(const HistoryWordStatsCacheKey& key);
    /// Drops the least recently used entry when there are too many.
    void insert(const HistoryWordStatsCacheKey& key, Value value);

  private:
    void makeNewest(const HistoryWordStatsCacheKey& key);

    std::map<HistoryWordStatsCacheKey, Value> values_;
    std::list<HistoryWordStatsCacheKey> recency_; // oldest first
};

} // namespace tessarune
