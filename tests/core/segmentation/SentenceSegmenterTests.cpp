#include "TessaruneCore/segmentation/SentenceCuts.h"
#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextSlowPath.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tessarune {
namespace {

using Pieces = std::vector<std::string>;

std::string words(int count, const std::string& separator = " ") {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i > 0 ? separator : "") + "w" + std::to_string(i);
    return text;
}

std::string repeated(const std::string& unit, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += unit;
    return text;
}

TEST(SentenceSegmenterTests, EndsSentencesAtTerminalPunctuation) {
    const std::pair<std::string, Pieces> cases[] = {
        {"", {}},
        {" \t\n\u3000", {}},
        {"  no end yet ", {"no end yet"}},
        {"OK. Yes. No", {"OK.", "Yes.", "No"}},
        {"Really?! Yes", {"Really?!", "Yes"}},
        {"Wait... what", {"Wait...", "what"}},
        {"One:  two; three, four… five", {"One:  two; three, four… five"}},
        {"It costs 3.5 dollars.", {"It costs 3.5 dollars."}},
        {"Mixed.\tWhite\u00A0space.\r\nHere", {"Mixed.", "White\u00A0space.", "Here"}},
        // closing marks stay with their sentence
        {"He said \"Stop.\" Then left", {"He said \"Stop.\"", "Then left"}},
        {"(Really?) [Yes!]} “Sure.”’ 」 end", {"(Really?)", "[Yes!]}", "“Sure.”’", "」 end"}},
        {"\"Stop.\"he said", {"\"Stop.\"he said"}},
        // Chinese marks need no blank after them
        {"你好。我来了！走？吧", {"你好。", "我来了！", "走？", "吧"}},
        {"他说「好。」然后走", {"他说「好。」", "然后走"}},
        {"你好.我", {"你好.我"}},
        {"你好， 我、你", {"你好， 我、你"}},
        // a punctuation mark with a combining accent is another character
        {"One.\u0301 two", {"One.\u0301 two"}},
        {"One。\u0301two", {"One。\u0301two"}},
        {"A\xFF. B", {"A\xFF.", "B"}},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(SentenceSegmenter::pieces(text), expected) << text;
}

TEST(SentenceSegmenterTests, AbbreviationsInitialsAndNumbersDoNotEndASentence) {
    for (const std::string word : {"Dr.", "FIG.", "\"Mr.\"", "etc.]’", "no.", "U.S.", "a.k.a.",
                                   "u.s.a.", "3.14.", "J.", "É.", "E\u0301.", "王.", "Sept.)"})
        EXPECT_EQ(SentenceSegmenter::pieces("See " + word + " Then"),
                  Pieces{"See " + word + " Then"});
    for (const std::string word : {"(Dr.", "“Prof.”", "may.", "3.", "went.", "abcd.ef.", "a..",
                                   "..", "Dr.」", "Thursd.", "_.", "«J.", "no.?"}) {
        EXPECT_EQ(SentenceSegmenter::pieces("See " + word + " Then"),
                  (Pieces{"See " + word, "Then"}));
    }
    EXPECT_EQ(SentenceSegmenter::pieces("Dr. Smith went home. He slept"),
              (Pieces{"Dr. Smith went home.", "He slept"}));
    EXPECT_EQ(SentenceSegmenter::pieces("No. Yes"), Pieces{"No. Yes"});
}

TEST(SentenceSegmenterTests, ClausesNeedThreeUnits) {
    const struct {
        std::string text;
        BoundaryUnit unit;
        Pieces expected;
    } cases[] = {
        {"Yes, I agree with you, and so does he.",
         BoundaryUnit::words,
         {"Yes, I agree with you,", "and so does he."}},
        {"one two three; four", BoundaryUnit::words, {"one two three;", "four"}},
        {"one two three\u037E four", BoundaryUnit::words, {"one two three\u037E", "four"}},
        {"he said \"now or never,\" twice",
         BoundaryUnit::words,
         {"he said \"now or never,\"", "twice"}},
        {"a b c,d e", BoundaryUnit::words, {"a b c,d e"}},
        {"我，你好，他们都来了；好",
         BoundaryUnit::characters,
         {"我，你好，", "他们都来了；", "好"}},
        {"我 们，来", BoundaryUnit::characters, {"我 们，", "来"}},
        {"我，你好，他们", BoundaryUnit::words, {"我，你好，他们"}},
        // a text without ideographs is measured in words, even if characters are requested
        {"abc, def", BoundaryUnit::characters, {"abc, def"}},
        {"かな，かな", BoundaryUnit::characters, {"かな，かな"}},
        // the word before a full stop begins after the last cut, so "e.g." is recognised
        {"你好你，e.g. 好", BoundaryUnit::characters, {"你好你，", "e.g. 好"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(SentenceSegmenter::pieces(c.text, true, 28, c.unit), c.expected) << c.text;
}

TEST(SentenceSegmenterTests, LongRemaindersAreCutWithoutAShortFragment) {
    const auto lengths = [](const std::string& text, std::int64_t limit, BoundaryUnit unit) {
        std::vector<std::size_t> result;
        for (const auto& piece : SentenceSegmenter::pieces(text, false, limit, unit))
            result.push_back(unit == BoundaryUnit::words ? Text::countOfBlankSeparated(piece)
                                                         : Text::countOfNonWhiteSpace(piece));
        return result;
    };
    const struct {
        BoundaryUnit unit;
        int count;
        std::int64_t limit;
        std::vector<std::size_t> expected;
    } cases[] = {
        {BoundaryUnit::words, 36, 28, {36}},
        {BoundaryUnit::words, 37, 28, {28, 9}},
        {BoundaryUnit::words, 64, 28, {28, 36}},
        {BoundaryUnit::words, 65, 28, {28, 28, 9}},
        {BoundaryUnit::words, 10, 1, {1, 9}},
        {BoundaryUnit::words, 100, 0, {100}},
        {BoundaryUnit::words, 100, -5, {100}},
        {BoundaryUnit::words, 100, INT64_MAX, {100}},
        {BoundaryUnit::characters, 60, 48, {60}},
        {BoundaryUnit::characters, 61, 48, {48, 13}},
        {BoundaryUnit::characters, 109, 48, {48, 48, 13}},
        {BoundaryUnit::characters, 109, 0, {109}},
    };
    for (const auto& c : cases) {
        const std::string text =
            c.unit == BoundaryUnit::words ? words(c.count) : repeated("中", c.count);
        EXPECT_EQ(lengths(text, c.limit, c.unit), c.expected) << c.count << " at limit " << c.limit;
    }
    // A cut joins words by single blanks; an uncut remainder keeps its white space.
    EXPECT_EQ(SentenceSegmenter::pieces(words(37, " \t")).front(), words(28));
    EXPECT_EQ(SentenceSegmenter::pieces(words(36, " \t")).front(), words(36, " \t"));
    EXPECT_EQ(
        SentenceSegmenter::pieces("中 " + repeated(" é", 61), false, 48, BoundaryUnit::characters)
            .front(),
        "中 " + repeated(" é", 47));
}

TEST(SentenceSegmenterTests, TheLastPieceIsLiveEvenIfItIsFinished) {
    using Segmentation = SentenceSegmenter::Segmentation;
    EXPECT_EQ(SentenceSegmenter::segment("Hello."), (Segmentation{{}, "Hello."}));
    EXPECT_EQ(SentenceSegmenter::segment("One. Two. Three"),
              (Segmentation{{"One.", "Two."}, "Three"}));
    EXPECT_EQ(SentenceSegmenter::segment(" "), Segmentation());
}

TEST(SentenceSegmenterTests, ACombiningAccentThatArrivesLaterUndoesACut) {
    const SentenceCuts::Rules rules{true, false, 0, BoundaryUnit::words};
    SentenceCuts cuts;
    cuts.cut("好。", rules);
    cuts.cut("好。\u0301好", rules);
    EXPECT_EQ(cuts.sentences().size(), 1U) << "a full stop with an accent ends no sentence";
}

/// Texts made of `parts`, which are hard to cut and which random text rarely contains.
rc::Gen<std::string> textOf(std::vector<std::string> parts) {
    return rc::gen::map(
        rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(std::move(parts))),
        [](const std::vector<std::string>& chosen) { return Text::joined(chosen, ""); });
}

rc::Gen<std::string> asciiText() {
    return textOf({"a",  "b.c",  "word", "Dr", "no", "7",  " ",   " ", " ", "  ",
                   "\t", "\r\n", ".",    ".",  ". ", ", ", ",",   ";", "?", "! ",
                   "\"", "')",   "]",    "}",  ":",  "-",  "e.g", "("});
}

rc::Gen<std::string> mixedText() {
    return textOf({"a",      "word",     "E.",      "中",      "文字", "é",      "e\u0301",
                   "か",     "👩🏽", "\u0600",  " ",       " ",    "\u3000", "\u2003",
                   "\u0085", ". ",       ".",       ", ",      "，",   "。",     "；",
                   "？",     "！",       "、",      "”",       "’",    "」",     "）",
                   "\"",     ".\u0301",  " \u0301", "\u037E ", "\xE4", "Mr"});
}

rc::Gen<SentenceCuts::Rules> rules(bool sentences, bool clauses) {
    return rc::gen::map(
        rc::gen::pair(rc::gen::inRange<std::int64_t>(-1, 12), rc::gen::arbitrary<bool>()),
        [=](const std::pair<std::int64_t, bool>& chosen) {
            return SentenceCuts::Rules{sentences, clauses, chosen.first,
                                       chosen.second ? BoundaryUnit::characters
                                                     : BoundaryUnit::words};
        });
}

RC_GTEST_PROP(SentenceSegmenterPropertyTests, FastAndSlowPathsCutAlike, ()) {
    const std::string text(Text::trimmed(*rc::gen::oneOf(asciiText(), mixedText())));
    const auto both = *rules(true, true);
    SentenceCuts quick;
    SentenceCuts slow;
    quick.cut(text, both);
    slow.cut(text, Text::SlowPath::characters(text), both);
    RC_ASSERT(quick.sentences() == slow.sentences());
    RC_ASSERT(quick.clauses() == slow.clauses());
    for (const bool clauseLevel : {false, true}) {
        const auto alone =
            SentenceSegmenter::pieces(text, clauseLevel, both.limit, both.boundaryUnit);
        const auto& together = clauseLevel ? quick.clauses() : quick.sentences();
        RC_ASSERT(std::equal(alone.begin(), alone.end(), together.begin(), together.end()));
    }
}

RC_GTEST_PROP(SentenceSegmenterPropertyTests, ATextThatChangesAtItsEndIsCutAsIfItWereNew, ()) {
    const auto both = *rules(true, true);
    const auto parts = rc::gen::oneOf(asciiText(), mixedText());
    SentenceCuts reused;
    std::string text;
    for (int i = 0; i < 8; ++i) {
        const auto kept = *rc::gen::inRange<std::size_t>(text.size() / 2, text.size() + 1);
        text = text.substr(0, kept) + *parts;
        SentenceCuts fresh;
        reused.cut(text, both);
        fresh.cut(text, both);
        RC_ASSERT(reused.sentences() == fresh.sentences());
        RC_ASSERT(reused.clauses() == fresh.clauses());
    }
}

std::vector<char32_t> visibleCodePoints(std::string_view text) {
    std::vector<char32_t> result = Text::codePoints(text);
    std::erase_if(result, [](char32_t c) { return Text::isWhiteSpace(c) || c == U'\u0301'; });
    return result;
}

RC_GTEST_PROP(SentenceSegmenterPropertyTests, NoWordIsLostOrDoubled, ()) {
    const std::string ascii = *asciiText();
    const std::string mixed = *mixedText();
    const auto rule = *rules(true, true);
    for (const auto* source : {&ascii, &mixed}) {
        const std::string& text = *source;
        for (const bool clauseLevel : {false, true}) {
            const auto pieces =
                SentenceSegmenter::pieces(text, clauseLevel, rule.limit, rule.boundaryUnit);
            RC_ASSERT(visibleCodePoints(Text::joined(pieces, " ")) == visibleCodePoints(text));
            for (const auto& piece : pieces) {
                RC_ASSERT(!piece.empty());
                RC_ASSERT(Text::trimmed(piece) == piece);
            }
            const std::string joined = Text::joined(pieces, " ");
            if (source == &ascii)
                RC_ASSERT(Text::splitOnWhiteSpace(joined) == Text::splitOnWhiteSpace(text));
        }
    }
}

} // namespace
} // namespace tessarune
