#include "bench/quality/WordTrace.h"

#include "TessaruneCore/text/CommonSubsequence.h"

#include <algorithm>
#include <utility>

namespace tessarune {

/// One step: compares the former open words with the next text.
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
            gone.assign(before_.begin() + static_cast<std::ptrdiff_t>(goneFrom_), before_.end());
    }

    Words after;
    Words gone;

  private:
    /// Handles the words between two words that stayed. Each new word replaces an old word, as long
    /// as old ones remain. Returns true if there are more new words than old ones.
    bool fillGap(std::size_t oldEnd, std::size_t newEnd) {
        while (after.size() < newEnd && nextOld_ < std::min(oldEnd, visible_)) {
            TracedWord& old = before_[nextOld_++];
            after.push_back({texts_[after.size()], old.shownAt, time_, std::nullopt, true});
        }
        goneFrom_ = nextOld_;
        nextOld_ = oldEnd;
        const bool grows = after.size() < newEnd;
        while (after.size() < newEnd)
            after.push_back({texts_[after.size()], time_, time_, std::nullopt, false});
        return grows;
    }

    double time_;
    std::size_t visible_; ///< how many words of `before_` were shown; the others had disappeared
    Words before_;
    const Texts& texts_;
    std::size_t nextOld_ = 0;
    std::size_t goneFrom_ = 0; ///< in the last gap, the first old word without a replacement
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
        gone_.clear(); // another utterance follows
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
