#include "TessaruneCore/segmentation/SentenceCuts.h"

#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/text/CharacterWalker.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tessarune {

using namespace SentencePunctuation;

namespace {

/// Sorted, without the final dot. "may" is left out on purpose. Ordinary words such as "no" and
/// "sun" are listed, so a sentence that ends in one of them is joined with the next.
constexpr std::array<std::string_view, 48> commonAbbreviations = {
    "a.m", "apr", "aug", "co",  "corp", "dec",   "dept", "dr",   "e.g",  "eq",  "etc", "feb",
    "fig", "fri", "i.e", "inc", "jan",  "jr",    "jul",  "jun",  "ltd",  "m.d", "mar", "mon",
    "mr",  "mrs", "ms",  "no",  "nov",  "oct",   "p.m",  "ph.d", "prof", "sat", "sep", "sept",
    "sr",  "st",  "sun", "thu", "thur", "thurs", "tue",  "tues", "u.k",  "u.s", "vs",  "wed"};
static_assert(std::is_sorted(commonAbbreviations.begin(), commonAbbreviations.end()));

/// The number of characters in the longest abbreviation without a dot inside.
constexpr std::size_t longestAbbreviation = 5;

/// Characters of an ASCII text: one per byte.
struct ByteCharacters {
    std::string_view text;

    std::size_t size() const { return text.size(); }
    Traits traits(std::size_t index) const { return traitsOfASCII(text[index]); }
    std::string_view between(std::size_t first, std::size_t end) const {
        return text.substr(first, end - first);
    }
};

/// Characters of any text, classified in advance.
struct SplitCharacters {
    std::string_view text;
    const std::vector<std::size_t>& offsets; ///< the byte offsets of each character and of the end
    const std::vector<Traits>& allTraits;

    std::size_t size() const { return allTraits.size(); }
    Traits traits(std::size_t index) const { return allTraits[index]; }
    std::string_view between(std::size_t first, std::size_t end) const {
        return text.substr(offsets[first], offsets[end] - offsets[first]);
    }
};

/// Whether the dots divide the word into at least two parts, each of at most three characters:
/// "a.k.a", "3.14".
bool isDottedShortForm(std::string_view word) {
    std::size_t parts = 0;
    std::size_t length = 0;
    Text::CharacterWalker walker(word);
    for (std::string_view character; walker.next(character);) {
        if (character == ".") {
            length = 0;
            continue;
        }
        if (++length > 3)
            return false;
        if (length == 1)
            ++parts;
    }
    return parts >= 2;
}

bool isInitial(std::string_view word) {
    if (Text::length(word) != 1)
        return false;
    const std::vector<char32_t> codePoints = Text::codePoints(word);
    return std::all_of(codePoints.begin(), codePoints.end(),
                       [](char32_t codePoint) { return Text::isLetter(codePoint); });
}

/// Whether the dot before `end` belongs to its word and ends no sentence. The word starts at or
/// after `start`.
template <typename Characters>
bool isProtectedAbbreviation(const Characters& characters, std::size_t start, std::size_t end) {
    std::size_t first = end;
    while (first > start && (characters.traits(first - 1) & whiteSpace) == 0)
        --first;
    while (first < end && (characters.traits(first) & wrapsWord) != 0)
        ++first;
    while (end > first && (characters.traits(end - 1) & wrapsWord) != 0)
        --end;
    if (end == first || (characters.traits(end - 1) & fullStop) == 0)
        return false;
    --end;

    bool dotted = false;
    for (std::size_t i = first; i < end; ++i)
        dotted = dotted || (characters.traits(i) & fullStop) != 0;
    if (!dotted && end - first > longestAbbreviation)
        return false;

    const std::string word = Text::lowercased(characters.between(first, end));
    if (std::binary_search(commonAbbreviations.begin(), commonAbbreviations.end(),
                           std::string_view(word)))
        return true;
    return dotted ? isDottedShortForm(word) : isInitial(word);
}

/// Whether the characters from `start` to `end` are enough for a clause.
template <typename Characters>
bool isLongEnoughForClause(const Characters& characters, std::size_t start, std::size_t end,
                           BoundaryUnit unit) {
    std::int64_t units = 0;
    bool inWord = false;
    for (std::size_t i = start; i < end && units < SentenceSegmenter::minClauseWords; ++i) {
        const bool white = (characters.traits(i) & whiteSpace) != 0;
        if (!white && (unit == BoundaryUnit::characters || !inWord))
            ++units;
        inWord = !white;
    }
    return units >= SentenceSegmenter::minClauseWords;
}

BoundaryUnit unitFor(std::string_view text, const SentenceCuts::Rules& rules) {
    return rules.boundaryUnit == BoundaryUnit::characters && Text::containsCJK(text)
               ? BoundaryUnit::characters
               : BoundaryUnit::words;
}

/// The length in bytes of the common prefix.
std::size_t commonBytes(std::string_view a, std::string_view b) {
    const std::size_t limit = std::min(a.size(), b.size());
    std::size_t at = 0;
    constexpr std::size_t stride = 16;
    while (at + stride <= limit && std::memcmp(a.data() + at, b.data() + at, stride) == 0)
        at += stride;
    while (at < limit && a[at] == b[at])
        ++at;
    return at;
}

} // namespace

void SentenceCuts::cut(std::string_view text, const Rules& rules) {
    text = Text::trimmed(text);
    const std::size_t unchanged = replaceText(text, rules);
    if (isASCII_) {
        walk(ByteCharacters{text_}, unchanged, BoundaryUnit::words);
        finish(rules.limit);
        return;
    }
    // Where a character ends depends on the code point after it.
    constexpr std::size_t longestCodePoint = 4; // bytes
    while (ends_.back() > 0 && ends_.back() + longestCodePoint > unchanged) {
        ends_.pop_back();
        traits_.pop_back();
    }
    const std::size_t unchangedCharacters = traits_.size();
    Text::CharacterWalker walker(std::string_view(text_).substr(ends_.back()));
    for (std::string_view character; walker.next(character);)
        append(character);
    walk(SplitCharacters{text_, ends_, traits_}, unchangedCharacters, unitFor(text_, rules));
    finish(rules.limit);
}

void SentenceCuts::cut(std::string_view text, const std::vector<std::string_view>& characters,
                       const Rules& rules) {
    replaceText(text, rules);
    isASCII_ = false;
    ends_.assign(1, 0);
    traits_.clear();
    for (const std::string_view character : characters)
        append(character);
    walk(SplitCharacters{text_, ends_, traits_}, 0, unitFor(text_, rules));
    finish(rules.limit);
}

/// Replaces the previous text. Returns how many leading bytes the two texts share, or 0 if the
/// previous cuts were made in another way.
std::size_t SentenceCuts::replaceText(std::string_view text, const Rules& rules) {
    const bool isASCII = Text::isASCII(text);
    const bool comparable = isASCII == isASCII_ && rules.sentences == sentences_.wanted &&
                            rules.clauses == clauses_.wanted;
    const std::size_t unchanged = comparable ? commonBytes(text, text_) : 0;
    text_ = text;
    isASCII_ = isASCII;
    sentences_.wanted = rules.sentences;
    clauses_.wanted = rules.clauses;
    return unchanged;
}

void SentenceCuts::append(std::string_view character) {
    ends_.push_back(ends_.back() + character.size());
    traits_.push_back(traits(character));
}

/// Recomputes the cuts from the first character at which they may have changed.
template <typename Characters>
void SentenceCuts::walk(const Characters& characters, std::size_t unchanged, BoundaryUnit unit) {
    // Whether a mark cuts depends on the closing marks and the character after it.
    std::size_t i = unit == unit_ ? std::min(unchanged, characters.size()) : 0;
    while (i > 0 && (characters.traits(i - 1) & (terminal | clause | closing)) != 0)
        --i;
    unit_ = unit;
    for (auto* level : {&sentences_, &clauses_}) {
        while (level->end() > i)
            level->cuts.pop_back();
    }

    const Traits marks = clauses_.wanted ? terminal | clause : terminal;
    const std::size_t count = characters.size();
    for (; i < count; ++i) {
        const Traits mark = characters.traits(i);
        if ((mark & marks) == 0)
            continue;
        while (i + 1 < count && (characters.traits(i + 1) & closing) != 0)
            ++i;
        if (i + 1 < count && (mark & cutsWithoutSpace) == 0 &&
            (characters.traits(i + 1) & whiteSpace) == 0)
            continue;
        for (auto* level : {&sentences_, &clauses_}) {
            if (!level->wanted || (level == &sentences_ && (mark & terminal) == 0) ||
                !endsPiece(characters, level->end(), i + 1, mark))
                continue;
            const auto piece = Text::trimmed(characters.between(level->end(), i + 1));
            level->cuts.push_back(
                {i + 1, static_cast<std::size_t>(piece.data() - text_.data()), piece.size()});
        }
    }
}

template <typename Characters>
bool SentenceCuts::endsPiece(const Characters& characters, std::size_t start, std::size_t end,
                             Traits mark) const {
    if ((mark & fullStop) != 0)
        return !isProtectedAbbreviation(characters, start, end);
    return (mark & terminal) != 0 || isLongEnoughForClause(characters, start, end, unit_);
}

/// Builds the pieces between the cuts, and the remainder.
void SentenceCuts::finish(std::int64_t limit) {
    joined_.clear();
    const std::string_view text = text_;
    const std::size_t count = isASCII_ ? text.size() : traits_.size();
    for (auto* level : {&sentences_, &clauses_}) {
        level->pieces.clear();
        if (!level->wanted)
            continue;
        for (const auto& cut : level->cuts)
            level->pieces.push_back(text.substr(cut.start, cut.size));
        const std::size_t end = isASCII_ ? level->end() : ends_[level->end()];
        const std::string_view remainder = Text::trimmed(text.substr(end));
        if (!remainder.empty())
            appendLongTail(remainder, count - level->end(), limit, level->pieces);
    }
}

/// Appends `text`, cut into several pieces if it is much longer than `limit`. `maximumLength` is an
/// upper bound of its number of characters. If this bound is short enough, nothing is counted.
void SentenceCuts::appendLongTail(std::string_view text, std::size_t maximumLength,
                                  std::int64_t limit, std::vector<std::string_view>& pieces) {
    const bool countsCharacters = unit_ == BoundaryUnit::characters;
    const std::int64_t slack = countsCharacters ? SentenceSegmenter::minTailCharactersAfterLongSplit
                                                : SentenceSegmenter::minTailWordsAfterLongSplit;
    const auto isShort = [&](std::size_t units) {
        return static_cast<std::int64_t>(units) - slack <= limit;
    };
    // A word and the blank after it have at least two characters.
    if (limit < 1 || isShort(countsCharacters ? maximumLength : (maximumLength + 1) / 2) ||
        isShort(countsCharacters ? Text::countOfNonWhiteSpace(text)
                                 : Text::countOfWhiteSpaceSeparated(text))) {
        pieces.push_back(text);
    } else if (countsCharacters) {
        appendCutCharacters(text, limit, pieces);
    } else {
        appendCutWords(text, limit, pieces);
    }
}

void SentenceCuts::appendCutWords(std::string_view text, std::int64_t limit,
                                  std::vector<std::string_view>& pieces) {
    const std::vector<std::string_view> words = Text::splitOnWhiteSpace(text);
    auto remaining = static_cast<std::int64_t>(words.size());
    auto next = words.begin();
    while (remaining > 0) {
        const std::int64_t count =
            remaining - SentenceSegmenter::minTailWordsAfterLongSplit > limit ? limit : remaining;
        pieces.push_back(joined_.emplace_back(
            Text::joined(std::vector<std::string_view>(next, next + count), " ")));
        next += count;
        remaining -= count;
    }
}

void SentenceCuts::appendCutCharacters(std::string_view text, std::int64_t limit,
                                       std::vector<std::string_view>& pieces) {
    auto remaining = static_cast<std::int64_t>(Text::countOfNonWhiteSpace(text));
    std::int64_t count = 0;
    std::size_t start = 0;
    Text::CharacterWalker walker(text);
    for (std::string_view character; walker.next(character);) {
        if (!Text::isWhiteSpace(character)) {
            ++count;
            --remaining;
        }
        if (count < limit || remaining <= SentenceSegmenter::minTailCharactersAfterLongSplit)
            continue;
        pieces.push_back(Text::trimmed(text.substr(start, walker.position() - start)));
        start = walker.position();
        count = 0;
    }
    const std::string_view rest = Text::trimmed(text.substr(start));
    if (!rest.empty())
        pieces.push_back(rest);
}

} // namespace tessarune
