#include "Tessarune/vocabulary/HistoryWordStatsMemoryCache.h"

#include <cmath>
#include <functional>
#include <utility>

namespace tessarune {

HistoryWordStatsCacheKey HistoryWordStatsCacheKey::of(std::optional<UUID> recordingID,
                                                      std::string_view sourceText,
                                                      int sentenceCount,
                                                      std::optional<double> durationSeconds) {
    constexpr double millisecondsPerSecond = 1000;
    return {recordingID, std::hash<std::string_view>()(sourceText), sourceText.size(),
            sentenceCount, std::llround(durationSeconds.value_or(0) * millisecondsPerSecond)};
}

HistoryWordStatsMemoryCache::Value
HistoryWordStatsMemoryCache::value(const HistoryWordStatsCacheKey& key) {
    const auto found = values_.find(key);
    if (found == values_.end())
        return nullptr;
    makeNewest(key);
    return found->second;
}

void HistoryWordStatsMemoryCache::insert(const HistoryWordStatsCacheKey& key, Value value) {
    values_[key] = std::move(value);
    makeNewest(key);
    if (recency_.size() > limit) {
        values_.erase(recency_.front());
        recency_.pop_front();
    }
}

void HistoryWordStatsMemoryCache::makeNewest(const HistoryWordStatsCacheKey& key) {
    recency_.remove(key);
    recency_.push_back(key);
}

} // namespace tessarune
