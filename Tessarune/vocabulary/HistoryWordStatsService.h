#pragma once

#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/vocabulary/HistoryWordStats.h"
#include "Tessarune/vocabulary/HistoryWordStatsMemoryCache.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/host/Task.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Provides the counts, lemmas and definitions of the words in recordings. Main queue; the work is
/// done on the queue "Tessarune.HistoryWordStats".
class HistoryWordStatsService {
  public:
    /// The host and the logger must outlive this and its tasks.
    HistoryWordStatsService(Host& host, TessaruneFileLogger& logger,
                            std::shared_ptr<Lexicon> lexicon, DominantLanguage dominantLanguage);

    using Stats = HistoryWordStatsMemoryCache::Value;

    /// The result of `HistoryWordStats::build`, from the cache if possible. The task may outlive
    /// the service.
    Task<Stats> stats(std::optional<UUID> recordingID, std::string sourceText, int sentenceCount,
                      std::optional<double> durationSeconds);

    /// The senses of a word, from the dictionary on this computer.
    Task<std::vector<WordDefinition>> definitions(std::string word);
    /// The first sense of each word; empty for function words and for words that the dictionary
    /// does not have.
    Task<std::vector<std::string>> glosses(std::vector<std::string> words);

  private:
    Executor worker();

    Host& host_;
    TessaruneFileLogger& logger_;
    std::shared_ptr<Lexicon> lexicon_;
    std::shared_ptr<const DominantLanguage> dominantLanguage_;
    std::shared_ptr<HistoryWordStatsMemoryCache> cache_;
    std::shared_ptr<SerialQueue> queue_; // created on first use
};

} // namespace tessarune
