#include "TessaruneCore/text/CodePoints.h"

#include "TessaruneCore/text/Text.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>

namespace tessarune::Text {

namespace {

constexpr char32_t replacement = 0xFFFD;

struct Range {
    char32_t first;
    char32_t last;
};

// Excluded: the soft hyphen, emoji (© ® ‼ ⁉ 〰 〽), marks, and code points that normalisation
// replaces (a few Greek letters, some spaces).
constexpr Range plainRanges[] = {
    {0x0000, 0x00A8}, {0x00AA, 0x00AC}, {0x00AF, 0x02FF}, {0x0388, 0x0482}, {0x048A, 0x052F},
    {0x1E00, 0x1EFF}, {0x2010, 0x2027}, {0x2030, 0x203B}, {0x203D, 0x2048}, {0x20A0, 0x20BF},
    {0x3000, 0x3029}, {0x3041, 0x3096}, {0x309B, 0x30FF}, {0x3400, 0x4DBF}, {0x4E00, 0x9FFF},
    {0xAC00, 0xD7A3}, {0xFF01, 0xFF9D},
};

bool isInCategories(char32_t codePoint, std::uint32_t mask) {
    return (U_GET_GC_MASK(static_cast<UChar32>(codePoint)) & mask) != 0;
}

} // namespace

char32_t decodeMultibyte(std::string_view text, std::size_t& at) {
    std::size_t next = at;
    UChar32 codePoint = 0;
    U8_NEXT(text.data(), next, text.size(), codePoint);
    at = codePoint < 0 ? at + 1 : next;
    return codePoint < 0 ? replacement : static_cast<char32_t>(codePoint);
}

char32_t decodeBackwards(std::string_view text, std::size_t& end) {
    std::size_t start = end - 1;
    while (start > 0 && end - start < U8_MAX_LENGTH && U8_IS_TRAIL(text[start]))
        --start;
    std::size_t next = start;
    const char32_t codePoint = decode(text, next);
    end = next == end ? start : end - 1;
    return end == start ? codePoint : replacement;
}

bool isASCII(std::string_view text) {
    const char* bytes = text.data();
    std::size_t remaining = text.size();
    for (; remaining >= sizeof(std::uint64_t); remaining -= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        if (word & 0x8080808080808080)
            return false;
        bytes += sizeof word;
    }
    for (; remaining > 0; --remaining) {
        if (static_cast<unsigned char>(*bytes++) >= 0x80)
            return false;
    }
    return true;
}

bool isPlainByTable(char32_t codePoint) {
    for (const auto& range : plainRanges) {
        if (codePoint <= range.last)
            return codePoint >= range.first;
    }
    return false;
}

bool isLetter(char32_t codePoint) {
    return isInCategories(codePoint, U_GC_L_MASK | U_GC_M_MASK);
}

bool isAlphanumeric(char32_t codePoint) {
    return isInCategories(codePoint, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
}

bool isLetterOrNumber(char32_t codePoint) {
    return isInCategories(codePoint, U_GC_L_MASK | U_GC_N_MASK);
}

bool isWhiteSpace(char32_t codePoint) {
    if (codePoint < 0x80)
        return isASCIIWhiteSpace(codePoint);
    constexpr char32_t lastWhiteSpace = 0x3000;
    return codePoint <= lastWhiteSpace && u_isUWhiteSpace(static_cast<UChar32>(codePoint));
}

bool isCJKIdeograph(char32_t codePoint) {
    return (codePoint >= 0x4E00 && codePoint <= 0x9FFF) ||
           (codePoint >= 0x3400 && codePoint <= 0x4DBF);
}

bool containsCJK(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        if (isCJKIdeograph(decode(text, at)))
            return true;
    }
    return false;
}

std::vector<char32_t> codePoints(std::string_view text) {
    std::vector<char32_t> result;
    for (std::size_t at = 0; at < text.size();)
        result.push_back(decode(text, at));
    return result;
}

char32_t firstCodePoint(std::string_view text) {
    std::size_t at = 0;
    return text.empty() ? 0 : decode(text, at);
}

void append(std::string& text, char32_t codePoint) {
    const bool isScalar = codePoint < 0x110000 && !U_IS_SURROGATE(static_cast<UChar32>(codePoint));
    char bytes[U8_MAX_LENGTH];
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, isScalar ? codePoint : replacement);
    text.append(bytes, length);
}

std::string_view withoutCutCharacter(std::string_view bytes) {
    auto size = std::ssize(bytes); // signed: the macro computes `size - 3`
    U8_TRUNCATE_IF_INCOMPLETE(bytes.data(), 0, size);
    return bytes.substr(0, static_cast<std::size_t>(size));
}

bool isValidUTF8(std::string_view bytes) {
    constexpr std::size_t stride = 64;
    for (std::size_t at = 0; at < bytes.size();) {
        if (static_cast<unsigned char>(bytes[at]) < 0x80) {
            const bool skips = bytes.size() - at >= stride && isASCII(bytes.substr(at, stride));
            at += skips ? stride : 1;
            continue;
        }
        if (surelyHasThreeBytes(bytes, at)) {
            at += 3;
            continue;
        }
        UChar32 codePoint = 0;
        U8_NEXT(bytes.data(), at, bytes.size(), codePoint);
        if (codePoint < 0)
            return false;
    }
    return true;
}

} // namespace tessarune::Text
