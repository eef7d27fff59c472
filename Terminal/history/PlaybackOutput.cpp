#include "Terminal/history/PlaybackOutput.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/RewrittenLines.h"
#include "Terminal/TerminalCursor.h"
#include "Tessarune/history/DurationTextFormatter.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

using Sentence = PlaybackPicture::Sentence;

constexpr const char* highlightOn = "\033[1;4m";
constexpr const char* statusOn = "\033[2m";
constexpr const char* styleOff = "\033[0m";

std::string timedText(const Sentence& sentence) {
    return "[" + DurationTextFormatter::compact(sentence.start) + "] " +
           Text::printableLine(sentence.text);
}

/// Highlights `count` bytes from `first` on in the wrapped lines of a text. Both numbers leave out
/// blanks.
void highlight(std::vector<std::string>& lines, std::size_t first, std::size_t count) {
    std::size_t seen = 0;
    for (std::string& line : lines) {
        std::string highlighted;
        for (const char byte : line) {
            if (byte != ' ' && seen == first)
                highlighted += highlightOn;
            highlighted += byte;
            if (byte != ' ' && ++seen == first + count)
                highlighted += styleOff;
        }
        if (seen > first && seen < first + count)
            highlighted += styleOff; // the word ends on the next line, where it is not highlighted
        line = highlighted;
    }
}

std::size_t bytesWithoutBlanks(const std::string& text) {
    return text.size() - static_cast<std::size_t>(std::ranges::count(text, ' '));
}

std::string statusText(const PlaybackPicture& picture) {
    std::string text = picture.isPlaying ? "▶ " : "⏸ ";
    text += DurationTextFormatter::compact(picture.position) + " / " +
            DurationTextFormatter::compact(picture.duration);
    if (picture.rate != 1)
        text += "  " + Text::shortest(picture.rate) + "×";
    if (picture.repeats)
        text += "  ↻";
    if (!picture.problem.empty())
        text += "  " + Text::printableLine(picture.problem);
    return text;
}

class PlaybackScreen {
  public:
    explicit PlaybackScreen(bool quiet) : quiet_(quiet), lower_(stdout), size_(sizeOf(stdout)) {
        TerminalCursor::guard(STDOUT_FILENO);
    }

    void show(const PlaybackPicture& picture) {
        if (TerminalCursor::isPaused())
            return;
        const auto [width, height] = size_();
        std::vector<std::string> settled;
        if (sentence_ && (!picture.sentence || picture.sentence->index != sentence_->index))
            settled = Text::wrapped(timedText(*sentence_), width);
        sentence_ = picture.sentence;
        std::vector<std::string> below;
        if (sentence_) {
            below = Text::wrapped(timedText(*sentence_), width);
            highlightWord(below);
        }
        if (!quiet_)
            below.push_back(statusOn + Text::fitted(statusText(picture), width) + styleOff);
        // Lines that do not fit the screen could not be rewritten.
        if (below.size() >= height)
            below.erase(below.begin(), below.end() - static_cast<std::ptrdiff_t>(height - 1));
        if (settled.empty() && below == shown_ && !mustDraw_)
            return;
        lower_.rewrite(settled, below);
        shown_ = std::move(below);
        mustDraw_ = false;
    }

    void redraw() {
        lower_.beginBelow();
        mustDraw_ = true;
    }

    void finish() {
        lower_.rewrite(sentence_ ? Text::wrapped(timedText(*sentence_), size_().columns)
                                 : std::vector<std::string>(),
                       {});
        lower_.showCursor();
        TerminalCursor::release();
    }

  private:
    void highlightWord(std::vector<std::string>& lines) const {
        if (sentence_->wordLength == 0)
            return;
        const std::string time = "[" + DurationTextFormatter::compact(sentence_->start) + "]";
        const auto piece = [&](std::size_t from, std::size_t length) {
            return bytesWithoutBlanks(Text::printableLine(sentence_->text.substr(from, length)));
        };
        highlight(lines, time.size() + piece(0, sentence_->wordOffset),
                  piece(sentence_->wordOffset, sentence_->wordLength));
    }

    const bool quiet_;
    RewrittenLines lower_;
    ScreenSizeSource size_;
    std::optional<Sentence> sentence_;
    std::vector<std::string> shown_;
    bool mustDraw_ = true; ///< even if nothing has changed
};

/// Detects a new sentence and a new problem of a running playback.
struct PlaybackNews {
    std::optional<std::size_t> sentence;
    std::string problem;

    bool isNewSentence(const PlaybackPicture& picture) {
        const auto now = picture.sentence ? std::optional(picture.sentence->index) : std::nullopt;
        return std::exchange(sentence, now) != now && now && picture.isPlaying;
    }
    bool isNewProblem(const PlaybackPicture& picture) {
        return std::exchange(problem, picture.problem) != picture.problem && !problem.empty() &&
               picture.isPlaying;
    }
};

} // namespace

PlaybackOutput PlaybackOutput::screen(bool quiet) {
    auto screen = std::make_shared<PlaybackScreen>(quiet);
    return {[screen](const PlaybackPicture& picture) { screen->show(picture); },
            [screen] { screen->redraw(); }, [screen] { screen->finish(); }};
}

PlaybackOutput PlaybackOutput::lines(bool quiet) {
    auto news = std::make_shared<PlaybackNews>();
    const auto show = [news, quiet](const PlaybackPicture& picture) {
        if (news->isNewSentence(picture)) {
            printText(timedText(*picture.sentence));
            std::fflush(stdout);
        }
        if (news->isNewProblem(picture) && !quiet)
            printNotice(picture.problem);
    };
    return {show, [] {}, [] {}};
}

PlaybackOutput PlaybackOutput::json(std::function<double()> wallClock) {
    auto news = std::make_shared<PlaybackNews>();
    auto state = std::make_shared<std::string>();
    const auto print = [](const nlohmann::ordered_json& object) {
        printJSON(object);
        std::fflush(stdout);
    };
    const auto show = [=](const PlaybackPicture& picture) {
        const char* const now = picture.isPlaying ? "playing" : "paused";
        if (*state != now)
            print({{"type", "playback"},
                   {"t", wallClock()},
                   {"state", *state = now},
                   {"position", picture.position},
                   {"duration", picture.duration},
                   {"rate", picture.rate}});
        if (news->isNewProblem(picture))
            print({{"type", "status"}, {"t", wallClock()}, {"text", picture.problem}});
        if (news->isNewSentence(picture))
            print({{"type", "sentence"},
                   {"t", wallClock()},
                   {"index", picture.sentence->index},
                   {"position", picture.position},
                   {"start", picture.sentence->start},
                   {"end", picture.sentence->end},
                   {"text", picture.sentence->text}});
    };
    return {show, [] {}, [=] { print({{"type", "end"}, {"t", wallClock()}}); }};
}

} // namespace tessarune
