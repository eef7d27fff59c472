#include "bench/quality/WordTrace.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tessarune {

namespace {

/// Beyond so many words times words, texts that differ are taken to have nothing in common.
constexpr std::size_t mostCompared = 4'000'000;

/// Which elements of two lists form their longest common subsequence, as pairs of indices. Equal
/// beginnings are paired as they stand.
template <typename A, typename B, typename Equal>
std::vector<std::pair<std::size_t, std::size_t>> commonSubsequence(const A& a, const B& b,
                                                                   Equal equal) {
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    std::size_t begin = 0;
    for (; begin < a.size() && begin < b.size() && equal(a[begin], b[begin]); ++begin)
        pairs.emplace_back(begin, begin);
    const std::size_t rows = a.size() - begin;
    const std::size_t columns = b.size() - begin;
    if (columns > 0 && rows > mostCompared / columns)
        return pairs;
    // How long the subsequence of what follows is, from each pair of positions on.
    std::vector<std::uint32_t> rest((rows + 1) * (columns + 1), 0);
    const auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t& {
        return rest[i * (columns + 1) + j];
    };
    for (std::size_t i = rows; i-- > 0;) {
        for (std::size_t j = columns; j-- > 0;) {
            at(i, j) = equal(a[begin + i], b[begin + j]) ? at(i + 1, j + 1) + 1
                                                         : std::max(at(i + 1, j), at(i, j + 1));
        }
    }
    for (std::size_t i = 0, j = 0; i < rows && j < columns;) {
        if (equal(a[begin + i], b[begin + j])) {
            pairs.emplace_back(begin + i++, begin + j++);
        } else if (at(i + 1, j) >= at(i, j + 1)) {
            ++i;
        } else {
            ++j;
        }
    }
    return pairs;
}

} // namespace

/// One step from the words that were open to those of the next text.
class WordTrace::Following {
  public:
    Following(double time, Words before, Words goneBefore, const Texts& texts)
        : time_(time), visible_(before.size()), before_(std::move(before)), texts_(texts) {
        before_.insert(before_.end(), goneBefore.begin(), goneBefore.end());
    }

    void run() {
        const auto same = [](const TracedWord& word, const std::string& text) {
            return word.text == text;
        };
        for (const auto& [old, now] : commonSubsequence(before_, texts_, same)) {
            fillGap(old, now);
            TracedWord word = std::move(before_[nextOld_++]);
            if (old >= visible_) {
                word.shownAt = word.changedAt = time_;
                word.isUnstable = true;
            }
            after.push_back(std::move(word));
        }
        const bool grows = fillGap(before_.size(), texts_.size());
        if (!grows)
            gone.assign(before_.begin() + static_cast<std::ptrdiff_t>(keptFrom_), before_.end());
    }

    Words after;
    Words gone;

  private:
    /// What stands between two words that stayed: each new word takes the place of an old one while
    /// there are any. True if some have a place of their own.
    bool fillGap(std::size_t oldEnd, std::size_t newEnd) {
        while (after.size() < newEnd && nextOld_ < std::min(oldEnd, visible_)) {
            TracedWord& old = before_[nextOld_++];
            after.push_back({texts_[after.size()], old.shownAt, time_, std::nullopt, true});
        }
        keptFrom_ = nextOld_;
        nextOld_ = oldEnd;
        const bool grows = after.size() < newEnd;
        while (after.size() < newEnd)
            after.push_back({texts_[after.size()], time_, time_, std::nullopt, false});
        return grows;
    }

    double time_;
    std::size_t visible_; ///< so many of `before_` were shown; the others were gone
    Words before_;
    const Texts& texts_;
    std::size_t nextOld_ = 0;
    std::size_t keptFrom_ = 0; ///< the first old word of the last gap without a successor
};

void WordTrace::show(double time, const Texts& newlySettled, const Texts& open) {
    Texts texts = newlySettled;
    texts.insert(texts.end(), open.begin(), open.end());
    countErased(texts);

    Following step(time, std::move(open_), std::move(gone_), texts);
    step.run();
    open_ = std::move(step.after);
    gone_ = std::move(step.gone);
    const auto settled = static_cast<std::ptrdiff_t>(newlySettled.size());
    for (auto word = open_.begin(); word != open_.begin() + settled; ++word) {
        word->settledAt = time;
        settled_.words.push_back(std::move(*word));
    }
    open_.erase(open_.begin(), open_.begin() + settled);
    if (open_.empty())
        gone_.clear(); // what comes next is another utterance
}

void WordTrace::countErased(const Texts& texts) {
    const auto differs = std::mismatch(
        open_.begin(), open_.end(), texts.begin(), texts.end(),
        [](const TracedWord& word, const std::string& text) { return word.text == text; });
    settled_.erased += static_cast<std::size_t>(open_.end() - differs.first);
    if (differs.first != open_.end() || differs.second != texts.end())
        ++settled_.updates;
}

WordHistory WordTrace::history() const {
    WordHistory result = settled_;
    result.words.insert(result.words.end(), open_.begin(), open_.end());
    return result;
}

} // namespace tessarune
