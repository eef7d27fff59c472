#include "Terminal/history/WordCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/history/RecordingChoice.h"
#include "Tessarune/vocabulary/VocabularyStore.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <exception>
#include <optional>
#include <unordered_set>
#include <utility>

namespace tessarune {

namespace {

constexpr std::size_t wordRowColumns = 80;
constexpr std::size_t countColumns = 6;
constexpr std::size_t formsColumns = 30;
constexpr int countLines = 0; ///< passed as the number of sentences, makes `stats` count lines

/// The user's marks on words, and the core words.
struct WordMarks {
    explicit WordMarks(const VocabularyStore& store)
        : mastered(store.masteredWords()->begin(), store.masteredWords()->end()),
          favorites(store.favoriteWords()->begin(), store.favoriteWords()->end()),
          core(store.coreWords()->begin(), store.coreWords()->end()) {}

    std::unordered_set<std::string> mastered;
    std::unordered_set<std::string> favorites;
    std::unordered_set<std::string> core;
};

nlohmann::ordered_json wordsJSON(const HistoryItem& item, const HistoryWordStats& stats) {
    return {{"type", "words"},
            {"id", item.id.text()},
            {"language", stats.languageCode},
            {"words", stats.tokenCount},
            {"differentWords", stats.uniqueTokenCount},
            {"lemmas", stats.vocabularyCount},
            {"sentences", stats.sentenceCount},
            {"wordsPerSentence", stats.averageTokensPerSentence},
            {"duration", stats.durationSeconds.value_or(0)}};
}

nlohmann::ordered_json wordJSON(const HistoryWordStats::VocabularyEntry& entry,
                                const std::string& gloss, const WordMarks& marks) {
    auto forms = nlohmann::ordered_json::object();
    for (const auto& form : entry.forms)
        forms[form.token] = form.count;
    return {{"type", "word"},
            {"rank", entry.rank},
            {"lemma", entry.lemma},
            {"count", entry.count},
            {"share", entry.share},
            {"forms", std::move(forms)},
            {"sentences", entry.sentenceIndices},
            {"meaning", gloss},
            {"mastered", marks.mastered.contains(entry.lemma)},
            {"favorite", marks.favorites.contains(entry.lemma)},
            {"core", marks.core.contains(entry.lemma)}};
}

/// "    12 +  think (thinking, thought)       judge or regard; …"
std::string wordRow(const HistoryWordStats::VocabularyEntry& entry, const std::string& gloss,
                    const WordMarks& marks) {
    const std::string count = std::to_string(entry.count);
    std::string row(countColumns - std::min(countColumns, count.size()), ' ');
    row += count;
    row += marks.mastered.contains(entry.lemma) ? " +" : "  ";
    row += marks.favorites.contains(entry.lemma) ? "* " : "  ";
    std::string others;
    for (const auto& form : entry.forms) {
        if (form.token != entry.lemma)
            others += (others.empty() ? "" : ", ") + form.token;
    }
    std::string word = entry.lemma + (others.empty() ? "" : " (" + others + ")");
    if (gloss.empty())
        return Text::fitted(row + word, wordRowColumns);
    row += Text::padded(Text::fitted(word, formsColumns), formsColumns) + "  ";
    return row + Text::fitted(gloss, wordRowColumns - std::min(wordRowColumns, Text::columns(row)));
}

void printWords(const HistoryWordStats& stats, const std::vector<std::string>& glosses,
                const WordMarks& marks) {
    for (std::size_t i = 0; i < stats.vocabularyEntries.size(); ++i)
        printText(wordRow(stats.vocabularyEntries[i], glosses[i], marks));
}

std::vector<std::string> lemmasOf(const HistoryWordStats& stats) {
    std::vector<std::string> lemmas;
    lemmas.reserve(stats.vocabularyEntries.size());
    for (const auto& entry : stats.vocabularyEntries)
        lemmas.push_back(entry.lemma);
    return lemmas;
}

/// The transcript, or an empty text if there is none. If the transcript is unreadable, prints the
/// reason and returns `nullopt`.
std::optional<std::string> transcriptOf(Program& program, const HistoryItem& item) {
    const auto path = program.catalog.transcriptURL(item.id);
    try {
        return program.files.exists(path) ? program.files.read(path) : std::string();
    } catch (const std::exception& error) {
        printProblem(error.what());
        return std::nullopt;
    }
}

} // namespace

Task<int> countWords(Program& program, const TerminalOptions& options, std::string id) {
    const auto chosen = chosenRecording(program, id);
    if (const int* status = std::get_if<int>(&chosen))
        co_return *status;
    const HistoryItem& item = std::get<HistoryItem>(chosen);
    const std::optional<std::string> text = transcriptOf(program, item);
    if (!text)
        co_return static_cast<int>(ExitStatus::ioError);

    const HistoryWordStatsService::Stats stats =
        co_await program.wordStats.stats(item.id, *text, countLines, item.durationSeconds);
    const bool isEnglish = stats->languageCode == "en";
    std::vector<std::string> lemmas = lemmasOf(*stats);
    std::vector<std::string> glosses(lemmas.size());
    if (isEnglish)
        glosses = co_await program.wordStats.glosses(std::move(lemmas));
    const VocabularyStore store(program.files, program.paths);
    const WordMarks marks(store);
    if (!options.quiet && !store.readingProblem().empty())
        printNotice(store.readingProblem());
    if (options.json) {
        printJSON(wordsJSON(item, *stats));
        for (std::size_t i = 0; i < glosses.size(); ++i)
            printJSON(wordJSON(stats->vocabularyEntries[i], glosses[i], marks));
        co_return static_cast<int>(ExitStatus::ok);
    }
    printWords(*stats, glosses, marks);
    if (!options.quiet)
        printNotice(localized(
            "Words: %lld, different words: %lld, dictionary forms: %lld, sentences: %lld",
            {std::to_string(stats->tokenCount), std::to_string(stats->uniqueTokenCount),
             std::to_string(stats->vocabularyCount), std::to_string(stats->sentenceCount)}));
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
