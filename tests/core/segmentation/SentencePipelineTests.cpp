#include "TessaruneCore/segmentation/HeuristicBoundaryEngine.h"
#include "TessaruneCore/segmentation/SentencePipeline.h"
#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tessarune {
namespace {

using Texts = std::vector<std::string>;

struct Step {
    double now;
    Texts leading;
    Texts frozen;
    std::size_t liveStartIndex;
};

TEST(SentencePipelineTests, FreezesASentenceThatStaysUnchangedAtItsPosition) {
    const struct {
        const char* name;
        std::vector<Step> steps;
    } cases[] = {
        {"the stable time is enough", {{0.0, {"A."}, {}, 0}, {0.6, {"A."}, {"A."}, 1}}},
        {"a shorter time is not enough", {{10.0, {"A."}, {}, 0}, {10.59, {"A."}, {}, 0}}},
        {"as doubles, 10.6 - 10.0 is below 0.6", {{10.0, {"A."}, {}, 0}, {10.6, {"A."}, {}, 0}}},
        {"a sentence never freezes when it first appears", {{100.0, {"A.", "B."}, {}, 0}}},
        {"case and punctuation may change; the newest text freezes",
         {{0, {"hello there."}, {}, 0}, {1, {"Hello, there!"}, {"Hello, there!"}, 1}}},
        {"no sentence freezes before the one in front of it",
         {{0, {"A.", "B."}, {}, 0}, {1, {"X.", "B."}, {}, 0}, {2, {"X.", "B."}, {"X.", "B."}, 2}}},
        {"a sentence that moves restarts its time",
         {{0, {"A.", "B."}, {}, 0}, {1, {"B."}, {}, 0}, {2, {"B."}, {"B."}, 1}}},
        {"a sentence that disappears restarts its time",
         {{0, {"A."}, {}, 0}, {1, {}, {}, 0}, {2, {"A."}, {}, 0}, {2.5, {"A."}, {}, 0}}},
        {"a frozen sentence is never reopened",
         {{0, {"A.", "B."}, {}, 0},
          {1, {"A.", "B."}, {"A.", "B."}, 2},
          {2, {"a", "B.", "C."}, {}, 2},
          {3, {"A.", "B.", "C."}, {"C."}, 3}}},
        {"a text that restarts at a frozen sentence continues after it",
         {{0, {"A.", "B."}, {}, 0},
          {1, {"A.", "B."}, {"A.", "B."}, 2},
          {2, {"B.", "C."}, {}, 1},
          {3, {"B.", "C."}, {"C."}, 2}}},
        {"canonically equivalent texts are equal",
         {{0, {"\u00C9t\u00E9."}, {}, 0}, {1, {"E\u0301te\u0301"}, {"\u00C9t\u00E9"}, 1}}},
        {"a clock that runs backwards delays the freeze", {{5, {"A."}, {}, 0}, {1, {"A."}, {}, 0}}},
    };
    for (const auto& c : cases) {
        SentencePipeline pipeline;
        for (const auto& step : c.steps)
            EXPECT_EQ(pipeline.advanceFreeze(step.leading, step.now),
                      (SentencePipeline::Freeze{step.frozen, step.liveStartIndex}))
                << c.name << " at " << step.now;
    }
}

TEST(SentencePipelineTests, ResetForgetsSentencesButKeepsTheSetting) {
    SentencePipeline pipeline;
    pipeline.freezeStableSeconds = 0.25;
    pipeline.advanceFreeze({"A."}, 0);
    pipeline.advanceFreeze({"A."}, 1);
    EXPECT_EQ(pipeline.frozenSentenceNorms(), Texts{"a"});
    pipeline.reset();
    EXPECT_TRUE(pipeline.frozenSentenceNorms().empty() && pipeline.prevLeadingNorm().empty() &&
                pipeline.leadingStableSince().empty());
    EXPECT_EQ(pipeline.advanceFreeze({"A."}, 2).liveStartIndex, 0u);
    EXPECT_EQ(pipeline.advanceFreeze({"A."}, 2.25).frozen, Texts{"A."});
}

TEST(SentencePipelineTests, FindsTheLongestOverlapWithFrozenSentences) {
    const struct {
        Texts current;
        Texts frozen;
        bool cumulative;
        std::size_t expected;
    } cases[] = {
        {{}, {"a"}, false, 0},
        {{"a"}, {}, true, 0},
        {{"x", "y"}, {"a", "b", "c"}, true, 2},
        {{"x", "y"}, {"a", "b", "c"}, false, 0},
        {{"b", "c", "d"}, {"a", "b", "c"}, false, 2},
        {{"a", "a", "b"}, {"b", "a", "a"}, false, 2},
        {{"a", "b"}, {"a", "b", "c"}, false, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(SentencePipeline::frozenOverlapPrefixCount(c.current, c.frozen, c.cumulative),
                  c.expected);
}

TEST(SentencePipelineTests, AnUncutFinalIsComparedAsAWhole) {
    SentencePipeline pipeline;
    pipeline.advanceFreeze({"One two."}, 0);
    pipeline.advanceFreeze({"One two."}, 1);
    SentencePipeline::Options whole{.segment = false};
    EXPECT_EQ(pipeline.ingestFinal("one two", whole), Texts());
    EXPECT_EQ(pipeline.ingestFinal("One two. Three", whole), Texts{"One two. Three"});
    BoundaryContext context{.segment = false, .freeze = true};
    EXPECT_EQ(HeuristicBoundaryEngine().ingestFinal("one two", context).hardPieces,
              Texts{"one two"});
}

/// A recogniser's guesses: each removes up to two last words of the previous one and adds a word.
rc::Gen<std::vector<std::string>> guesses() {
    const auto word = rc::gen::elementOf(std::vector<std::string>{
        "one", "two.", "three,", "Four?", "five", "six!", "好。", "文，", "Dr.", "seven;"});
    return rc::gen::map(
        rc::gen::container<std::vector<std::pair<std::size_t, std::string>>>(
            rc::gen::pair(rc::gen::weightedElement<std::size_t>({{8, 0}, {1, 1}, {1, 2}}), word)),
        [](const std::vector<std::pair<std::size_t, std::string>>& edits) {
            std::vector<std::string> texts;
            std::vector<std::string> words;
            for (const auto& [takenBack, next] : edits) {
                words.resize(words.size() - std::min(words.size(), takenBack));
                words.push_back(next);
                texts.push_back(Text::joined(words, " "));
            }
            return texts;
        });
}

RC_GTEST_PROP(SentencePipelinePropertyTests, EngineAndPipelineDecideAlike, ()) {
    const SentencePipeline::Options options{
        .segment = *rc::gen::weightedElement<bool>({{5, true}, {1, false}}),
        .freeze = *rc::gen::weightedElement<bool>({{5, true}, {1, false}}),
        .clauseLevel = *rc::gen::arbitrary<bool>(),
        .maxUnpunctuatedWords = *rc::gen::inRange<std::int64_t>(1, 6)};
    BoundaryContext context{.segment = options.segment,
                            .freeze = options.freeze,
                            .clauseLevel = options.clauseLevel,
                            .softClauseLevel = *rc::gen::arbitrary<bool>(),
                            .maxUnpunctuatedWords = options.maxUnpunctuatedWords};
    SentencePipeline pipeline;
    HeuristicBoundaryEngine engine;
    double now = 0;
    for (const auto& text : *guesses()) {
        now += *rc::gen::elementOf(std::vector<double>{0.1, 0.3, 0.7});
        const auto result = pipeline.ingestPartial(text, options, now);
        const auto decision = engine.ingestPartial(text, context, now);
        RC_ASSERT(decision.hardPieces == result.newlyFrozen);
        RC_ASSERT(decision.leading == result.leading);
        RC_ASSERT(decision.tail == result.tail);
        if (options.segment)
            RC_ASSERT(engine.ingestFinal(text, context).hardPieces ==
                      pipeline.ingestFinal(text, options));
    }
}

RC_GTEST_PROP(SentencePipelinePropertyTests, EverySentenceIsCommittedOnceAtAnyPace, ()) {
    // Sentences grow word by word at the end of the text and never change once they are complete.
    BoundaryContext context{.segment = true, .freeze = true};
    HeuristicBoundaryEngine engine;
    const int sentences = *rc::gen::inRange(1, 8);
    std::string text;
    Texts expected;
    Texts committed;
    double now = 0;
    for (int i = 0; i < sentences; ++i) {
        const std::string sentence = "this is number" + std::to_string(i) + ".";
        expected.push_back(sentence);
        for (const auto word : Text::splitAtBlanks(sentence)) {
            text += (text.empty() ? "" : " ") + std::string(word);
            now += *rc::gen::elementOf(std::vector<double>{0.1, 0.4, 1.0});
            const auto decision = engine.ingestPartial(text, context, now);
            committed.insert(committed.end(), decision.hardPieces.begin(),
                             decision.hardPieces.end());
            for (const auto& open : decision.leading)
                RC_ASSERT(std::find(committed.begin(), committed.end(), open) == committed.end());
        }
    }
    const auto rest = engine.ingestFinal(text, context).hardPieces;
    committed.insert(committed.end(), rest.begin(), rest.end());
    RC_ASSERT(committed == expected);
}

} // namespace
} // namespace tessarune
