#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace tessarune {

/// The lower part of a terminal, rewritten in place while what is settled scrolls up above it. Each
/// change is one write, so that nothing flickers. The cursor is hidden from the first change on.
class RewrittenLines {
  public:
    using Lines = std::vector<std::string>;

    explicit RewrittenLines(std::FILE* terminal) : terminal_(terminal) {}

    /// Replaces the lower part by `settled`, which scrolls up from now on, and the lines of now.
    void rewrite(const Lines& settled, const Lines& below);
    /// After another program used the terminal: keeps what is on the screen and writes below it.
    void beginAnew() { linesBelow_ = 0; }
    void showCursor();

  private:
    void write(const std::string& bytes) const;

    std::FILE* terminal_;
    std::size_t linesBelow_ = 0;
};

} // namespace tessarune
