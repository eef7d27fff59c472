#include "bench/quality/CaptionTrace.h"
#include "bench/quality/DisplayedWords.h"
#include "bench/quality/WordTrace.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <sstream>

namespace tessarune {
namespace {

using Words = std::vector<std::string>;

/// "1.5 a b|c; 2 |d": at each time, the newly settled words and the open ones.
WordHistory trace(const std::string& script) {
    WordTrace trace;
    std::istringstream steps(script);
    for (std::string step; std::getline(steps, step, ';');) {
        std::istringstream in(step);
        double time = 0;
        std::string settled, open;
        in >> time;
        std::getline(in, settled, '|');
        std::getline(in, open);
        trace.show(time, DisplayedWords::asPrinted(settled), DisplayedWords::asPrinted(open));
    }
    return trace.history();
}

/// "3 words, 2 updates, 1 erased, 1 unstable; 0 2 0; 5 5": the seconds until each word became
/// steady, then the seconds until each settled word was settled.
std::string summary(const WordHistory& history) {
    std::size_t unstable = 0;
    std::ostringstream steady, settled;
    for (const TracedWord& word : history.words) {
        unstable += word.isUnstable ? 1 : 0;
        steady << ' ' << word.changedAt - word.shownAt;
        if (word.settledAt)
            settled << ' ' << *word.settledAt - word.shownAt;
    }
    std::ostringstream all;
    all << history.words.size() << " words, " << history.updates << " updates, " << history.erased
        << " erased, " << unstable << " unstable;" << steady.str() << ';' << settled.str();
    return all.str();
}

TEST(WordTraceTests, CountsErasedWordsAndMeasuresWhenWordsSettle) {
    const struct {
        const char* name;
        const char* script;
        std::string history;
    } cases[] = {
        {"nothing", "", "0 words, 0 updates, 0 erased, 0 unstable;;"},
        {"text that only grows", "0 |a;1 |a b;1 |a b;3 a b|",
         "2 words, 2 updates, 0 erased, 0 unstable; 0 0; 3 2"},
        {"a word is replaced", "0 |a b;2 |a c;5 a c|",
         "2 words, 2 updates, 1 erased, 1 unstable; 0 2; 5 5"},
        {"word restored", "0 |a b;1 |a c;2 |a b", "2 words, 3 updates, 2 erased, 1 unstable; 0 2;"},
        {"a word inserted in front erases all after it, but makes none unstable", "0 |b c;1 |a b c",
         "3 words, 2 updates, 2 erased, 0 unstable; 0 0 0;"},
        {"a removed first word erases all words, but makes none unstable", "0 |a b c;1 |b c",
         "2 words, 2 updates, 3 erased, 0 unstable; 0 0;"},
        {"one word becomes two", "0 |a x c;1 |a y z c",
         "4 words, 2 updates, 2 erased, 1 unstable; 0 1 0 0;"},
        {"words are withdrawn and shown again", "0 |a b c;1 |a;3 |a b c;4 a b c|",
         "3 words, 3 updates, 2 erased, 2 unstable; 0 0 0; 4 1 1"},
        {"a word is withdrawn and another one shown", "0 |a b;1 |a;2 |a c;3 |a c b",
         "3 words, 4 updates, 1 erased, 0 unstable; 0 0 0;"},
        {"a new utterance has the word that the former one withdrew", "0 |a b;1 a|;2 |b",
         "2 words, 3 updates, 1 erased, 0 unstable; 0 0; 1"},
        {"the final differs from the partial", "0 |a b;1 c b d|",
         "3 words, 2 updates, 2 erased, 1 unstable; 1 0 0; 1 1 0"},
        {"settled words are not erased", "0 |a b c;1 a b|c;2 |d;3 d|",
         "3 words, 2 updates, 1 erased, 1 unstable; 0 0 2; 1 1 3"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(summary(trace(c.script)), c.history) << c.name;
}

RC_GTEST_PROP(WordTraceTests, NoMoreWordsAreUnstableThanWereErased, ()) {
    WordTrace trace;
    std::size_t settledWords = 0;
    Words open;
    const auto someWords =
        rc::gen::container<Words>(rc::gen::elementOf(std::vector<std::string>{"a", "b", "c"}));
    const int steps = *rc::gen::inRange(1, 12);
    for (int time = 0; time < steps; ++time) {
        const Words settled = *rc::gen::resize(3, someWords);
        open = *rc::gen::resize(6, someWords);
        settledWords += settled.size();
        trace.show(time, settled, open);
    }
    const WordHistory found = trace.history();
    std::size_t unstable = 0;
    for (const TracedWord& word : found.words) {
        unstable += word.isUnstable ? 1 : 0;
        RC_ASSERT(word.shownAt <= word.changedAt);
        RC_ASSERT(!word.settledAt || word.changedAt <= *word.settledAt);
    }
    RC_ASSERT(found.words.size() == settledWords + open.size());
    RC_ASSERT(unstable <= std::min(found.words.size(), found.erased));
}

TEST(CaptionTraceTests, TakesTheLinesOfOneChangeTogetherAndIgnoresTheLeadIn) {
    CaptionTrace trace(9);
    for (const char* line : {
             R"({"type":"live","t":1,"leading":["Not."],"soft":[],"partial":"this"})",
             R"({"type":"committed","t":2,"text":"Not this.","start":0.5})",
             R"({"type":"live","t":2,"leading":[],"soft":[],"partial":""})",
             R"({"type":"status","t":3,"text":"no caption"})",
             R"({"type":"live","t":11,"leading":["One."],"soft":[],"partial":"two"})",
             R"({"type":"committed","t":12,"text":"One.","start":10})",
             R"({"type":"live","t":12,"leading":[],"soft":[],"partial":"two"})",
             R"({"type":"committed","t":13,"text":"Two.","start":11})",
             R"({"type":"live","t":13,"leading":[],"soft":[],"partial":""})",
             R"({"type":"committed","t":15,"text":"Three.","start":14})",
         })
        trace.read(line);
    const WordHistory found = trace.finish();
    EXPECT_EQ(found.erased, 0u);
    ASSERT_EQ(found.words.size(), 3u);
    const double expected[][2] = {{11, 12}, {11, 13}, {15, 15}};
    for (std::size_t i = 0; i < found.words.size(); ++i) {
        EXPECT_EQ(found.words[i].shownAt, expected[i][0]) << i;
        EXPECT_EQ(found.words[i].settledAt, expected[i][1]) << i;
    }
}

TEST(DisplayedWordsTests, CutsAtWhiteSpaceAndBeforeIdeographs) {
    struct Case {
        std::string text;
        Words printed, spoken;
    };
    const Case cases[] = {
        {"", {}, {}},
        {" Hello,\n  World ", {"Hello,", "World"}, {"hello", "world"}},
        {"It's 3.5 – no", {"It's", "3.5", "–", "no"}, {"its", "35", "no"}},
        {"你好，世界。", {"你", "好，", "世", "界。"}, {"你", "好", "世", "界"}},
        {"用GPU计算 ok", {"用", "GPU", "计", "算", "ok"}, {"用", "gpu", "计", "算", "ok"}},
        {"他说“好”1", {"他", "说“", "好”", "1"}, {"他", "说", "好", "1"}},
        {"Cafe\u0301", {"Cafe\u0301"}, {"café"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(DisplayedWords::asPrinted(c.text), c.printed) << c.text;
        EXPECT_EQ(DisplayedWords::asSpoken(c.text), c.spoken) << c.text;
    }
}

} // namespace
} // namespace tessarune
