#pragma once

#include "Tessarune/platform/speech-engine/TranscriptReader.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tessarune::simulation {

/// The passes of a bad engine over what is said, and their results. The engine mishears words, most
/// often at the start of a line, omits words, invents endings, repeats itself, notices the end of a
/// line late, cuts lines so that the next one repeats the last words, and hears hesitations
/// anywhere.
///
/// Each spoken word begins with a "w" and is said once; a misheard word begins with an "m", and an
/// invented one with another letter. Errors that cannot be told from speech do not occur: no two
/// successive passes omit or invent words in the same place, and the last word is never omitted.
class ScriptedLooks {
  public:
    explicit ScriptedLooks(std::uint64_t seed) : random_(seed) {}

    /// Says words `at` seconds after the session began.
    void say(const std::string& words, double at) {
        for (const std::string_view word : Text::splitOnWhiteSpace(words))
            said_.emplace_back(word);
        now_ = std::max(now_, at);
    }

    std::vector<SpeechResult> look(bool looksAgainSoon) {
        std::vector<std::string> guess = misheard();
        leavesOut_ = !leavesOut_ && guess.size() > 3 && oneIn(3);
        if (leavesOut_)
            guess.erase(guess.begin() + static_cast<std::ptrdiff_t>(2 + upTo(guess.size() - 4)));
        const bool hasNewWords = std::exchange(looked_, said_.size()) != said_.size();
        if (hasNewWords && oneIn(3))
            guess.resize(guess.size() + 1 + upTo(11), "again");
        if (hasNewWords && oneIn(3))
            guess.emplace_back("Rubbish.");
        return read(std::move(guess), false, looksAgainSoon);
    }

    std::vector<SpeechResult> endLine() {
        std::vector<SpeechResult> results = read(misheard(), true, true);
        if (checked_ < said_.size())
            violation_ = "'" + said_[checked_] + "' was lost";
        // The engine may cut a line in the middle of its words.
        const bool isCut = said_.size() - lineBegin_ >= 2 * wordsRepeated && oneIn(3);
        lineBegin_ = said_.size() - (isCut ? wordsRepeated : 0);
        lineStart_ = now_ - (isCut ? 0.5 : oneIn(3) ? 0.2 : 0);
        return results;
    }

    /// Reports a lost or repeated word, or a word that begins before the previous one ends; empty
    /// if there is none.
    const std::string& violation() const { return violation_; }

    /// Whether a word was spoken rather than invented.
    static bool isSaid(std::string_view word) { return word.front() == 'w' || word.front() == 'm'; }
    /// The part that a spoken word shares with its misheard form.
    static std::string_view key(std::string_view word) {
        return word.substr(1, word.find_last_not_of(".,"));
    }

  private:
    static constexpr std::size_t wordsRepeated = 2;
    struct Line {
        std::string text;
        double start;
        double end;
    };

    std::uint64_t upTo(std::uint64_t limit) { return random_() % (limit + 1); }
    bool oneIn(std::uint64_t count) { return upTo(count - 1) == 0; }

    /// The words of the line, at most two of them misheard. Of the words that a cut repeats, only
    /// the first may be misheard.
    std::vector<std::string> misheard() {
        std::vector<std::string> words(said_.begin() + static_cast<std::ptrdiff_t>(lineBegin_),
                                       said_.end());
        if (!words.empty() && oneIn(2))
            words.front()[0] = 'm';
        if (words.size() > 2 * wordsRepeated && oneIn(2)) {
            const std::size_t last = words.size() - 1 - wordsRepeated;
            words[wordsRepeated + upTo(last - wordsRepeated)][0] = 'm';
        }
        return words;
    }

    void hesitate(std::vector<std::string>& words) {
        for (std::size_t place = 0; place <= words.size(); ++place) {
            if (oneIn(12))
                words.insert(words.begin() + static_cast<std::ptrdiff_t>(place++), "um");
        }
    }

    std::vector<SpeechResult> read(std::vector<std::string> guess, bool isComplete,
                                   bool looksAgainSoon) {
        hesitate(guess);
        std::vector<Line> lines = complete_;
        lines.push_back({joined(guess), lineStart_, now_});
        if (isComplete)
            complete_ = lines;
        std::vector<moonshine::Line> given;
        for (const Line& line : lines)
            given.push_back(engineLine(line, isComplete || given.size() + 1 < lines.size()));
        std::vector<SpeechResult> results =
            reader_.read({given.data(), given.size()}, looksAgainSoon);
        for (const SpeechResult& result : results) {
            if (!result.isFinal)
                continue;
            check(result.text());
            for (const SpeechRun& run : result.runs) {
                if (run.audioStart < heardThrough_ - 0.001 || run.audioEnd < run.audioStart)
                    violation_ = "'" + run.text + "' has a wrong time";
                heardThrough_ = run.audioEnd.value_or(now_);
            }
        }
        return results;
    }

    static moonshine::Line engineLine(const Line& line, bool isComplete) {
        moonshine::Line made{};
        made.text = line.text.c_str();
        made.isComplete = isComplete ? 1 : 0;
        made.start = static_cast<float>(line.start);
        made.duration = static_cast<float>(line.end - line.start);
        return made;
    }

    static std::string joined(const std::vector<std::string>& words) {
        std::string text;
        for (const std::string& word : words)
            text += (text.empty() ? "" : " ") + word;
        return text;
    }

    void check(const std::string& text) {
        for (const std::string_view word : Text::splitOnWhiteSpace(text)) {
            if (!violation_.empty() || !isSaid(word))
                continue;
            if (checked_ == said_.size() || key(word) != key(said_[checked_++]))
                violation_ = "'" + std::string(word) + "' came twice, or words before it were lost";
        }
    }

    std::mt19937_64 random_;
    TranscriptReader reader_{{"en-US",
                              {SpeechReportingOption::volatileResults},
                              {SpeechAttributeOption::audioTimeRange}}};
    std::vector<std::string> said_;
    double now_ = 0; ///< seconds of the session
    std::vector<Line> complete_;
    double lineStart_ = 0;
    std::size_t lineBegin_ = 0; ///< in `said_`
    std::size_t looked_ = 0;    ///< words known to the last pass
    std::size_t checked_ = 0;   ///< words covered by finals
    double heardThrough_ = 0;   ///< the end of the last final, in seconds of the session
    bool leavesOut_ = false;
    std::string violation_;
};

} // namespace tessarune::simulation
