#include "TessaruneCore/segmentation/SentenceCuts.h"

#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/text/CharacterWalker.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tessarune {

using namespace SentencePunctuation;

namespace {

/// In alphabetical order, without the dot at the end. There is deliberately no "may", and ordinary
/// words like "no" and "sun" stand here: a sentence that ends in one of them goes on.
constexpr std::array<std::string_view, 48> commonAbbreviations = {
    "a.m", "apr", "aug", "co",  "corp", "dec",   "dept", "dr",   "e.g",  "eq",  "etc", "feb",
    "fig", "fri", "i.e", "inc", "jan",  "jr",    "jul",  "jun",  "ltd",  "m.d", "mar", "mon",
    "mr",  "mrs", "ms",  "no",  "nov",  "oct",   "p.m",  "ph.d", "prof", "sat", "sep", "sept",
    "sr",  "st",  "sun", "thu", "thur", "thurs", "tue",  "tues", "u.k",  "u.s", "vs",  "wed"};
static_assert(std::is_sorted(commonAbbreviations.begin(), commonAbbreviations.end()));

constexpr std::size_t longestAbbreviation = 5;

/// Characters of a text that is ASCII throughout: one a byte.
struct ByteCharacters {
    std::string_view text;

    std::size_t size() const { return text.size(); }
    Traits traits(std::size_t index) const { return traitsOfASCII(text[index]); }
    std::string_view between(std::size_t first, std::size_t end) const {
        return text.substr(first, end - first);
    }
};

/// Characters of any text, looked up beforehand.
struct SplitCharacters {
    std::string_view text;
    const std::vector<std::size_t>& ends; ///< of what stands before each character, and of all
    const std::vector<Traits>& all;

    std::size_t size() const { return all.size(); }
    Traits traits(std::size_t index) const { return all[index]; }
    std::string_view between(std::size_t first, std::size_t end) const {
        return text.substr(ends[first], ends[end] - ends[first]);
    }
};

/// At least two parts between the dots, each of at most three characters: "a.k.a", "3.14".
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

/// Whether the dot before `end` belongs to its word. The word goes back to `start` at most.
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

/// Whether enough stands between the two for a clause of its own.
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

} // namespace

void SentenceCuts::cut(std::string_view text, const Rules& rules) {
    text = Text::trimmed(text);
    begin(text, rules);
    if (Text::isASCII(text)) {
        walk(ByteCharacters{text});
        return;
    }
    Text::CharacterWalker walker(text);
    for (std::string_view character; walker.next(character);)
        append(character);
    walk(SplitCharacters{text, ends_, traits_});
}

void SentenceCuts::cut(std::string_view text, const std::vector<std::string_view>& characters,
                       const Rules& rules) {
    begin(text, rules);
    for (const std::string_view character : characters)
        append(character);
    walk(SplitCharacters{text, ends_, traits_});
}

void SentenceCuts::begin(std::string_view text, const Rules& rules) {
    for (auto* level : {&sentences_, &clauses_}) {
        level->start = 0;
        level->pieces.clear();
    }
    sentences_.wanted = rules.sentences;
    clauses_.wanted = rules.clauses;
    limit_ = rules.limit;
    unit_ = rules.boundaryUnit == BoundaryUnit::characters && Text::containsCJK(text)
                ? BoundaryUnit::characters
                : BoundaryUnit::words;
    ends_.assign(1, 0);
    traits_.clear();
    joined_.clear();
}

void SentenceCuts::append(std::string_view character) {
    ends_.push_back(ends_.back() + character.size());
    traits_.push_back(traits(character));
}

template <typename Characters>
void SentenceCuts::walk(const Characters& characters) {
    const Traits marks = clauses_.wanted ? terminal | clause : terminal;
    const std::size_t count = characters.size();
    for (std::size_t i = 0; i < count; ++i) {
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
                !endsPiece(characters, *level, mark, i + 1))
                continue;
            level->pieces.push_back(Text::trimmed(characters.between(level->start, i + 1)));
            level->start = i + 1;
        }
    }
    for (auto* level : {&sentences_, &clauses_}) {
        if (!level->wanted || level->start == count)
            continue;
        const auto rest = Text::trimmed(characters.between(level->start, count));
        if (!rest.empty())
            appendLongTail(rest, level->pieces);
    }
}

template <typename Characters>
bool SentenceCuts::endsPiece(const Characters& characters, const Level& level, Traits mark,
                             std::size_t end) const {
    if ((mark & fullStop) != 0)
        return !isProtectedAbbreviation(characters, level.start, end);
    return (mark & terminal) != 0 || isLongEnoughForClause(characters, level.start, end, unit_);
}

void SentenceCuts::appendLongTail(std::string_view text, std::vector<std::string_view>& pieces) {
    const std::int64_t slack = unit_ == BoundaryUnit::characters
                                   ? SentenceSegmenter::minTailCharactersAfterLongSplit
                                   : SentenceSegmenter::minTailWordsAfterLongSplit;
    // A unit takes at least one byte, so a short text needs no counting.
    if (limit_ < 1 || static_cast<std::int64_t>(text.size()) - slack <= limit_) {
        pieces.push_back(text);
        return;
    }
    if (unit_ == BoundaryUnit::characters) {
        appendCharacterLongTail(text, pieces);
        return;
    }
    const std::vector<std::string_view> words = Text::splitOnWhiteSpace(text);
    auto left = static_cast<std::int64_t>(words.size());
    if (left - slack <= limit_) {
        pieces.push_back(text);
        return;
    }
    auto next = words.begin();
    while (left > 0) {
        const std::int64_t taken = left - slack > limit_ ? limit_ : left;
        pieces.push_back(
            keep(Text::joined(std::vector<std::string_view>(next, next + taken), " ")));
        next += taken;
        left -= taken;
    }
}

void SentenceCuts::appendCharacterLongTail(std::string_view text,
                                           std::vector<std::string_view>& pieces) {
    auto remaining = static_cast<std::int64_t>(Text::countOfNonWhiteSpace(text));
    if (remaining - SentenceSegmenter::minTailCharactersAfterLongSplit <= limit_) {
        pieces.push_back(text);
        return;
    }
    std::int64_t count = 0;
    std::size_t start = 0;
    Text::CharacterWalker walker(text);
    for (std::string_view character; walker.next(character);) {
        if (!Text::isWhiteSpace(character)) {
            ++count;
            --remaining;
        }
        if (count < limit_ || remaining <= SentenceSegmenter::minTailCharactersAfterLongSplit)
            continue;
        pieces.push_back(Text::trimmed(text.substr(start, walker.position() - start)));
        start = walker.position();
        count = 0;
    }
    const std::string_view rest = Text::trimmed(text.substr(start));
    if (!rest.empty())
        pieces.push_back(rest);
}

std::string_view SentenceCuts::keep(std::string text) {
    return joined_.emplace_back(std::move(text));
}

} // namespace tessarune
