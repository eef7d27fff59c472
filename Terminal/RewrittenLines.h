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
    /// After the terminal was somebody else's: what stands there stays.
    void beginAnew() { linesBelow_ = 0; }
    void showCursor();

  private:
    void write(const std::string& bytes) const;

    std::FILE* terminal_;
    std::size_t linesBelow_ = 0;
};

} // namespace tessarune
