#include "Terminal/RewrittenLines.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

namespace {

constexpr const char* cursorOff = "\033[?25l";
constexpr const char* cursorOn = "\033[?25h";
/// Clears the current line and everything below it.
constexpr const char* clearBelow = "\r\033[J";

/// Moves the cursor up, in the same column.
std::string up(std::size_t lines) {
    return "\033[" + std::to_string(lines) + "A";
}

} // namespace

void RewrittenLines::rewrite(const Lines& settled, const Lines& below) {
    std::string out(cursorOff);
    if (linesBelow_ > 1)
        out += up(linesBelow_ - 1); // the cursor is in the last of these lines
    out += clearBelow;
    for (const std::string& line : settled)
        out += line + "\n";
    out += Text::joined(below, "\n");
    linesBelow_ = below.size();
    write(out);
}

void RewrittenLines::showCursor() {
    write(cursorOn);
}

void RewrittenLines::write(const std::string& bytes) const {
    std::fwrite(bytes.data(), 1, bytes.size(), terminal_);
    std::fflush(terminal_);
}

} // namespace tessarune
