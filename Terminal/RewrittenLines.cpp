#include "Terminal/RewrittenLines.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

void RewrittenLines::rewrite(const Lines& settled, const Lines& below) {
    std::string out("\033[?25l");
    if (linesBelow_ > 1)
        out += "\033[" + std::to_string(linesBelow_ - 1) + "A";
    out += "\r\033[J";
    for (const std::string& line : settled)
        out += line + "\n";
    out += Text::joined(below, "\n");
    linesBelow_ = below.size();
    write(out);
}

void RewrittenLines::showCursor() {
    write("\033[?25h");
}

void RewrittenLines::write(const std::string& bytes) const {
    std::fwrite(bytes.data(), 1, bytes.size(), terminal_);
    std::fflush(terminal_);
}

} // namespace tessarune
