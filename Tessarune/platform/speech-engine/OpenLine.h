#pragma once

#include "Tessarune/speech/SpeechTranscriber.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The words of the line that is being spoken: which of them are shown, and which are settled, so
/// that they never change again. Pure; one thread.
///
/// The engine guesses the whole line anew at each look, and no two guesses are quite the same. New
/// words are shown once two looks in a row have them, and a word that is shown stays until two
/// looks agree on another one: the words behind it neither wait for it nor go with it.
///
/// The front of a long line is settled before its end: at the end of a sentence, after a while at
/// the end of a clause, and after a longer while wherever it is. Only a text that takes in all that
/// is shown is settled, so that nothing disappears from the screen for a moment. Later guesses
/// repeat the settled words, more or less; they are found and left out.
///
/// An engine that has lost its way says the same words again and again: of a single word three are
/// kept, of two to four words that repeat two.
///
/// The sound of a line may begin before that of the line before it has ended: the engine cuts lines
/// that have become long anywhere, and hears a little before each beginning. Then its guesses begin
/// with words of that line, which are left out.
class OpenLine {
  public:
    /// All words of the line as the engine guesses them now, a run each without blanks, and the
    /// time of the line's start. Gives the words that are settled by this look. If the next look
    /// does not come soon, all words are shown.
    std::vector<SpeechRun> look(std::vector<SpeechRun> words, double begin, bool looksAgainSoon);

    /// What is shown behind the settled words.
    std::vector<SpeechRun> shown() const { return runsOf(shown_); }

    /// Of all words of a line that is complete, those that are not settled yet.
    std::vector<SpeechRun> rest(std::vector<SpeechRun> words) const;

    /// Another line begins.
    void clear() { *this = {}; }

    /// Another line begins, in whose sound the end of `last` may be heard once more; `through` is
    /// where that ended, in seconds of the session.
    void follow(std::vector<SpeechRun> last, double through);

  private:
    struct Word {
        SpeechRun run;
        std::string key;
        std::size_t looks = 1;   ///< of a guess: so many looks in a row have had it
        std::size_t follows = 1; ///< of a guess: of these, the last that had it in its place
        bool isAgreed = false;   ///< of a shown word: two looks had it in its place
        std::size_t missed = 0;  ///< of a shown word: so many looks in a row have not had it
    };
    using Words = std::vector<Word>;
    class Merge;

    static std::vector<SpeechRun> runsOf(const Words& words);
    static Words withoutRepeats(std::vector<SpeechRun> runs);
    struct Joint {
        std::size_t place; ///< in the guess
        double frontFit;   ///< words in front of it that are found, less those that are not
    };
    /// `beginsInside`: the guess may begin with any word of `front`.
    static Joint jointOf(const Words& front, bool beginsInside, const Words& behind,
                         const Words& guess);
    std::size_t lengthOfSettled(const Words& guess) const;
    static Words endOf(const Words& words);
    /// What is expected behind the settled words.
    const Words& behind() const { return shown_.empty() ? guess_ : shown_; }
    void countLooks(const Words& before);
    std::size_t wordsToSettle(const Words& words, std::size_t shownBefore, double begin) const;
    std::vector<SpeechRun> settle(std::size_t count);

    Words last_; ///< the end of the line before, until words of this one are settled
    Words settled_;
    Words guess_; ///< of the last look, behind the settled words
    Words shown_;
    std::optional<double> settledThrough_; ///< seconds of the session
};

} // namespace tessarune
