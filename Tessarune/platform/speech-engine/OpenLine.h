#pragma once

#include "Tessarune/speech/SpeechTranscriber.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The words of the line that is being spoken. Decides which of them are shown, and which are
/// settled: returned to the caller as final. No side effects; one thread at a time.
///
/// The engine recognises the whole line again at each pass, and its results differ. New words are
/// shown once two passes in a row have them, and a shown word stays until two passes agree on
/// another one; the words after it are unaffected. A shown word with enough words after it is
/// fixed: until it is settled, later passes change only its capitals, punctuation and times, so
/// that a late change does not move all the words after it. A shown hesitation ("um") stays unless
/// passes agree on words in its place, and no hesitation is inserted between shown words, because
/// the engine reports hesitations in one pass and omits them in the next.
///
/// The front of a long line is settled before the line ends: at the end of a sentence; if the line
/// stays open longer, at the end of a clause; if it stays open even longer, anywhere. A pass
/// settles either no words, or at least all words that were shown before it: otherwise some of them
/// would disappear from the screen for a moment. Later guesses repeat the settled words more or
/// less exactly; these repetitions are matched and left out.
///
/// An engine that is stuck in a loop repeats the same words: at most three copies of a single word,
/// and two of a run of two to four words, are kept.
///
/// The sound of a line may begin before the previous line has ended: the engine cuts long lines
/// anywhere and adds a little sound before each beginning. The guesses of the line then begin with
/// words of the previous line, which are left out.
class OpenLine {
  public:
    /// Takes the engine's current guess of all words of the line, one run per word without blanks,
    /// and the start of the line in seconds of the session. Returns the words that this pass
    /// settles. If this pass settles none and the next pass does not follow soon, all words of the
    /// guess are shown.
    std::vector<SpeechRun> look(std::vector<SpeechRun> words, double begin, bool looksAgainSoon);

    /// The shown words after the settled ones.
    std::vector<SpeechRun> shown() const;

    /// Takes the engine's words of the complete line. Returns those that are not settled yet,
    /// including fixed words that the complete line lacks.
    std::vector<SpeechRun> rest(std::vector<SpeechRun> words) const;

    /// Starts another line, which does not overlap the previous one.
    void clear() { *this = {}; }

    /// Starts another line, which overlaps the previous one and may repeat its last words. `last`
    /// are the words of the previous line, and `through` is its end in seconds of the session: no
    /// word of the new line begins earlier.
    void follow(std::vector<SpeechRun> last, double through);

  private:
    struct Word {
        SpeechRun run;
        std::string key;
        // For a word of a guess:
        std::size_t looks = 1;   ///< how many passes in a row, up to this one, had the word
        std::size_t follows = 1; ///< how many passes in a row had it after the same word
        // For a shown word:
        bool isAgreed = false; ///< two passes had the word in its place
        // For a shown or fixed word:
        std::size_t missed = 0; ///< how many passes in a row, up to the last one, lacked the word
    };
    using Words = std::vector<Word>;
    class Merge;

    std::vector<SpeechRun> runsOf(const Words& words) const;
    static Words withoutRepeats(std::vector<SpeechRun> runs);
    /// Where a repetition of words, the front, ends in a guess.
    struct Joint {
        std::size_t place; ///< in the guess
        double frontFit;   ///< how well the front matches the words before `place`
    };
    /// `beginsInside`: the guess may begin with any word of `front`.
    static Joint jointOf(const Words& front, bool beginsInside, const Words& behind,
                         const Words& guess);
    using Keys = std::vector<std::string_view>;
    static Keys keysOfSpoken(const Words& words);
    static Joint jointOfSpoken(const Keys& front, bool beginsInside, const Keys& behind,
                               const Keys& guess);
    struct Divided {
        Words front; ///< the part of the guess that repeats the fixed words
        Words open;  ///< the words of the guess after this part
    };
    Divided divide(std::vector<SpeechRun> words) const;
    std::size_t lengthOfFixed(const Words& guess) const;
    Words fixedToSettle() const;
    void updateFixed(const Divided& guess);
    static Words endOf(const Words& words);
    /// The words expected after the fixed ones.
    const Words& behind() const { return shown_.empty() ? guess_ : shown_; }
    void countLooks(const Words& before);
    std::size_t wordsToSettle(const Words& words, std::size_t shownBefore, double begin) const;
    std::size_t wordsToFix() const;
    void fix(std::size_t count);
    std::vector<SpeechRun> settle(std::size_t count);

    Words last_; ///< the end of the previous line, until words of this line are settled
    /// The fixed words of the line from its beginning on. No word is fixed while `last_` is not
    /// empty: until then, this contains the words of the guess that repeat the previous line.
    Words fixed_;
    std::size_t settled_ = 0; ///< how many of the fixed words are settled
    Words guess_;             ///< of the last pass, after the fixed words
    Words shown_;             ///< after the fixed words
    /// The end of the settled words or of the previous line, in seconds of the session.
    std::optional<double> settledThrough_;
};

} // namespace tessarune
