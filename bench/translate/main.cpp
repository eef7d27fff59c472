// Measures what the program adds to the cost of the translation engine: the same sentences pass
// through the engine alone, through the offline translation service, through the session's
// translator, and as rows that a session commits. These four ways take turns at each sentence, and
// the way that begins changes with each round, so that the load of the computer and the caches
// affect all ways equally. Each sentence contributes its shortest wall-clock time and its median
// processor time.
//
// Usage: bench-translate [ROUNDS]

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/translation-engine/OfflineTranslationService.h"
#include "Tessarune/translation/AppleTranslator.h"
#include "bench/translate/CommittedRows.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

using namespace tessarune;

namespace {

double clockNow(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Wall-clock time and the processor time of all threads, in seconds.
struct Seconds {
    double wall = clockNow(CLOCK_MONOTONIC);
    double processor = clockNow(CLOCK_PROCESS_CPUTIME_ID);

    Seconds since() const {
        const Seconds now;
        Seconds passed;
        passed.wall = now.wall - wall;
        passed.processor = now.processor - processor;
        return passed;
    }
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

double residentMegabytes() {
    std::ifstream statm("/proc/self/statm");
    double pages = 0;
    statm >> pages >> pages;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// The sentences of a talk, in the form of captions.
std::vector<std::string> sentences() {
    std::ifstream file(TESSARUNE_BENCH_SENTENCES);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

std::size_t wordsOf(const std::string& text) {
    std::istringstream words(text);
    return static_cast<std::size_t>(std::distance(std::istream_iterator<std::string>(words), {}));
}

/// The times of one of the ways, with a list for each sentence.
struct WayTimes {
    explicit WayTimes(std::size_t sentenceCount) : wall(sentenceCount), processor(sentenceCount) {}

    void note(std::size_t sentence, Seconds passed) {
        wall[sentence].push_back(passed.wall);
        processor[sentence].push_back(passed.processor);
    }
    double wallSeconds() const {
        double sum = 0;
        for (const auto& times : wall)
            sum += *std::min_element(times.begin(), times.end());
        return sum;
    }
    double processorSeconds() const {
        double sum = 0;
        for (const auto& times : processor)
            sum += median(times);
        return sum;
    }

    std::vector<std::vector<double>> wall;
    std::vector<std::vector<double>> processor;
};

struct Bench {
    LoopHost host;
    PosixFileSystem files;
    ModelStore store{files, "/nonexistent", {TESSARUNE_MODELS}};
    ModelInstaller installer{host, store};
    TranslationModelInventory inventory{host, store, installer};
    std::shared_ptr<OfflineTranslationService> service =
        std::make_shared<OfflineTranslationService>(host, store, inventory);
    std::vector<std::string> texts = sentences();
    int rounds = 21;

    struct Ways {
        std::unique_ptr<TranslationEngine> engine;
        std::shared_ptr<TranslationSession> session;
        std::shared_ptr<Translator> translator;
        std::shared_ptr<CommittedRows> rows;
    };

    /// The translation of a text by way 0 (the engine alone), 1 (the service), 2 (the translator)
    /// or 3 (committed rows).
    static Task<std::string> translated(const Ways* ways, std::size_t way, std::string text) {
        if (way == 0)
            co_return ways->engine->translate(text);
        if (way == 2) {
            Task<std::string> asking = ways->translator->translate(text, "en", "pt-BR");
            const std::string answer = co_await asking;
            co_return answer;
        }
        if (way == 3) {
            Task<std::string> committing = ways->rows->commit(text);
            const std::string shown = co_await committing;
            co_return shown;
        }
        Task<TranslationSession::Response> serving = ways->session->translate(text);
        const TranslationSession::Response response = co_await serving;
        co_return response.targetText;
    }

    Task<void> measure(Ways ways) {
        std::vector<WayTimes> times(4, WayTimes(texts.size()));
        std::size_t differing = 0;
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < texts.size(); ++i) {
                const std::string expected = ways.engine->translate(texts[i]);
                for (std::size_t turn = 0; turn < times.size(); ++turn) {
                    const std::size_t way = (turn + static_cast<std::size_t>(round)) % times.size();
                    const Seconds start;
                    Task<std::string> translating = translated(&ways, way, texts[i]);
                    const std::string translation = co_await translating;
                    times[way].note(i, start.since());
                    differing += translation != expected ? 1 : 0;
                }
            }
        }
        std::size_t words = 0;
        for (const std::string& text : texts)
            words += wordsOf(text);
        report("engine alone", times[0], times[0], words);
        report("service", times[1], times[0], words);
        report("translator", times[2], times[0], words);
        report("commit to row", times[3], times[0], words);
        reportStages(ways.rows->stages());
        if (differing > 0)
            std::printf("%zu translations differ\n", differing);
        host.quit();
    }

    void report(const char* name, const WayTimes& way, const WayTimes& alone,
                std::size_t words) const {
        std::printf(
            "%-13s %7.2f ms a sentence, %.3f of the engine alone; processor %7.2f ms, %.3f; "
            "%.0f words a second of one core\n",
            name, 1e3 * way.wallSeconds() / static_cast<double>(texts.size()),
            way.wallSeconds() / alone.wallSeconds(),
            1e3 * way.processorSeconds() / static_cast<double>(texts.size()),
            way.processorSeconds() / alone.processorSeconds(),
            static_cast<double>(words) / way.processorSeconds());
    }

    static void reportStages(const CommittedRows::Stages& stages) {
        std::printf("of which, medians: queue %.3f ms, availability %.3f ms, engine %.3f ms, "
                    "apply %.3f ms\n",
                    1e3 * median(stages.queue), 1e3 * median(stages.availability),
                    1e3 * median(stages.engine), 1e3 * median(stages.apply));
    }

    /// Loads the pair, uses it and frees it.
    void measureMemory() {
        const double before = residentMegabytes();
        auto session = service->session("en-US", "pt-BR", Executor::main(host));
        spawn(Executor::main(host), onePass(session));
        host.run();
        const double loaded = residentMegabytes();
        session.reset();
        std::printf("memory        %.1f MB before, %.1f MB with the pair loaded, %.1f MB after\n",
                    before, loaded, residentMegabytes());
    }

    /// Loads the pair and translates each sentence once.
    Task<void> onePass(std::shared_ptr<TranslationSession> session) {
        const Seconds start;
        Task<bool> loading = session->isReady();
        const bool isReady = co_await loading;
        if (!isReady) {
            std::fprintf(stderr, "bench-translate: no model; run scripts/setup\n");
            std::exit(1);
        }
        std::printf("load          %.1f ms, with the check of the files\n",
                    1e3 * start.since().wall);
        for (const std::string& text : texts) {
            Task<TranslationSession::Response> translating = session->translate(text);
            const TranslationSession::Response response = co_await translating;
        }
        host.quit();
    }
};

} // namespace

int main(int argc, char** argv) {
    Bench bench;
    if (argc > 1)
        bench.rounds = std::max(std::atoi(argv[1]), 1);
    for (int i = 0; i < 2; ++i) // the second time shows what the first use left behind
        bench.measureMemory();
    const std::optional<StoredModel> model = bench.store.find(ModelKind::translation, "en-pt");
    auto engine = std::make_unique<TranslationEngine>(translationFilesOf(*model));
    const Executor main = Executor::main(bench.host);
    spawn(main, bench.measure({std::move(engine), bench.service->session("en-US", "pt-BR", main),
                               std::make_shared<AppleTranslator>(bench.host, bench.service, main),
                               std::make_shared<CommittedRows>(bench.host, bench.service)}));
    return bench.host.run();
}
