// bench-words FOLDER [RECORDINGS [WORDS]]: measures the search over RECORDINGS transcripts of WORDS
// words each, and the word statistics of eight hours of speech. The first run fills the folder,
// later ones reuse it. See README.md.

#include "Tessarune/history/UsageStatistics.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/language-detector/DetectedLanguage.h"
#include "Tessarune/platform/sqlite/SQLiteSearchIndex.h"
#include "Tessarune/platform/wordnet/WordNetLexicon.h"
#include "Tessarune/search/SearchIndexKeeper.h"
#include "Tessarune/vocabulary/HistoryWordStats.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "bench/support/CPUClock.h"
#include "bench/support/Statistics.h"
#include "bench/words/MadeUpSpeech.h"

#include <sysexits.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace tessarune::bench {

namespace {

constexpr int rounds = 7;

struct Times {
    double wall = 0;
    double processor = 0;
};

Times measured(const std::function<void()>& work) {
    const auto began = std::chrono::steady_clock::now();
    const double processor = CPUClock::process();
    work();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count(),
            CPUClock::process() - processor};
}

void print(const char* what, const Times& times) {
    std::printf("%-28s %9.1f ms, processor %9.1f ms\n", what, times.wall * 1000,
                times.processor * 1000);
}

void fill(const TessarunePaths& paths, PosixFileSystem& files, std::size_t recordings,
          std::size_t words) {
    if (files.exists(paths.transcripts()))
        return;
    files.createDirectories(paths.transcripts());
    MadeUpSpeech speech(1);
    const auto makeID = countingUUIDSource();
    for (std::size_t i = 0; i < recordings; ++i) {
        const std::string name = (paths.transcripts() / makeID().text()).string();
        const std::string text = speech.transcript(words);
        // Not written atomically: ten thousand atomic writes would take minutes.
        for (const auto& [suffix, content] :
             {std::pair(".txt", text), std::pair(".bilingual.txt", speech.bilingual(text))}) {
            std::FILE* file = std::fopen((name + suffix).c_str(), "w");
            std::fwrite(content.data(), 1, content.size(), file);
            std::fclose(file);
        }
    }
}

void search(SearchIndexKeeper& keeper, const std::string& text) {
    const SearchQuery query = SearchQuery::parse(text);
    std::vector<double> walls;
    std::size_t found = 0;
    for (int round = 0; round < rounds; ++round)
        walls.push_back(measured([&] { found = keeper.find(query).size(); }).wall * 1000);
    std::printf("  %-24s %6zu found  %7.1f ms, at most %7.1f ms\n", text.c_str(), found,
                Statistics::median(walls), Statistics::percentile(walls, 1));
}

int run(const std::filesystem::path& folder, std::size_t recordings, std::size_t words) {
    SimulatedHost host(1000);
    PosixFileSystem files;
    const TessarunePaths paths{folder};
    TessaruneFileLogger logger(host, files, paths);
    NotificationCenter notifications;
    RecordingCatalog catalog(host, files, paths, logger, notifications);
    fill(paths, files, recordings, words);

    SearchIndexKeeper keeper(files, catalog, logger, openSQLiteSearchIndex);
    print("first check", measured([&] { keeper.check(); }));
    std::printf("recordings to read: %zu\n", keeper.state().all);
    double longestStep = 0;
    print("index made", measured([&] {
              for (bool isMore = true; isMore;)
                  longestStep =
                      std::max(longestStep, measured([&] { isMore = keeper.step(); }).wall);
          }));
    std::printf("longest step %.1f ms\n", longestStep * 1000);
    print("check, nothing changed", measured([&] { keeper.check(); }));
    std::printf("index %.1f MB\n",
                static_cast<double>(files.size(SearchIndexKeeper::indexPath(paths))) / 1e6);
    for (const char* text : {"th", "the", "go", "gov", "govern", "government ", "government be",
                             "the of and", "\"of the\"", "be", "zzz"})
        search(keeper, text);
    for (const std::size_t characters : {1U, 2U, 3U})
        search(keeper, MadeUpSpeech(1).commonCharacters(characters));

    constexpr std::size_t wordsAMinute = 150;
    constexpr std::size_t wordsOfEightHours = 8 * 60 * wordsAMinute;
    const std::string speech = MadeUpSpeech(2).transcript(wordsOfEightHours);
    WordNetLexicon lexicon;
    for (const char* what : {"words of 8 h, cold", "words of 8 h, again"}) {
        HistoryWordStats stats;
        print(what, measured([&] {
                  stats = HistoryWordStats::build(speech, 0, {}, lexicon, detectedLanguage);
              }));
        std::printf("  %d words, %d lemmas\n", stats.tokenCount, stats.vocabularyCount);
    }
    return 0;
}

} // namespace

} // namespace tessarune::bench

int main(int count, char** words) {
    if (count < 2) {
        std::fprintf(stderr, "bench-words FOLDER [RECORDINGS [WORDS]]\n");
        return EX_USAGE;
    }
    const auto number = [&](int place, std::size_t standard) {
        return count > place ? static_cast<std::size_t>(std::atoll(words[place])) : standard;
    };
    return tessarune::bench::run(words[1], number(2, 10'000), number(3, 1'500));
}
