#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessarune {

/// A text measured for subtitles: two lines of at most 42 columns stand on the screen at once,
/// which are 42 letters or 21 Chinese characters. Ranges are of pieces, between which a line may
/// break.
///
/// A value that points into the text.
class SubtitleText {
  public:
    static constexpr std::size_t mostColumns = 42;
    static constexpr std::size_t mostLines = 2;

    using Range = std::pair<std::size_t, std::size_t>; ///< first piece, and the one behind the last

    explicit SubtitleText(std::string_view text);

    std::size_t size() const { return pieces_.size(); }
    /// Bytes before a piece; at `size()` those of the whole text.
    std::size_t offset(std::size_t piece) const;
    std::size_t columns(Range range) const;
    bool fits(Range range) const { return countOfLines(range, mostColumns) <= mostLines; }

    /// As few lines as it needs, and these about equally long.
    std::vector<std::string> wrapped(Range range) const;

    /// Cuts all of it into `count` parts of about equal length; some are empty if there are not so
    /// many pieces.
    std::vector<Range> parts(std::size_t count) const;
    /// The smallest number of parts of which each fits, from `count` on.
    std::size_t countOfFittingParts(std::size_t count) const;

  private:
    struct Piece {
        std::size_t offset = 0;
        std::size_t before = 0;  ///< columns of all pieces before it
        std::size_t columns = 0; ///< without the blanks behind it
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
