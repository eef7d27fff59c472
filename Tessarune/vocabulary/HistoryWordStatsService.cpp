#include "Tessarune/vocabulary/HistoryWordStatsService.h"

#include "Tessarune/vocabulary/LemmaExceptions.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

HistoryWordStatsService::HistoryWordStatsService(Host& host, TessaruneFileLogger& logger,
                                                 std::shared_ptr<Lexicon> lexicon,
                                                 DominantLanguage dominantLanguage)
    : host_(host),
      logger_(logger),
      lexicon_(std::move(lexicon)),
      dominantLanguage_(std::make_shared<const DominantLanguage>(std::move(dominantLanguage))),
      cache_(std::make_shared<HistoryWordStatsMemoryCache>()) {}

Executor HistoryWordStatsService::worker() {
    if (!queue_)
        queue_ = host_.serialQueue("Tessarune.HistoryWordStats", QueuePriority::utility);
    return Executor::queue(host_, queue_);
}

Task<HistoryWordStatsService::Stats>
HistoryWordStatsService::stats(std::optional<UUID> recordingID, std::string sourceText,
                               int sentenceCount, std::optional<double> durationSeconds) {
    // The task may outlive the service; it uses only copies and objects that stay valid.
    Host& host = host_;
    TessaruneFileLogger& logger = logger_;
    const auto cache = cache_;
    const auto lexicon = lexicon_;
    const auto dominantLanguage = dominantLanguage_;
    const Executor queue = worker();

    const auto key =
        HistoryWordStatsCacheKey::of(recordingID, sourceText, sentenceCount, durationSeconds);
    LogFields fields;
    fields.add("recordingID", recordingID ? recordingID->text() : std::string());
    fields.add("sourceLength", static_cast<std::int64_t>(key.sourceLength));
    if (Stats known = cache->value(key)) {
        logger.event("history.detail.wordStatsCacheHit", fields);
        co_return known;
    }
    const double startedAt = host.now();
    Stats built = co_await runOn(queue, [&] {
        return std::make_shared<const HistoryWordStats>(HistoryWordStats::build(
            sourceText, sentenceCount, durationSeconds, *lexicon, *dominantLanguage));
    });
    cache->insert(key, built);
    constexpr double millisecondsPerSecond = 1000;
    fields.add("elapsedMS",
               static_cast<std::int64_t>((host.now() - startedAt) * millisecondsPerSecond));
    fields.add("tokenCount", std::int64_t{built->tokenCount});
    fields.add("vocabularyCount", std::int64_t{built->vocabularyCount});
    logger.event("history.detail.wordStatsBuilt", fields);
    co_return built;
}

Task<std::vector<WordDefinition>> HistoryWordStatsService::definitions(std::string word) {
    const auto lexicon = lexicon_;
    const Executor queue = worker();
    co_return co_await runOn(
        queue, [&] { return lexicon->definitions(Text::lowercased(Text::trimmed(word))); });
}

Task<std::vector<std::string>> HistoryWordStatsService::glosses(std::vector<std::string> words) {
    const auto lexicon = lexicon_;
    const Executor queue = worker();
    co_return co_await runOn(queue, [&] {
        std::vector<std::string> found;
        found.reserve(words.size());
        for (const auto& word : words) {
            const auto senses = LemmaExceptions::isFunctionWord(word)
                                    ? std::vector<WordDefinition>()
                                    : lexicon->definitions(word);
            found.push_back(senses.empty() ? std::string() : senses.front().text);
        }
        return found;
    });
}

} // namespace tessarune
