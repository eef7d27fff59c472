#include "TessaruneCore/text/CharacterWalker.h"
#include "TessaruneCore/text/CodePoints.h"
#include "TessaruneCore/text/Text.h"

#include <unicode/uchar.h>

namespace tessarune::Text {

namespace {

bool isSpaceOrNewLine(char32_t codePoint) {
    if (codePoint < 0x80)
        return isASCIIWhiteSpace(codePoint);
    return codePoint == 0x85 || (U_GET_GC_MASK(static_cast<UChar32>(codePoint)) & U_GC_Z_MASK) != 0;
}

bool isBlankOrTab(char32_t codePoint) {
    if (codePoint < 0x80)
        return codePoint == ' ' || codePoint == '\t';
    return u_charType(static_cast<UChar32>(codePoint)) == U_SPACE_SEPARATOR;
}

bool isVisibleASCII(char byte) {
    return byte > ' ' && byte < '\x7F';
}

template <typename Test>
std::string_view trimmedOf(std::string_view text, Test isTrimmed) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    if (!text.empty() && isVisibleASCII(text.front()) && isVisibleASCII(text.back()))
        return text;
    std::size_t start = 0;
    for (std::size_t next = 0; next < text.size() && isTrimmed(decode(text, next)); start = next) {
    }
    std::size_t end = text.size();
    for (std::size_t next = end; next > start && isTrimmed(decodeBackwards(text, next));
         end = next) {
    }
    return text.substr(start, end - start);
}

/// Calls `use` with each maximal run of characters that are not separators.
template <typename Test, typename Use>
void forEachPiece(std::string_view text, Test isSeparator, Use use) {
    std::size_t start = 0;
    std::size_t end = 0;
    CharacterWalker walker(text);
    for (std::string_view character; walker.next(character);) {
        if (isSeparator(character)) {
            if (end > start)
                use(text.substr(start, end - start));
            start = walker.position();
        }
        end = walker.position();
    }
    if (end > start)
        use(text.substr(start, end - start));
}

/// Counts the runs of bytes between separators, without branching.
template <typename Test>
std::size_t countOfByteRuns(std::string_view text, Test isSeparator) {
    std::size_t count = 0;
    bool wasSeparator = true;
    for (const char byte : text) {
        const bool separates = isSeparator(byte);
        count += static_cast<std::size_t>(wasSeparator && !separates);
        wasSeparator = separates;
    }
    return count;
}

bool isBlank(std::string_view character) {
    return character == " ";
}

/// Whether the blank at `at` is certainly a character of its own.
bool isLoneBlank(std::string_view text, std::size_t at) {
    std::size_t end = at;
    std::size_t next = at + 1;
    return (at == 0 || isPlain(decodeBackwards(text, end))) &&
           (next == text.size() || isPlain(decode(text, next)));
}

template <typename Test>
std::vector<std::string_view> split(std::string_view text, Test isSeparator) {
    std::vector<std::string_view> pieces;
    forEachPiece(text, isSeparator, [&](std::string_view piece) { pieces.push_back(piece); });
    return pieces;
}

template <typename Test>
std::size_t countOfPieces(std::string_view text, Test isSeparator) {
    std::size_t count = 0;
    forEachPiece(text, isSeparator, [&](std::string_view) { ++count; });
    return count;
}

bool isWhite(std::string_view character) {
    const auto byte = static_cast<unsigned char>(character.front());
    if (byte < 0x80)
        return isASCIIWhiteSpace(byte);
    return isWhiteSpace(firstCodePoint(character));
}

template <typename Part>
std::string join(const std::vector<Part>& parts, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            result += separator;
        result += parts[i];
    }
    return result;
}

} // namespace

std::string_view trimmed(std::string_view text) {
    return trimmedOf(text, isSpaceOrNewLine);
}

std::string_view trimmedOfBlanks(std::string_view text) {
    return trimmedOf(text, isBlankOrTab);
}

bool isWhiteSpace(std::string_view character) {
    return !character.empty() && isWhite(character);
}

std::vector<std::string_view> splitAtBlanks(std::string_view text) {
    return split(text, isBlank);
}

std::vector<std::string_view> splitOnWhiteSpace(std::string_view text) {
    return split(text, isWhite);
}

std::size_t countOfBlankSeparated(std::string_view text) {
    if (isASCII(text))
        return countOfByteRuns(text, [](char byte) { return byte == ' '; });
    std::size_t count = 0;
    std::size_t start = 0;
    for (std::size_t at = 0; (at = text.find(' ', start)) != text.npos; start = at + 1) {
        if (!isLoneBlank(text, at))
            return countOfPieces(text, isBlank);
        count += at > start ? 1 : 0;
    }
    return count + (start < text.size() ? 1 : 0);
}

std::size_t countOfWhiteSpaceSeparated(std::string_view text) {
    if (isASCII(text))
        return countOfByteRuns(text,
                               [](char byte) { return isWhiteSpace(static_cast<char32_t>(byte)); });
    return countOfPieces(text, isWhite);
}

std::size_t countOfNonWhiteSpace(std::string_view text) {
    std::size_t count = 0;
    CharacterWalker walker(text);
    for (std::string_view character; walker.next(character);) {
        if (!isWhite(character))
            ++count;
    }
    return count;
}

std::string collapsingWhiteSpace(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    bool inRun = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const bool isWhitePoint = isWhiteSpace(decode(text, at));
        if (!isWhitePoint)
            result += text.substr(start, at - start);
        else if (!inRun)
            result += ' ';
        inRun = isWhitePoint;
    }
    return result;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    return join(parts, separator);
}

std::string joined(const std::vector<std::string_view>& parts, std::string_view separator) {
    return join(parts, separator);
}

} // namespace tessarune::Text
