#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessarune {

/// Measures a text for subtitles: the screen has room for two lines of at most 42 columns, which
/// are 42 letters or 21 Chinese characters. Ranges are ranges of pieces; a line may break between
/// two pieces.
///
/// A value that points into the text.
class SubtitleText {
  public:
    static constexpr std::size_t mostColumns = 42;
    static constexpr std::size_t mostLines = 2;

    using Range = std::pair<std::size_t, std::size_t>; ///< first piece, and one past the last

    explicit SubtitleText(std::string_view text);

    std::size_t size() const { return pieces_.size(); }
    /// The byte offset of a piece; at `size()` the length of the text.
    std::size_t offset(std::size_t piece) const;
    std::size_t columns(Range range) const;
    bool fits(Range range) const { return countOfLines(range, mostColumns) <= mostLines; }

    /// As few lines as possible, of about equal length.
    std::vector<std::string> wrapped(Range range) const;

    /// Cuts the text into `count` parts of about equal length; some are empty if there are fewer
    /// pieces.
    std::vector<Range> parts(std::size_t count) const;
    /// The smallest number of parts, at least `count`, with which each part fits.
    std::size_t countOfFittingParts(std::size_t count) const;

  private:
    struct Piece {
        std::size_t offset = 0;
        std::size_t before = 0;  ///< columns of all pieces before it
        std::size_t columns = 0; ///< without surrounding blanks
    };

    void add(std::string_view piece);
    std::size_t countOfLines(Range range, std::size_t width) const;
    /// The end of the line that begins at `first`.
    std::size_t endOfLine(std::size_t first, std::size_t last, std::size_t width) const;

    std::string_view text_;
    std::vector<Piece> pieces_;
    std::size_t allColumns_ = 0;
};

} // namespace tessarune
