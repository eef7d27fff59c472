#include "Tessarune/platform/speech-engine/OpenLine.h"

#include "TessaruneCore/segmentation/SentencePunctuation.h"
#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "TessaruneCore/text/CommonSubsequence.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

/// The number of passes that must agree on a word before it is shown or replaces a shown one.
constexpr std::size_t looksToAgree = 2;
/// A shown word is fixed once `looks` passes in a row have had it and `wordsBehind` words follow
/// it: the more words follow, the less sound is left that could change the word.
struct FixingRule {
    std::size_t looks;
    std::size_t wordsBehind;
};
constexpr std::array<FixingRule, 2> fixingRules{{{3, 7}, {4, 3}}};
/// Even if no sentence has ended, a line is settled up to the end of a clause after `clauseSeconds`
/// of speech, and as a whole after `anywhereSeconds`.
constexpr double clauseSeconds = 2;
constexpr double anywhereSeconds = 3;
/// The minimum number of words that are settled at once.
constexpr std::size_t fewestWords = 3;
/// A single word may occur three times in a row, a run of two to `longestRepeat` words twice.
constexpr std::size_t longestRepeat = 4;
constexpr std::size_t timesOfAWord = 3;
constexpr std::size_t timesOfARun = 2;
/// The number of words at the end of a line that are searched for in the next one.
constexpr std::size_t overlapWords = 4;

constexpr std::array<std::string_view, 6> hesitations{"uh", "um", "er", "ah", "uhm", "hmm"};

constexpr auto sameKey = [](const auto& a, const auto& b) { return a.key == b.key; };
constexpr auto isHesitation = [](const auto& word) {
    return std::ranges::find(hesitations, word.key) != hesitations.end();
};
constexpr auto sameSpoken = [](const auto& a, const auto& b) {
    return sameKey(a, b) && !isHesitation(a);
};

template <typename Words>
Words takeFront(Words& from, std::size_t count) {
    const auto end = from.begin() + static_cast<std::ptrdiff_t>(count);
    Words front(std::make_move_iterator(from.begin()), std::make_move_iterator(end));
    from.erase(from.begin(), end);
    return front;
}

template <typename Words>
bool repeatsAt(const Words& words, std::size_t place) {
    return place > 0 && sameKey(words[place - 1], words[place]);
}

} // namespace

/// Merges the shown words with the guess of a pass. If the line is complete, shown words that the
/// guess lacks are removed. Hesitations before the last common word are an exception: they stay if
/// the guess has nothing or only hesitations in their place.
class OpenLine::Merge {
  public:
    Merge(Words shown, const Words& guess, bool isComplete)
        : shown_(std::move(shown)), guess_(guess), isComplete_(isComplete) {}

    Words run() {
        for (const auto& [old, now] : commonSubsequence(shown_, guess_, sameSpoken)) {
            const bool isSure = gap(old, now);
            put(now, now + 1, shown_[old].isAgreed); // in the newest spelling
            merged_.back().isAgreed &= isSure;
            nextShown_ = old + 1;
            nextGuess_ = now + 1;
        }
        end();
        return std::move(merged_);
    }

  private:
    /// Merges the words before the next common word. Returns false if the guess has words whose
    /// place among the shown words is unknown.
    bool gap(std::size_t shownEnd, std::size_t guessEnd) {
        if (nextShown_ == shownEnd && nextGuess_ == guessEnd)
            return true;
        const auto all = [](const Words& words, std::size_t begin, std::size_t end, auto holds) {
            const auto first = words.begin();
            return std::all_of(first + static_cast<std::ptrdiff_t>(begin),
                               first + static_cast<std::ptrdiff_t>(end), holds);
        };
        if (all(shown_, nextShown_, shownEnd, isHesitation) &&
            all(guess_, nextGuess_, guessEnd, isHesitation)) {
            keep(shownEnd);
            return true;
        }
        // Passes must agree that the new words are there and that the shown ones are gone.
        const bool replaces =
            isComplete_ || (all(shown_, nextShown_, shownEnd,
                                [](const Word& word) { return word.missed >= looksToAgree; }) &&
                            all(guess_, nextGuess_, guessEnd + 1,
                                [](const Word& word) { return word.follows >= looksToAgree; }));
        if (replaces)
            put(nextGuess_, guessEnd, true);
        else
            keep(shownEnd);
        // If only one pass has the new words, and there are at most as many of them as shown words,
        // they are taken for another version of the shown words.
        return replaces || (guessEnd - nextGuess_ <= shownEnd - nextShown_ &&
                            all(guess_, nextGuess_, guessEnd,
                                [](const Word& word) { return word.looks < looksToAgree; }));
    }

    /// The end of the line grows by words that two passes agree on, and loses words only if they
    /// are replaced by such words. A hesitation of a single pass is left out, but does not hold
    /// back the words behind it.
    void end() {
        const auto isAgreed = [this](const Word& word) {
            return isComplete_ || word.follows >= looksToAgree;
        };
        const auto begin = guess_.begin() + static_cast<std::ptrdiff_t>(nextGuess_);
        const auto end = std::find_if_not(begin, guess_.end(), [&](const Word& word) {
            return isAgreed(word) || isHesitation(word);
        });
        if (!isComplete_ && nextShown_ < shown_.size() && std::none_of(begin, end, isAgreed)) {
            keep(shown_.size());
            return;
        }
        for (auto word = begin; word != end; ++word) {
            const auto place = static_cast<std::size_t>(word - guess_.begin());
            if (isAgreed(*word))
                put(place, place + 1, true);
        }
    }

    void put(std::size_t from, std::size_t to, bool isAgreed) {
        for (std::size_t i = from; i < to; ++i) {
            merged_.push_back(guess_[i]);
            merged_.back().isAgreed = isAgreed || guess_[i].follows >= looksToAgree;
        }
    }

    void keep(std::size_t to) {
        for (std::size_t i = nextShown_; i < to; ++i)
            merged_.push_back(std::move(shown_[i]));
    }

    Words shown_;
    const Words& guess_;
    bool isComplete_;
    Words merged_;
    std::size_t nextShown_ = 0;
    std::size_t nextGuess_ = 0;
};

std::vector<SpeechRun> OpenLine::look(std::vector<SpeechRun> words, double begin,
                                      bool looksAgainSoon) {
    Divided guess = divide(std::move(words));
    if (!last_.empty()) {
        settled_ = guess.front.size();
        fixed_ = std::move(guess.front);
    } else {
        updateFixed(guess);
    }
    const Words before = std::exchange(guess_, std::move(guess.open));
    countLooks(before);
    for (Word& word : shown_)
        ++word.missed;
    Words unsettled = fixedToSettle();
    const std::size_t fixed = unsettled.size();
    const std::size_t shownBefore = fixed + shown_.size();
    std::ranges::move(Merge(std::move(shown_), guess_, false).run(), std::back_inserter(unsettled));
    const std::size_t count = wordsToSettle(unsettled, shownBefore, begin);
    unsettled.erase(unsettled.begin(), unsettled.begin() + static_cast<std::ptrdiff_t>(fixed));
    shown_ = count > 0 || looksAgainSoon ? std::move(unsettled) : guess_;
    std::vector<SpeechRun> settled = settle(count);
    fix(wordsToFix());
    return settled;
}

std::vector<SpeechRun> OpenLine::shown() const {
    Words all = fixedToSettle();
    all.insert(all.end(), shown_.begin(), shown_.end());
    return runsOf(all);
}

OpenLine::Divided OpenLine::divide(std::vector<SpeechRun> words) const {
    Divided divided;
    divided.open = withoutRepeats(std::move(words));
    divided.front = takeFront(divided.open, lengthOfFixed(divided.open));
    return divided;
}

OpenLine::Words OpenLine::fixedToSettle() const {
    return {fixed_.begin() + static_cast<std::ptrdiff_t>(settled_), fixed_.end()};
}

/// Fixed words that are not settled take the punctuation and the times of the newest guess, so that
/// sentences end where that guess ends them.
void OpenLine::updateFixed(const Divided& guess) {
    for (Word& word : fixed_)
        ++word.missed;
    for (const auto& [old, now] : commonSubsequence(fixed_, guess.front, sameKey)) {
        fixed_[old].run = guess.front[now].run;
        fixed_[old].missed = 0;
    }
}

void OpenLine::countLooks(const Words& before) {
    auto nextBefore = before.begin(); // behind the last common word that is not a hesitation
    auto next = guess_.begin();
    for (const auto& [old, now] : commonSubsequence(before, guess_, sameKey)) {
        const auto wordBefore = before.begin() + static_cast<std::ptrdiff_t>(old);
        const auto word = guess_.begin() + static_cast<std::ptrdiff_t>(now);
        const bool hasItsPlace = std::all_of(nextBefore, wordBefore, isHesitation) &&
                                 std::all_of(next, word, isHesitation);
        word->looks = wordBefore->looks + 1;
        word->follows = hasItsPlace ? wordBefore->follows + 1 : 1;
        if (!isHesitation(*word)) {
            nextBefore = wordBefore + 1;
            next = word + 1;
        }
    }
}

std::vector<SpeechRun> OpenLine::rest(std::vector<SpeechRun> words) const {
    const Divided complete = divide(std::move(words));
    OpenLine updated = *this;
    if (last_.empty())
        updated.updateFixed(complete);
    Words all = updated.fixedToSettle();
    for (Word& word : updated.shown_)
        ++word.missed;
    std::ranges::move(Merge(std::move(updated.shown_), complete.open, true).run(),
                      std::back_inserter(all));
    return runsOf(all);
}

void OpenLine::follow(std::vector<SpeechRun> last, double through) {
    clear();
    last_ = endOf(withoutRepeats(std::move(last)));
    settledThrough_ = through;
}

/// A word that the last pass did not have still has the times of an earlier pass, which may overlap
/// the times of its neighbours. The times are limited so that the words follow one another.
std::vector<SpeechRun> OpenLine::runsOf(const Words& words) const {
    std::vector<SpeechRun> runs;
    runs.reserve(words.size());
    for (const Word& word : words)
        runs.push_back(word.run);
    for (std::size_t i = runs.size(); i-- > 1;) {
        if (words[i - 1].missed > 0)
            runs[i - 1].audioEnd = std::min(runs[i - 1].audioEnd, runs[i].audioStart);
        runs[i - 1].audioStart = std::min(runs[i - 1].audioStart, runs[i - 1].audioEnd);
    }
    std::optional<double> through = settledThrough_;
    for (SpeechRun& run : runs) {
        run.audioStart = std::max(run.audioStart, through);
        run.audioEnd = std::max(run.audioEnd, run.audioStart);
        through = run.audioEnd;
    }
    return runs;
}

OpenLine::Words OpenLine::withoutRepeats(std::vector<SpeechRun> runs) {
    Words kept;
    const auto endsInRepeats = [&](std::size_t length, std::size_t times) {
        if (kept.size() < length * times)
            return false;
        const auto last = kept.end() - static_cast<std::ptrdiff_t>(length);
        return std::equal(last - static_cast<std::ptrdiff_t>(length * (times - 1)), last,
                          last - static_cast<std::ptrdiff_t>(length * (times - 2)), kept.end(),
                          sameKey);
    };
    for (SpeechRun& run : runs) {
        std::string key = SentenceStabilityKey::normalize(run.text);
        kept.push_back({std::move(run), std::move(key)});
        for (std::size_t length = 1; length <= longestRepeat; ++length) {
            const std::size_t times = length == 1 ? timesOfAWord : timesOfARun;
            if (endsInRepeats(length, times + 1)) {
                kept.resize(kept.size() - length);
                break;
            }
        }
    }
    return kept;
}

/// Finds the place in a guess at which the words of `front` end and those of `behind` begin: where
/// both match best. A matching word counts 1; a changed or missing one counts -1, so that a
/// frequent word much later in the guess is not taken for a word of `front`. An inserted word
/// counts -1 in `behind` and -1.5 in `front`, because it more likely belongs to the following text.
/// If a word of `front` may be either changed or missing in the guess, it is taken for a changed
/// one. If that is wrong, a word of the following text is hidden until the next pass; the opposite
/// error would show a word twice. Hesitations do not count, because the engine does not always
/// write them.
OpenLine::Joint OpenLine::jointOf(const Words& front, bool beginsInside, const Words& behind,
                                  const Words& guess) {
    Joint joint =
        jointOfSpoken(keysOfSpoken(front), beginsInside, keysOfSpoken(behind), keysOfSpoken(guess));
    std::size_t place = 0;
    for (std::size_t spoken = 0; spoken < joint.place; ++place)
        spoken += isHesitation(guess[place]) ? 0 : 1;
    if (!front.empty() && isHesitation(front.back())) {
        while (place < guess.size() && isHesitation(guess[place]))
            ++place;
    }
    joint.place = place;
    return joint;
}

OpenLine::Keys OpenLine::keysOfSpoken(const Words& words) {
    Keys keys;
    for (const Word& word : words) {
        if (!isHesitation(word))
            keys.push_back(word.key);
    }
    return keys;
}

OpenLine::Joint OpenLine::jointOfSpoken(const Keys& front, bool beginsInside, const Keys& behind,
                                        const Keys& guess) {
    const auto step = [](std::string_view a, std::string_view b) { return a == b ? 1.0 : -1.0; };
    constexpr double insertedInFront = -1.5;
    std::vector<double> frontFit; // for each place, the best fit of a `front` that ends before it
    for (std::size_t words = 0; words <= guess.size(); ++words)
        frontFit.push_back(insertedInFront * static_cast<double>(words));
    for (const std::string_view word : front) {
        double before = frontFit.front();
        frontFit.front() -= beginsInside ? 0 : 1;
        for (std::size_t i = 0; i < guess.size(); ++i) {
            const bool isCut = beginsInside && i == 0; // the line may begin inside a word
            const double best = std::max({before + step(word, guess[i]), frontFit[i + 1] - 1,
                                          isCut ? 0 : frontFit[i] + insertedInFront});
            before = std::exchange(frontFit[i + 1], best);
        }
    }
    // For each place, the best fit of a `behind` that begins there.
    std::vector<double> behindFit(guess.size() + 1, 0);
    for (auto word = behind.rbegin(); word != behind.rend(); ++word) {
        double after = behindFit.back();
        behindFit.back() -= 1;
        for (std::size_t i = guess.size(); i-- > 0;) {
            const double best =
                std::max({after + step(*word, guess[i]), behindFit[i] - 1, behindFit[i + 1] - 1});
            after = std::exchange(behindFit[i], best);
        }
    }
    std::size_t place = 0;
    for (std::size_t i = 1; i <= guess.size(); ++i) {
        if (frontFit[i] + behindFit[i] >= frontFit[place] + behindFit[place])
            place = i;
    }
    return {place, frontFit[place]};
}

std::size_t OpenLine::lengthOfFixed(const Words& guess) const {
    if (!last_.empty()) {
        const Joint joint = jointOf(last_, true, behind(), guess);
        if (joint.frontFit > 0)
            return joint.place;
    }
    return jointOf(fixed_, false, behind(), guess).place;
}

OpenLine::Words OpenLine::endOf(const Words& words) {
    std::size_t spoken = 0;
    auto first = words.end();
    while (first != words.begin() && spoken < overlapWords)
        spoken += isHesitation(*--first) ? 0 : 1;
    return {first, words.end()};
}

/// Returns how many of the shown words can be settled. A punctuation mark is ignored at the end of
/// a guess, because the engine ends each guess as if the speaker had stopped. A settled text never
/// ends with a repeated word, because the engine may be in a loop.
std::size_t OpenLine::wordsToSettle(const Words& words, std::size_t shownBefore,
                                    double begin) const {
    const std::size_t fewest = std::max(std::min(shownBefore, words.size()), fewestWords);
    if (words.size() < fewest || guess_.empty())
        return 0;
    const auto doubtful = std::ranges::find_if_not(words, &Word::isAgreed);
    const auto agreed = static_cast<std::size_t>(doubtful - words.begin());
    const std::size_t fixed = fixed_.size() - settled_;
    std::vector<bool> isCertain(words.size()); // whether a settled text may end with the word
    for (std::size_t i = 0; i < fixed; ++i)
        isCertain[i] = !repeatsAt(words, i);
    const Words behindFixed(words.begin() + static_cast<std::ptrdiff_t>(fixed), words.end());
    for (const auto& [shown, guessed] : commonSubsequence(behindFixed, guess_, sameKey)) {
        const std::size_t place = fixed + shown;
        isCertain[place] = place < agreed && guess_[guessed].looks >= looksToAgree &&
                           guessed + 1 < guess_.size() && !repeatsAt(words, place);
    }
    const double openSeconds =
        guess_.back().run.audioEnd.value_or(begin) - settledThrough_.value_or(begin);
    std::string text;
    for (const Word& word : words)
        text += word.run.text + " ";
    text += "x"; // stands for the words that follow: the line continues
    std::size_t sentence = 0;
    std::size_t clause = 0;
    std::size_t count = 0;
    for (const std::string& piece : SentenceSegmenter::pieces(text, true, 0)) {
        count += Text::countOfWhiteSpaceSeparated(piece);
        const auto mark = SentencePunctuation::endMark(piece);
        if (!mark || count < fewest || count > words.size() || !isCertain[count - 1])
            continue;
        ((mark->traits & SentencePunctuation::terminal) != 0 ? sentence : clause) = count;
    }
    if (sentence > 0)
        return sentence;
    if (clause > 0 && openSeconds >= clauseSeconds)
        return clause;
    return openSeconds >= anywhereSeconds && isCertain.back() ? words.size() : 0;
}

/// Returns how many of the shown words can be fixed: none while the line may begin with words of
/// the previous one.
std::size_t OpenLine::wordsToFix() const {
    if (!last_.empty())
        return 0;
    std::vector<bool> isFirm(shown_.size());
    for (std::size_t i = 0; i < shown_.size(); ++i)
        isFirm[i] = isHesitation(shown_[i]);
    for (const auto& [shown, guessed] : commonSubsequence(shown_, guess_, sameKey)) {
        const std::size_t wordsBehind = guess_.size() - guessed - 1;
        isFirm[shown] = std::ranges::any_of(fixingRules, [&](const FixingRule& rule) {
            return guess_[guessed].looks >= rule.looks && wordsBehind >= rule.wordsBehind;
        });
    }
    std::size_t count = 0;
    for (std::size_t i = 0; i < shown_.size() && isFirm[i] && shown_[i].isAgreed; ++i) {
        if (!repeatsAt(shown_, i) && !isHesitation(shown_[i]))
            count = i + 1;
    }
    return count;
}

void OpenLine::fix(std::size_t count) {
    if (count == 0)
        return;
    Words front = takeFront(shown_, count);
    takeFront(guess_, jointOf(front, false, shown_, guess_).place);
    std::ranges::move(front, std::back_inserter(fixed_));
}

std::vector<SpeechRun> OpenLine::settle(std::size_t count) {
    if (count == 0)
        return {};
    fix(count - std::min(count, fixed_.size() - settled_));
    const auto begin = fixed_.begin() + static_cast<std::ptrdiff_t>(settled_);
    const Words front(begin, begin + static_cast<std::ptrdiff_t>(count));
    settled_ += count;
    last_.clear();
    std::vector<SpeechRun> runs = runsOf(front);
    settledThrough_ = runs.back().audioEnd;
    return runs;
}

} // namespace tessarune
