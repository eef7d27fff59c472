#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace tessarune {

/// The lower part of a terminal, rewritten in place while settled text scrolls up above it. Each
/// change is flushed once, to reduce flicker. The cursor is hidden from the first change on.
class RewrittenLines {
  public:
    using Lines = std::vector<std::string>;

    explicit RewrittenLines(std::FILE* terminal) : terminal_(terminal) {}

    /// Prints `settled`, which will scroll up, and replaces the lower part by `below`.
    void rewrite(const Lines& settled, const Lines& below);
    /// Call after another program used the terminal: the next `rewrite` keeps the screen's content
    /// and writes below it.
    void beginBelow() { linesBelow_ = 0; }
    void showCursor();

  private:
    void write(const std::string& bytes) const;

    std::FILE* terminal_;
    std::size_t linesBelow_ = 0;
};

} // namespace tessarune
