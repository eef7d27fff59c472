#include "Tessarune/platform/speech-engine/TranscriptReader.h"
#include "tests/simulation/ScriptedLooks.h"
#include "tests/support/Rounds.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

using namespace tessarune;

namespace {

moonshine::Line line(const char* text, bool isComplete, float start = 0, float duration = 1) {
    moonshine::Line made{};
    made.text = text;
    made.isComplete = isComplete;
    made.start = start;
    made.duration = duration;
    return made;
}

const SpeechTranscriberOptions everything{
    "en-US",
    {SpeechReportingOption::volatileResults},
    {SpeechAttributeOption::audioTimeRange, SpeechAttributeOption::transcriptionConfidence}};

/// "~text" for a volatile result, "text" for a final.
std::vector<std::string> read(TranscriptReader& reader, const std::vector<moonshine::Line>& lines,
                              bool looksAgainSoon = false) {
    std::vector<std::string> found;
    for (const SpeechResult& result : reader.read({lines.data(), lines.size()}, looksAgainSoon)) {
        EXPECT_EQ(result.alternatives, std::vector<std::string>{result.text()});
        found.push_back((result.isFinal ? "" : "~") + result.text());
    }
    return found;
}

using Texts = std::vector<std::string>;

} // namespace

TEST(TranscriptReaderTest, ReportsEachChangeOnceAndInOrder) {
    TranscriptReader reader(everything);
    EXPECT_EQ(read(reader, {}), Texts{});
    EXPECT_EQ(read(reader, {line("Ever", false)}), Texts{"~Ever"});
    EXPECT_EQ(read(reader, {line("Ever", false)}), Texts{});
    EXPECT_EQ(reader.openSince(), 0.0);
    EXPECT_EQ(read(reader, {line("Ever tried.", true)}), Texts{"Ever tried."});
    EXPECT_EQ(read(reader, {line("Ever tried.", true)}), Texts{});
    // Repeated words are another line.
    EXPECT_EQ(read(reader, {line("Ever tried.", true), line("Ever tried.", false, 2)}),
              Texts{"~Ever tried."});
    // Two finals and the next open line from one pass.
    EXPECT_EQ(read(reader, {line("Ever tried.", true), line("Ever tried.", true, 2),
                            line("No matter.", true, 4), line("Try", false, 6)}),
              (Texts{"Ever tried.", "No matter.", "~Try"}));
    EXPECT_EQ(reader.completeLines(), 3u);
    EXPECT_DOUBLE_EQ(reader.completeThrough(), 5);
}

TEST(TranscriptReaderTest, WordsWaitUntilTwoPassesAgreeIfTheNextPassIsSoon) {
    TranscriptReader reader(everything);
    const struct {
        const char* pass;
        Texts given;
    } steps[] = {
        {"It was a.", {}},
        {"It was the back.", {"~It was"}},
        {"It was the best of", {"~It was the"}},
        {"It was the best of times.", {"~It was the best of"}},
        {"And you can see", {}}, // a single pass withdraws nothing
        {"It was the best of all", {}},
        {"It was a best of all times", {"~It was the best of all"}}, // "a" does not delay "all"
        {"It was a best of", {"~It was a best of all"}},
        {"It was a best of, ore", {"~It was a best of, all"}}, // the newest punctuation
        {"It was a best of ore", {"~It was a best of ore"}},
        {"", {}},
    };
    for (const auto& step : steps)
        EXPECT_EQ(read(reader, {line(step.pass, false)}, true), step.given) << step.pass;
    // A slow computer shows every pass at once. Words that four passes contained stay.
    EXPECT_EQ(read(reader, {line("It was a pest.", false)}), Texts{"~It was a pest."});
    EXPECT_EQ(read(reader, {line("It is a test.", true)}, true), Texts{"It was a test."});
    EXPECT_EQ(read(reader, {line("It is a test.", true), line("It was me.", false)}, true), Texts{})
        << "the first pass over a line shows nothing";
}

TEST(TranscriptReaderTest, FrontOfALongLineIsSettledOnce) {
    TranscriptReader reader(everything);
    const struct {
        const char* pass;
        float seconds;
        Texts given;
    } steps[] = {
        {"So it goes on", 1, {}},
        {"So it goes on. And", 1.2F, {"~So it goes on.", "So it goes on."}},
        {"So it goes on. And then", 1.4F, {"~And"}},
        {"So it goes, and then it,", 1.6F, {"~and then"}}, // other punctuation changes nothing
        {"Sow it grows and then it, was", 1.8F, {"~and then it,"}}, // nor do changed words
        {"and then it was so was", 2.0F, {"~and then it was"}},
        {"So it goes on and then it was so much", 3.5F, {"~and then it was so"}},
        {"So it goes on and then it was so much too",
         5.5F,
         {"~and then it was so much", "and then it was so much"}}, // settled at any word after 3 s
    };
    for (const auto& step : steps)
        EXPECT_EQ(read(reader, {line(step.pass, false, 0, step.seconds)}, true), step.given)
            << step.pass;
    EXPECT_EQ(read(reader, {line("So it goes on. And then it was so much too much.", true)}, true),
              Texts{"too much."});
}

TEST(TranscriptReaderTest, WordsBeforeManyOthersAreFixedAndHesitationsDelayNothing) {
    TranscriptReader reader(everything);
    const struct {
        const char* pass;
        Texts given;
    } steps[] = {
        {"um so one two three four five six seven", {}},
        {"um so one two three four five six seven", {"~um so one two three four five six seven"}},
        {"um so one two three four five six seven", {}}, // two words are fixed
        {"um sew won two three four uh five six heaven", {}},
        {"so won two three four uh five six heaven", {"~um so won two three four five six heaven"}},
        {"So, won two three four uh five six heaven",
         {"~um So, won two three four five six heaven"}},
    };
    for (const auto& step : steps)
        EXPECT_EQ(read(reader, {line(step.pass, false)}, true), step.given) << step.pass;
    EXPECT_EQ(read(reader, {line("Sew, one, two three four uh five sick heaven. Um", true)}),
              Texts{"um So, won two three four five sick heaven. Um"});

    TranscriptReader other(everything);
    EXPECT_EQ(read(other, {line("so this is", false)}, true), Texts{});
    EXPECT_EQ(read(other, {line("uh so this is the", false)}, true), Texts{"~so this is"})
        << "a hesitation does not delay the words after it";
}

TEST(TranscriptReaderTest, LongRepetitionsAreShortened) {
    for (const auto& [said, kept] :
         {std::pair{"but then then then then then we", "but then then then we"},
          {"the pair of the pair of the pair of the pair of shoes",
           "the pair of the pair of shoes"},
          {"no, no. No", "no, no. No"},
          {"as it was and as it is and as it will be",
           "as it was and as it is and as it will be"}}) {
        TranscriptReader reader(everything);
        EXPECT_EQ(read(reader, {line(said, true)}), Texts{kept});
    }
}

// The finals contain every word once and in its place, as spoken or as misheard.
TEST(TranscriptReaderTest, NoWordIsLostOrDoubled) {
    for (unsigned seed = 1; seed <= tessarune::testing::rounds(2000); ++seed) {
        std::mt19937 chance(seed);
        const auto oneIn = [&](unsigned count) { return chance() % count == 0; };
        simulation::ScriptedLooks looks(seed);
        double at = 0;
        for (unsigned said = 0, lines = 0; lines < 6; ++lines) {
            for (const unsigned end = said + 3 + chance() % 40; said < end;) {
                for (unsigned count = 1 + chance() % 3; count > 0; --count) {
                    const char* mark = oneIn(6) ? "." : oneIn(6) ? "," : "";
                    looks.say("w" + std::to_string(said++) + mark, at += 0.3);
                }
                if (!oneIn(4))
                    looks.look(!oneIn(10));
            }
            for (unsigned late = chance() % 4; late > 0; --late)
                looks.look(true);
            looks.endLine();
            at += oneIn(2) ? 1 : 0.1;
        }
        ASSERT_EQ(looks.violation(), "") << "seed " << seed;
    }
}

TEST(TranscriptReaderTest, LineThatEndsEmptyWithdrawsItsWords) {
    TranscriptReader reader(everything);
    EXPECT_EQ(read(reader, {line("", true)}), Texts{});
    EXPECT_EQ(read(reader, {line("", true), line("Um", false)}), Texts{"~Um"});
    EXPECT_EQ(read(reader, {line("", true), line("", true)}), Texts{""});
    EXPECT_EQ(read(reader, {line("", true), line("", true), line(nullptr, false)}), Texts{});
}

TEST(TranscriptReaderTest, VolatileResultsAndAttributesComeOnlyOnRequest) {
    TranscriptReader reader({"en-US", {}, {}});
    EXPECT_EQ(read(reader, {line("Ever", false)}), Texts{});
    const std::vector<moonshine::Line> lines{line("Ever tried.", true)};
    const std::vector<SpeechResult> results = reader.read({lines.data(), lines.size()}, false);
    ASSERT_EQ(results.size(), 1u);
    for (const SpeechRun& run : results.front().runs)
        EXPECT_FALSE(run.audioStart || run.audioEnd || run.confidence) << run.text;
}

TEST(TranscriptReaderTest, RunsJoinedAreTheTextAndCarryTimes) {
    using Words = std::vector<moonshine::Word>;
    const Words timed{
        {"In", 0.5F, 0.75F, 0.5F}, {" short", 1.0F, 1.25F, 0.75F}, {",", 1.25F, 1.5F, 0.25F}};
    const Words other{{"On", 0.5F, 0.75F, 0.5F}, {"short,", 1.0F, 1.5F, 0.75F}};
    struct Case {
        const char* text;
        Words words;
        std::vector<SpeechRun> runs;
    };
    const std::vector<Case> cases{
        // The engine's times. The parts of a word are merged and get their lowest confidence.
        {"In short,", timed, {{"In", 10.5, 10.75, 0.5}, {" short,", 11.0, 11.5, 0.25}}},
        // If the engine gives no words, or the words of another text, the line's span (12 to 14) is
        // divided among the words of the text by their length.
        {"In short,", {}, {{"In", 12.0, 12.5, {}}, {" short,", 12.5, 14.0, {}}}},
        {"In short,", other, {{"In", 12.0, 12.5, {}}, {" short,", 12.5, 14.0, {}}}},
        {" In  short,, ", {}, {{"In", 12.0, 12.5, {}}, {" short,", 12.5, 14.0, {}}}},
        {"naïve été", {}, {{"naïve", 12.0, 13.25, {}}, {" été", 13.25, 14.0, {}}}},
    };
    for (const auto& [text, words, runs] : cases) {
        SCOPED_TRACE(text);
        TranscriptReader reader(everything);
        reader.restarted(10);
        moonshine::Line one = line(text, true, 2, 2);
        one.words = words.data();
        one.wordCount = words.size();
        const std::vector<SpeechResult> results = reader.read({&one, 1}, false);
        ASSERT_EQ(results.size(), 1u);
        EXPECT_EQ(results.front().runs, runs);
        EXPECT_DOUBLE_EQ(reader.completeThrough(), 14);
    }
}
