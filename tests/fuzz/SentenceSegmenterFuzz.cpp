// Pieces are trimmed and not empty, and joined they equal the text except for white space.
#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/text/Text.h"
#include "tests/fuzz/Fuzz.h"

#include <string>
#include <vector>

namespace {

using namespace tessarune;

bool extendsCharacter(char32_t codePoint) {
    if (codePoint < 0x80)
        return false;
    std::string pair = "a";
    Text::append(pair, codePoint);
    return Text::length(pair) == 1;
}

/// The text without white space and without extending marks: a blank with a combining mark is still
/// a blank, and both may be dropped.
std::string substance(std::string_view text) {
    std::string result;
    for (const char32_t codePoint : Text::codePoints(text))
        if (!Text::isWhiteSpace(codePoint) && !extendsCharacter(codePoint))
            Text::append(result, codePoint);
    return result;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool clauses = input.flag();
    const BoundaryUnit unit = input.flag() ? BoundaryUnit::characters : BoundaryUnit::words;
    const std::int64_t limit = input.byte() % 60;
    const std::string_view text = input.rest();

    const std::vector<std::string> pieces = SentenceSegmenter::pieces(text, clauses, limit, unit);
    std::string joined;
    for (const std::string& piece : pieces) {
        fuzz::require(!piece.empty(), "an empty piece");
        fuzz::require(Text::trimmed(piece) == piece, "a piece that is not trimmed");
        joined += piece + '\n'; // separated, so that two pieces cannot join into one character
    }
    fuzz::require(substance(joined) == substance(text), "lost or doubled text");
    return 0;
}
