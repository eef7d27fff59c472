#include "TessaruneCore/segmentation/SentenceStabilityKey.h"

#include "TessaruneCore/text/CodePoints.h"
#include "TessaruneCore/text/Text.h"

#include <array>
#include <optional>

namespace tessarune::SentenceStabilityKey {

namespace {

bool isIgnored(char32_t codePoint) {
    switch (codePoint) {
    case U'.':
    case U',':
    case U'?':
    case U'!':
    case U';':
    case U':':
    case U'"':
    case U'\'':
    case U'-':
    case U'…':
    case U'—':
    case U'，':
    case U'。':
    case U'？':
    case U'！':
    case U'；':
    case U'、':
        return true;
    default:
        return false;
    }
}

/// The contribution of each ASCII byte to the key: the byte in lower case, a blank for white space,
/// or 0 if it is ignored.
consteval std::array<char, 128> makeAsciiContributions() {
    std::array<char, 128> table{};
    for (std::size_t i = 1; i < table.size(); ++i)
        table[i] = static_cast<char>(i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
    for (char c : {'.', ',', '?', '!', ';', ':', '"', '\'', '-'})
        table[static_cast<unsigned char>(c)] = 0;
    for (char c : {'\t', '\n', '\v', '\f', '\r'})
        table[static_cast<unsigned char>(c)] = ' ';
    return table;
}
constexpr std::array<char, 128> asciiContributions = makeAsciiContributions();

std::string normalizeASCII(std::string_view text) {
    std::string key;
    key.reserve(text.size());
    bool isBlankPending = false;
    for (const char byte : text) {
        const char contribution = asciiContributions[static_cast<unsigned char>(byte)];
        if (contribution == ' ') {
            isBlankPending = true;
        } else if (contribution != 0 || byte == 0) {
            if (isBlankPending && !key.empty())
                key += ' ';
            isBlankPending = false;
            key += contribution;
        }
    }
    return key;
}

/// The fast path; `nullopt` if a code point needs the general one.
std::optional<std::string> normalizePlain(std::string_view text) {
    const std::string lower = Text::lowercased(text);
    std::string key;
    key.reserve(lower.size());
    bool isBlankPending = false;
    for (std::size_t at = 0; at < lower.size();) {
        const std::size_t start = at;
        const char32_t codePoint = Text::decode(lower, at);
        if (!Text::isPlain(codePoint))
            return std::nullopt;
        if (Text::isWhiteSpace(codePoint)) {
            isBlankPending = true;
        } else if (!isIgnored(codePoint)) {
            if (isBlankPending && !key.empty())
                key += ' ';
            isBlankPending = false;
            key.append(lower, start, at - start);
        }
    }
    return key;
}

} // namespace

std::string normalize(std::string_view text) {
    if (Text::isASCII(text))
        return normalizeASCII(text);
    const auto key = normalizePlain(text);
    return key ? *key : normalizeByCodePoints(text);
}

std::string normalizeByCodePoints(std::string_view text) {
    std::string kept;
    for (const char32_t codePoint : Text::codePoints(Text::lowercased(text))) {
        if (!isIgnored(codePoint))
            Text::append(kept, codePoint);
    }
    return Text::canonical(Text::trimmedOfBlanks(Text::collapsingWhiteSpace(kept)));
}

std::vector<std::string> normalize(const std::vector<std::string>& texts) {
    std::vector<std::string> keys;
    keys.reserve(texts.size());
    for (const auto& text : texts)
        keys.push_back(normalize(text));
    return keys;
}

} // namespace tessarune::SentenceStabilityKey
