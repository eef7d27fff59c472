#include "Tessarune/display/LiveCaptionDisplayCache.h"
#include "Tessarune/display/LiveCaptionDisplayStore.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "bench/support/Statistics.h"

#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <unordered_set>
#include <vector>

/// Measures the time from a change of the captions to the publication of its frame, in sessions of
/// different lengths, which take turns in one run. The result is the ratio of the time in the
/// longest session to that in the shortest.

namespace tessarune {
namespace {

constexpr int rounds = 60;
/// The first changes of each round are not measured: the caches still have the data of another
/// session.
constexpr std::size_t warmUps = 8;
constexpr std::size_t changesEachRound = 40;
const std::string sentence = "It was the best of times, it was the worst of times, it was the age.";

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// A session with translated rows, and a view that keeps the last frame.
class Captions {
  public:
    explicit Captions(std::size_t rows) : rows_(rows) {
        partial_.id = newID_();
        store_.frame.onDidChange([this](const auto& frame) { shown_ = frame; });
        reset();
    }

    /// Restores the number of committed rows at which changes are measured.
    void reset() {
        committed_.resize(std::min(committed_.size(), rows_));
        while (committed_.size() < rows_) {
            commit();
            translate(committed_.size() - 1);
        }
        update(true);
    }
    void speak() {
        partial_.sourceText = sentence.substr(0, 40 + ++spoken_ % 20);
        ++partial_.revision;
    }
    void commit() {
        CaptionSegment row;
        row.id = newID_();
        row.sourceText = sentence;
        row.state = CaptionSegmentState::final;
        committed_.push_back(std::move(row));
    }
    LiveCaptionDisplayTranslationPatch translate(std::size_t row) {
        CaptionSegment& segment = committed_[row];
        TranslationSegmentMutator::applySuccess(newID_(), {segment.id}, segment.id, sentence,
                                                std::span(&segment, 1));
        return {*segment.translationUnitID, {segment.id}, segment.id, sentence};
    }
    void update(bool force = false, const LiveCaptionDisplayTranslationPatch* patch = nullptr) {
        cache_.update({committed_, {}, {}, partial_, cleared_}, force, patch);
        store_.update(cache_.frame());
    }
    std::size_t size() const { return committed_.size(); }

  private:
    const std::size_t rows_;
    std::vector<CaptionSegment> committed_;
    CaptionSegment partial_;
    std::unordered_set<UUID> cleared_;
    UUIDSource newID_ = countingUUIDSource();
    LiveCaptionDisplayCache cache_{seconds};
    LiveCaptionDisplayStore store_{seconds};
    LiveCaptionDisplayFrame shown_;
    std::size_t spoken_ = 0;
};

template <typename Change>
double timed(Change change) {
    const double before = seconds();
    change();
    return seconds() - before;
}

// Each of these functions makes a change and returns the seconds until the change's frame. The
// second parameter is the change's number in the round, from 0.

double afterAWord(Captions& captions, std::size_t) {
    captions.speak();
    return timed([&] { captions.update(); });
}

double afterARow(Captions& captions, std::size_t) {
    captions.commit();
    return timed([&] { captions.update(); });
}

double afterATranslation(Captions& captions, std::size_t change) {
    if (change == 0) { // commits the rows whose translations arrive in this round
        for (std::size_t i = 0; i < changesEachRound; ++i)
            captions.commit();
        captions.update();
    }
    const auto patch = captions.translate(captions.size() - changesEachRound + change);
    return timed([&] { captions.update(false, &patch); });
}

void measure(const char* what, double (*change)(Captions&, std::size_t),
             std::map<std::size_t, Captions>& sessions) {
    std::map<std::size_t, std::vector<double>> times;
    for (int round = 0; round < rounds; ++round) {
        for (auto& [rows, captions] : sessions) {
            for (std::size_t i = 0; i < changesEachRound; ++i) {
                const double took = change(captions, i);
                if (i >= warmUps)
                    times[rows].push_back(took);
            }
            captions.reset();
        }
    }
    std::printf("%-24s", what);
    for (const auto& [rows, all] : times)
        std::printf("%9.2f µs", Statistics::median(all) * 1e6);
    std::printf("%11.2f\n", Statistics::median(times.rbegin()->second) /
                                Statistics::median(times.begin()->second));
}

} // namespace
} // namespace tessarune

int main() {
    using namespace tessarune;
    std::map<std::size_t, Captions> sessions;
    std::printf("%-24s", "committed rows");
    for (const std::size_t rows : {10U, 1000U, 10000U}) {
        sessions.try_emplace(rows, rows);
        std::printf("%9zu   ", rows);
    }
    std::printf("%11s\n", "last/first");
    measure("a word is spoken", afterAWord, sessions);
    measure("a row is committed", afterARow, sessions);
    measure("a translation lands", afterATranslation, sessions);
}
