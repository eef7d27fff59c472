#include "Tessarune/vocabulary/WordForms.h"

#include "TessaruneCore/text/CodePoints.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <array>

namespace tessarune::WordForms {

namespace {

bool isPlainLetter(char byte) {
    return byte >= 'a' && byte <= 'z';
}

bool isWordCharacter(char32_t codePoint) {
    return codePoint == '_' || Text::isAlphanumeric(codePoint);
}

/// The run of a to z that ends at `end`; empty if it is only a part of a longer word.
std::string_view letterRunBefore(std::string_view text, std::size_t end) {
    std::size_t start = end;
    while (start > 0 && isPlainLetter(text[start - 1]))
        --start;
    std::size_t before = start;
    if (start > 0 && isWordCharacter(Text::decodeBackwards(text, before)))
        return {};
    return text.substr(start, end - start);
}

/// The run of a to z that begins at `start`; empty if it is only a part of a longer word.
std::string_view letterRunAt(std::string_view text, std::size_t start) {
    std::size_t end = start;
    while (end < text.size() && isPlainLetter(text[end]))
        ++end;
    std::size_t after = end;
    if (end < text.size() && isWordCharacter(Text::decode(text, after)))
        return {};
    return text.substr(start, end - start);
}

/// What a contraction stands for.
struct Expansion {
    std::size_t lettersKept = 0; ///< of the word before the apostrophe
    std::string_view ending;     ///< replaces the rest of the contraction
};

std::optional<Expansion> expansionOfS(std::string_view stem) {
    static constexpr std::array subjects{"it",   "he",  "she",   "that", "there",
                                         "what", "who", "where", "how",  "here"};
    const bool isSubject = std::ranges::find(subjects, stem) != subjects.end();
    return Expansion{stem.size(), isSubject ? " is" : ""};
}

std::optional<Expansion> expansion(std::string_view stem, std::string_view ending) {
    if (stem.empty())
        return std::nullopt;
    if (ending == "t" && stem.ends_with('n') && stem.size() > 1) {
        if (stem == "won")
            return Expansion{0, "will not"};
        if (stem == "shan")
            return Expansion{3, "ll not"}; // "sha" + "ll not"
        return stem == "can" ? Expansion{3, " not"} : Expansion{stem.size() - 1, " not"};
    }
    if (ending == "m" && stem == "i")
        return Expansion{stem.size(), " am"};
    if (ending == "re")
        return Expansion{stem.size(), " are"};
    if (ending == "ve")
        return Expansion{stem.size(), " have"};
    if (ending == "ll")
        return Expansion{stem.size(), " will"};
    if (ending == "d")
        return Expansion{stem.size(), " would"};
    return ending == "s" ? expansionOfS(stem) : std::nullopt;
}

std::string withPlainQuotationMarks(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        switch (Text::decode(text, at)) {
        case U'‘':
        case U'’':
        case U'`':
        case U'´':
            plain += '\'';
            break;
        case U'“':
        case U'”':
            plain += '"';
            break;
        default:
            plain += text.substr(start, at - start);
        }
    }
    return plain;
}

} // namespace

std::string prepare(std::string_view text) {
    const std::string plain = Text::lowercased(withPlainQuotationMarks(text));
    std::string expanded;
    expanded.reserve(plain.size());
    std::size_t done = 0; // bytes of `plain` that are already expanded
    for (auto mark = plain.find('\''); mark != std::string::npos;
         mark = plain.find('\'', std::max(mark + 1, done))) {
        const std::string_view stem = letterRunBefore(plain, mark);
        const std::string_view ending = letterRunAt(plain, mark + 1);
        const auto found = expansion(stem, ending);
        if (!found)
            continue;
        const std::size_t start = mark - stem.size();
        // In "shouldn't've", the stem of the second apostrophe is the "t", which was already
        // replaced as the ending of the first. Nothing of the stem is left to copy then.
        if (start >= done)
            expanded.append(plain, done, start + found->lettersKept - done);
        expanded += found->ending;
        done = mark + 1 + ending.size();
    }
    expanded.append(plain, done);
    return expanded;
}

std::optional<std::string> normalizeToken(std::string_view token) {
    std::string kept;
    bool hasLetter = false;
    for (std::size_t at = 0; at < token.size();) {
        const std::size_t start = at;
        const char32_t codePoint = Text::decode(token, at);
        const bool isLetter = Text::isLetter(codePoint);
        hasLetter = hasLetter || isLetter;
        if (isLetter || codePoint == '-' || codePoint == '\'')
            kept += token.substr(start, at - start);
        else
            kept += ' ';
    }
    if (!hasLetter)
        return std::nullopt;
    // A search for bytes is right: no byte of a non-ASCII letter equals one of these.
    const auto first = kept.find_first_not_of(" -'");
    std::string trimmed = kept.substr(first, kept.find_last_not_of(" -'") - first + 1);
    if (Text::length(trimmed) == 1 && trimmed != "i" && trimmed != "a")
        return std::nullopt;
    return trimmed;
}

} // namespace tessarune::WordForms
