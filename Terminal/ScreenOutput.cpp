#include "Terminal/CaptionOutput.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace tessarune {

namespace {

constexpr std::string_view dim = "\033[2m";
constexpr std::string_view plain = "\033[0m";
constexpr std::string_view eraseBelow = "\033[J";
constexpr std::string_view hideCursor = "\033[?25l";
constexpr std::string_view showCursor = "\033[?25h";
/// The live text takes at most this many lines; of a longer one the end is shown.
constexpr std::size_t mostLiveLines = 6;

struct Size {
    std::size_t columns = 80;
    std::size_t rows = 24;
};

/// The lower part of a terminal, rewritten in place. Each change is one write, so that nothing
/// flickers.
class Screen {
  public:
    Screen(std::FILE* terminal, bool quiet) : terminal_(terminal), quiet_(quiet) {}

    void update(const CaptionCore& core) {
        std::string settled;
        const auto& rows = *core.committedSegments;
        const std::size_t width = size().columns;
        for (; printed_ < rows.size(); ++printed_)
            addLines(settled, rows[printed_].sourceText, width);
        std::string live = liveText(core);
        if (settled.empty() && live == live_ && width == width_)
            return;
        live_ = std::move(live);
        rewrite(settled);
    }

    void status(std::string_view text) {
        if (quiet_)
            return;
        std::string line(dim);
        addLines(line, "· " + std::string(text), size().columns);
        rewrite(line + std::string(plain));
    }

    void progress(std::string_view text) {
        if (quiet_)
            return;
        live_ = text;
        rewrite("");
    }

    void finish(const CaptionCore& core) {
        update(core);
        live_.clear();
        rewrite("");
        write(showCursor);
    }

  private:
    static void addLines(std::string& to, std::string_view text, std::size_t width) {
        for (const auto& line : Text::wrapped(text, width))
            to += line + "\n";
    }

    Size size() const {
        Size size;
        winsize window{};
        if (ioctl(fileno(terminal_), TIOCGWINSZ, &window) == 0 && window.ws_col > 0) {
            size.columns = window.ws_col;
            size.rows = std::max<std::size_t>(window.ws_row, 2);
        }
        return size;
    }

    /// Replaces the live lines on the screen by `settled`, which scrolls up from now on, and the
    /// live lines of now.
    void rewrite(const std::string& settled) {
        const Size now = size();
        std::string out(hideCursor);
        if (liveLines_ > 1)
            out += "\033[" + std::to_string(liveLines_ - 1) + "A";
        out += "\r";
        out += eraseBelow;
        out += settled;
        auto lines = Text::wrapped(live_, now.columns);
        const std::size_t room = std::min(mostLiveLines, now.rows - 1);
        if (lines.size() > room)
            lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(room));
        out += dim;
        out += Text::joined(lines, "\n");
        out += plain;
        liveLines_ = lines.size();
        width_ = now.columns;
        write(out);
    }

    void write(std::string_view bytes) const {
        std::fwrite(bytes.data(), 1, bytes.size(), terminal_);
        std::fflush(terminal_);
    }

    std::FILE* terminal_;
    bool quiet_;
    std::size_t printed_ = 0;
    std::string live_;
    std::size_t liveLines_ = 0;
    std::size_t width_ = 0;
};

} // namespace

CaptionOutput makeScreenOutput(std::FILE* terminal, bool quiet) {
    auto screen = std::make_shared<Screen>(terminal, quiet);
    return {[screen](const CaptionCore& core) { screen->update(core); },
            [screen](std::string_view text) { screen->status(text); },
            [screen](std::string_view text) { screen->progress(text); },
            [screen](const CaptionCore& core) { screen->finish(core); }};
}

} // namespace tessarune
