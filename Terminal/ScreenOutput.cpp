#include "Terminal/CaptionOutput.h"
#include "Terminal/PrintedRows.h"
#include "Terminal/RewrittenLines.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace tessarune {

namespace {

constexpr std::string_view dim = "\033[2m";
constexpr std::string_view plain = "\033[0m";
/// The maximum number of lines of live text; of a longer text only the end is shown.
constexpr std::size_t maximumLiveLines = 6;
constexpr std::size_t maximumPreviewLines = 3;
/// The maximum number of rows in the rewritten part that wait for their translations.
constexpr std::size_t maximumWaitingRows = 8;
constexpr std::string_view indent = "  ";

using Lines = std::vector<std::string>;

void append(Lines& to, Lines lines) {
    std::ranges::move(lines, std::back_inserter(to));
}

/// Wraps a text for the terminal, without control characters.
Lines wrapped(std::string_view text, std::size_t width) {
    return Text::wrapped(Text::printableLine(text), width);
}

Lines indented(std::string_view text, std::size_t width) {
    Lines lines = wrapped(text, width > 2 * indent.size() ? width - indent.size() : width);
    for (std::string& line : lines)
        line.insert(0, indent);
    return lines;
}

Lines dimmed(Lines lines) {
    for (std::string& line : lines)
        line.insert(0, dim).append(plain);
    return lines;
}

/// The last `count` lines.
Lines tail(Lines lines, std::size_t count) {
    if (lines.size() > count)
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
    return lines;
}

/// Captions on a terminal: settled rows scroll up, and text that may still change is rewritten
/// below them.
class Screen {
  public:
    Screen(std::FILE* terminal, ScreenSizeSource size, bool quiet)
        : lower_(terminal), size_(std::move(size)), quiet_(quiet) {}

    void update(const CaptionPicture& picture) {
        const ScreenSize size = size_();
        const CaptionCore::Rows& rows = *picture.captions.committedSegments;
        printed_.follow(rows);
        Lines settled = lateOutcomes(picture, size.columns);
        const Lines live = liveLines(picture, size);
        while (printed_.count() < rows.size() && isSettled(picture, rows[printed_.count()]))
            append(settled, rowLines(picture, printed_.next(rows), size.columns));
        Lines waiting = waitingLines(picture, size.columns);
        // Lines that scrolled off the screen could not be rewritten.
        while (rows.size() - printed_.count() > maximumWaitingRows ||
               (printed_.count() < rows.size() && waiting.size() + live.size() >= size.rows)) {
            append(settled, rowLines(picture, printed_.next(rows), size.columns));
            waiting = waitingLines(picture, size.columns);
        }
        printed_.news(rows); // outcomes that were printed with their rows are no longer news
        append(waiting, live);
        if (!settled.empty() || waiting != shown_ || size.columns != width_)
            rewrite(settled, std::move(waiting), size.columns);
    }

    void status(std::string_view text) {
        if (quiet_)
            return;
        const std::size_t width = size_().columns;
        rewrite(dimmed(wrapped("· " + std::string(text), width)), shown_, width);
    }

    /// Shows the progress below the live text until `finish`.
    void progress(std::string_view text) {
        if (quiet_)
            return;
        progress_ = Text::printableLine(text);
        rewrite({}, shown_, size_().columns);
    }

    void redraw() {
        lower_.beginBelow();
        rewrite({}, shown_, size_().columns);
    }

    void finish(CaptionPicture picture) {
        picture.awaitsTranslations = false;
        progress_.clear();
        update(picture);
        rewrite({}, {}, size_().columns);
        lower_.showCursor();
    }

  private:
    static bool isSettled(const CaptionPicture& picture, const CaptionSegment& row) {
        return !picture.awaitsTranslations || !TranslationSegmentMutator::isPending(row);
    }

    /// The lines of a committed row and of its translation, failure or preview.
    static Lines rowLines(const CaptionPicture& picture, const CaptionSegment& row,
                          std::size_t width) {
        Lines lines = wrapped(row.sourceText, width);
        if (showsOutcome(row))
            append(lines, outcomeLines(picture, row, width));
        else if (hasPreviewOf(picture.frame, row.sourceText))
            append(lines, dimmed(indented(picture.frame.ghostTranslationText, width)));
        return lines;
    }

    static Lines outcomeLines(const CaptionPicture& picture, const CaptionSegment& row,
                              std::size_t width) {
        if (row.translatedText)
            return indented(*row.translatedText, width);
        return dimmed(
            indented("✗ " + translationFailureText(*row.translationError, picture.target), width));
    }

    /// The lines of translations and failures whose rows have already scrolled up.
    Lines lateOutcomes(const CaptionPicture& picture, std::size_t width) {
        const CaptionCore::Rows& rows = *picture.captions.committedSegments;
        Lines lines;
        for (const std::size_t i : printed_.news(rows)) {
            append(lines, dimmed(wrapped("↑ " + sourceText(unitRows(rows, i)), width)));
            append(lines, outcomeLines(picture, rows[i], width));
        }
        return lines;
    }

    Lines waitingLines(const CaptionPicture& picture, std::size_t width) const {
        const CaptionCore::Rows& rows = *picture.captions.committedSegments;
        Lines lines;
        for (std::size_t i = printed_.count(); i < rows.size(); ++i)
            append(lines, rowLines(picture, rows[i], width));
        return lines;
    }

    static Lines liveLines(const CaptionPicture& picture, const ScreenSize& size) {
        const LiveCaptionDisplayFrame& frame = picture.frame;
        Lines preview;
        if (std::any_of(frame.liveTailRows.begin(), frame.liveTailRows.end(),
                        [&](const auto& row) { return hasPreviewOf(frame, row.sourceText); }))
            preview = tail(indented(frame.ghostTranslationText, size.columns), maximumPreviewLines);
        Lines lines = tail(wrapped(liveText(frame), size.columns), maximumLiveLines);
        append(lines, std::move(preview));
        return dimmed(tail(std::move(lines), size.rows - 1));
    }

    /// Prints `settled`, which scrolls up, and replaces the lower part by the current lines.
    void rewrite(const Lines& settled, Lines lines, std::size_t width) {
        Lines below = lines;
        if (!progress_.empty())
            append(below, dimmed({progress_}));
        lower_.rewrite(settled, below);
        shown_ = std::move(lines);
        width_ = width;
    }

    RewrittenLines lower_;
    ScreenSizeSource size_;
    bool quiet_;
    PrintedRows printed_;   ///< the rows that have scrolled up
    Lines shown_;           ///< the rewritten lines, without the progress
    std::string progress_;  ///< the line below them; empty: none
    std::size_t width_ = 0; ///< the columns to which `shown_` was wrapped
};

} // namespace

bool isScreen(int descriptor) {
    const char* kind = std::getenv("TERM");
    return isatty(descriptor) != 0 && kind && *kind && std::string_view(kind) != "dumb";
}

ScreenSizeSource sizeOf(std::FILE* terminal) {
    return [terminal] {
        ScreenSize size;
        winsize window{};
        if (ioctl(fileno(terminal), TIOCGWINSZ, &window) == 0 && window.ws_col > 0) {
            size.columns = window.ws_col;
            size.rows = std::max<std::size_t>(window.ws_row, 2);
        }
        return size;
    };
}

CaptionOutput makeScreenOutput(std::FILE* terminal, ScreenSizeSource size, bool quiet) {
    auto screen = std::make_shared<Screen>(terminal, std::move(size), quiet);
    return {[screen](const CaptionPicture& picture) { screen->update(picture); },
            [screen](std::string_view text) { screen->status(text); },
            [screen](std::string_view text) { screen->progress(text); },
            [screen] { screen->redraw(); },
            [screen](const CaptionPicture& picture) { screen->finish(picture); }};
}

} // namespace tessarune
