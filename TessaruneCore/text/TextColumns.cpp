#include "TessaruneCore/text/TextColumns.h"

#include "TessaruneCore/text/Text.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace tessarune::Text {

namespace {

std::size_t columnsOfCharacter(std::string_view character) {
    const char32_t first = firstCodePoint(character);
    if (first < 0x20 || first == 0x7F)
        return 0;
    if (first < 0x300)
        return 1;
    const auto codePoint = static_cast<UChar32>(first);
    const int width = u_getIntPropertyValue(codePoint, UCHAR_EAST_ASIAN_WIDTH);
    if (width == U_EA_WIDE || width == U_EA_FULLWIDTH)
        return 2;
    // A flag is a pair of regional indicators, each narrow by itself.
    if (u_hasBinaryProperty(codePoint, UCHAR_REGIONAL_INDICATOR))
        return 2;
    const int type = u_charType(codePoint);
    return type == U_NON_SPACING_MARK || type == U_FORMAT_CHAR ? 0 : 1;
}

constexpr char32_t unprintableMark = 0xFFFD;

bool isPrintable(char32_t codePoint) {
    if (codePoint == '\n' || codePoint == '\t')
        return true;
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    const bool changesDirection = (codePoint >= 0x202A && codePoint <= 0x202E) ||
                                  (codePoint >= 0x2066 && codePoint <= 0x2069);
    return !isControl && !changesDirection && codePoint != 0x2028 && codePoint != 0x2029;
}

/// Characters that never begin a line, and characters that never end one.
constexpr std::string_view closing = "，。、；：？！）」』】》”’…";
constexpr std::string_view opening = "（「『【《“‘";

bool isOneOf(std::string_view marks, std::string_view character) {
    return marks.find(character) != std::string_view::npos;
}

/// A line under construction. `breakAt_` is the last position at which it may be broken.
class Line {
  public:
    explicit Line(std::size_t width) : width_(width) {}

    void add(std::string_view character, std::vector<std::string>& lines) {
        const std::size_t cells = columnsOfCharacter(character);
        if (character == " ") {
            if (text_.empty())
                return;
            breakAt_ = text_.size();
        }
        if (isOneOf(closing, character) && breakAt_ == text_.size())
            breakAt_ = breakBefore_; // a closing mark stays with the character before it
        if (cells_ + cells > width_ && !text_.empty())
            breakInto(lines);
        if (character == " " && text_.empty())
            return; // the line break replaces the blank
        text_ += character;
        cells_ += cells;
        if (cells != 2 || isOneOf(opening, character))
            return;
        if (!isOneOf(closing, character))
            breakBefore_ = breakAt_;
        breakAt_ = text_.size(); // a wide character may end a line without a blank
    }

    void finish(std::vector<std::string>& lines) {
        const std::string_view rest = trimmed(text_);
        if (!rest.empty())
            lines.emplace_back(rest);
    }

  private:
    void breakInto(std::vector<std::string>& lines) {
        const std::size_t at = breakAt_ > 0 ? breakAt_ : text_.size();
        const std::string_view head = trimmed(std::string_view(text_).substr(0, at));
        if (!head.empty())
            lines.emplace_back(head);
        std::string rest(trimmed(std::string_view(text_).substr(at)));
        text_ = std::move(rest);
        cells_ = columns(text_);
        breakAt_ = 0;
        breakBefore_ = 0;
    }

    std::size_t width_;
    std::string text_;
    std::size_t cells_ = 0;
    std::size_t breakAt_ = 0;
    /// The value that `breakAt_` had before the last wide character that is not a mark.
    std::size_t breakBefore_ = 0;
};

} // namespace

std::size_t columns(std::string_view text) {
    std::size_t total = 0;
    for (const auto character : characters(text))
        total += columnsOfCharacter(character);
    return total;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    Line line(width > 0 ? width : 1);
    for (const auto character : characters(text))
        line.add(character, lines);
    line.finish(lines);
    return lines;
}

std::string fitted(std::string_view text, std::size_t width) {
    if (columns(text) <= width)
        return std::string(text);
    std::string head;
    std::size_t cells = 1; // of the "…"
    for (const auto character : characters(text)) {
        cells += columnsOfCharacter(character);
        if (cells > width)
            break;
        head += character;
    }
    return head + "…";
}

std::string padded(std::string_view text, std::size_t width) {
    return std::string(text) + std::string(width - std::min(width, columns(text)), ' ');
}

std::string printable(std::string_view text) {
    std::string shown;
    for (const char32_t codePoint : codePoints(text))
        append(shown, isPrintable(codePoint) ? codePoint : unprintableMark);
    return shown;
}

std::string printableLine(std::string_view text) {
    return printable(collapsingWhiteSpace(text));
}

} // namespace tessarune::Text
