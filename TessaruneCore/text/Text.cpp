#include "TessaruneCore/text/Text.h"

#include "TessaruneCore/text/CharacterWalker.h"
#include "TessaruneCore/text/CodePoints.h"
#include "TessaruneCore/text/TextSlowPath.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tessarune::Text {

namespace {

bool isContinuation(std::string_view text, std::size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
}

/// Whether the code point at `at` is plain or `at` is the end.
bool isPlainOrEnd(std::string_view text, std::size_t at) {
    return at == text.size() || isPlain(decode(text, at));
}

/// Whether `text` begins with a plain code point that is a character of its own.
bool beginsWithLonePlain(std::string_view text) {
    std::size_t at = 0;
    return isPlain(decode(text, at)) && isPlainOrEnd(text, at);
}

/// Whether a character certainly ends at `at`, inside `text`.
bool surelyEndsAt(std::string_view text, std::size_t at) {
    std::size_t end = at;
    const char32_t before = decodeBackwards(text, end);
    return isPlain(before) && isPlainOrEnd(text, at) && !(before == '\r' && text[at] == '\n');
}

/// Whether the first difference of two texts proves that they are not equivalent. It does if the
/// code points at the difference do not combine with their neighbours. Such a difference also
/// proves that `b` is not a prefix of `a`, unless `a` begins with the bytes of `b`.
bool surelyDiffer(std::string_view a, std::string_view b) {
    auto at = static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first -
                                       a.begin());
    while (at > 0 && (isContinuation(a, at) || isContinuation(b, at)))
        --at;
    if (at == a.size() || at == b.size())
        return isPlainOrEnd(a, at) && isPlainOrEnd(b, at);
    return beginsWithLonePlain(a.substr(at)) && beginsWithLonePlain(b.substr(at));
}

} // namespace

std::size_t CharacterWalker::endOfNext() {
    if (joinedEnds_.empty()) {
        std::size_t end = at_;
        const char32_t codePoint = decode(text_, end);
        if (codePoint == '\r' && end < text_.size() && text_[end] == '\n')
            return end + 1;
        if (isPlain(codePoint) && isPlainOrEnd(text_, end))
            return end;
        joinedEnds_ = SlowPath::characterEnds(text_.substr(at_, endOfJoinedRun() - at_));
        for (auto& joinedEnd : joinedEnds_)
            joinedEnd += at_;
        nextJoinedEnd_ = 0;
    }
    const std::size_t end = joinedEnds_[nextJoinedEnd_++];
    if (nextJoinedEnd_ == joinedEnds_.size())
        joinedEnds_.clear();
    return end;
}

/// The next position at which a character certainly begins.
std::size_t CharacterWalker::endOfJoinedRun() const {
    std::size_t end = at_;
    for (;;) {
        const char32_t before = decode(text_, end);
        if (end == text_.size())
            return end;
        std::size_t next = end;
        const char32_t after = decode(text_, next);
        // A plain code point joins its predecessor only if the predecessor is a leading jamo, a
        // prepended mark or a CR.
        const auto kind =
            u_getIntPropertyValue(static_cast<UChar32>(before), UCHAR_GRAPHEME_CLUSTER_BREAK);
        if (isPlain(after) && kind != U_GCB_PREPEND && kind != U_GCB_L && kind != U_GCB_CR)
            return end;
    }
}

std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> result;
    result.reserve(static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; })));
    CharacterWalker walker(text);
    for (std::string_view character; walker.next(character);)
        result.push_back(character);
    return result;
}

std::string_view lastCharacter(std::string_view text) {
    std::size_t start = text.size();
    const char32_t last = decodeBackwards(text, start);
    std::size_t previous = start;
    if (isPlain(last) && last != '\n' && (start == 0 || isPlain(decodeBackwards(text, previous))))
        return text.substr(start);
    return characters(text).back();
}

std::size_t length(std::string_view text) {
    std::size_t count = 0;
    CharacterWalker walker(text);
    for (std::string_view character; walker.next(character);)
        ++count;
    return count;
}

std::string_view prefix(std::string_view text, std::size_t count) {
    CharacterWalker walker(text);
    std::string_view character;
    while (count > 0 && walker.next(character))
        --count;
    return text.substr(0, walker.position());
}

std::string_view dropFirst(std::string_view text, std::size_t count) {
    return text.substr(prefix(text, count).size());
}

std::string truncated(std::string_view text, std::size_t limit, std::string_view mark) {
    const std::string_view kept = prefix(text, limit);
    std::string result(kept);
    if (kept.size() < text.size())
        result += mark;
    return result;
}

bool equal(std::string_view a, std::string_view b) {
    if (a == b)
        return true;
    return !surelyDiffer(a, b) && SlowPath::equal(a, b);
}

bool equal(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const std::string& x, const std::string& y) { return equal(x, y); });
}

bool hasPrefix(std::string_view text, std::string_view start) {
    if (start.empty() || text == start)
        return true;
    if (text.starts_with(start)) {
        if (surelyEndsAt(text, start.size()))
            return true;
    } else if (surelyDiffer(text, start)) {
        return false;
    }
    return SlowPath::hasPrefix(text, start);
}

std::string canonical(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        if (!isPlain(decode(text, at)))
            return SlowPath::canonical(text);
    }
    return std::string(text);
}

std::string lowercased(std::string_view text) {
    constexpr char32_t capitalSigma = 0x03A3;   // its lower case depends on its neighbours
    constexpr char32_t dottedCapitalI = 0x0130; // its lower case has two code points
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const char32_t codePoint = decode(text, at);
        if (isCJKIdeograph(codePoint)) {
            result.append(text, start, at - start);
        } else if (codePoint < 0x80) {
            const bool isUpper = codePoint >= 'A' && codePoint <= 'Z';
            result += static_cast<char>(isUpper ? codePoint - 'A' + 'a' : codePoint);
        } else if (isPlain(codePoint) && codePoint != capitalSigma && codePoint != dottedCapitalI) {
            append(result, static_cast<char32_t>(u_tolower(static_cast<UChar32>(codePoint))));
        } else {
            return SlowPath::lowercased(text);
        }
    }
    return result;
}

std::string shortest(double value) {
    // Between these bounds the number is written without an exponent.
    const double size = std::abs(value);
    const bool isPlainNumber = size == 0 || (size >= 1e-4 && size < 1e16);
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value,
                      isPlainNumber ? std::chars_format::fixed : std::chars_format::scientific)
            .ptr;
    std::string result(digits, end);
    if (isPlainNumber && result.find('.') == std::string::npos)
        result += ".0";
    return result;
}

std::string fixed(double value, int decimals) {
    // The longest double has 309 digits before the point.
    std::string result(static_cast<std::size_t>(312 + std::max(decimals, 0)), '\0');
    const auto end = std::to_chars(result.data(), result.data() + result.size(), value,
                                   std::chars_format::fixed, decimals)
                         .ptr;
    result.resize(static_cast<std::size_t>(end - result.data()));
    return result;
}

} // namespace tessarune::Text
