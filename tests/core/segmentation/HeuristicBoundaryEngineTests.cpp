#include "TessaruneCore/segmentation/HeuristicBoundaryEngine.h"
#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Texts = std::vector<std::string>;

std::string wordsOf(int count) {
    Texts all(static_cast<std::size_t>(count), "word");
    return Text::joined(all, " ");
}

std::string labels(const BoundaryDecision& decision) {
    Texts values;
    for (const auto& reason : decision.reasons)
        values.push_back(reason.diagnosticValue());
    return Text::joined(values, " ");
}

BoundaryContext live() {
    return {.segment = true, .freeze = true, .softClauseLevel = true};
}

/// "soft | soft/ leading | leading/ tail/ reasons" of a decision that freezes nothing.
std::string parts(const BoundaryDecision& decision) {
    EXPECT_EQ(decision.hardPieces, Texts());
    return Text::joined(decision.softPieces, " | ") + "/ " + Text::joined(decision.leading, " | ") +
           "/ " + decision.tail + "/ " + labels(decision);
}

TEST(HeuristicBoundaryEngineTests, AFirstPartialIsCutIntoPiecesWithReasons) {
    const std::string words27 = wordsOf(27);
    const std::string words9 = wordsOf(9);
    const struct {
        const char* name;
        std::string text;
        BoundaryContext context;
        std::string parts;
    } cases[] = {
        {"an empty text", "", live(), "/ / / "},
        {"a text that is not cut is the tail",
         " One. Two. ",
         {.segment = false, .freeze = true, .softClauseLevel = true},
         "/ /  One. Two. / "},
        {"clauses are soft, whole sentences are not",
         "Yes, I do now, as ever. Is that so?\" And then", live(),
         "Yes, I do now, | as ever./ Yes, I do now, as ever. | Is that so?\"/ And then/ "
         "clausePunctuation:, punctuation:. punctuation:?"},
        {"without soft clauses",
         "Yes, I do now, as ever. And",
         {.segment = true, .freeze = true},
         "/ Yes, I do now, as ever./ And/ punctuation:."},
        {"clauses that are leading pieces are not soft",
         "Yes, I do now, as ever",
         {.segment = true, .clauseLevel = true, .softClauseLevel = true},
         "/ Yes, I do now,/ as ever/ clausePunctuation:,"},
        {"a long text is cut at the limit", words27 + " word " + words9, live(),
         "/ " + words27 + " word/ " + words9 + "/ maxWords:28"},
        {"a comma at the limit gives the same reason",
         words27 + " word, " + words9,
         {.segment = true},
         "/ " + words27 + " word,/ " + words9 + "/ maxWords:28"},
        {"a tail below the limit gives no reason", words27, live(), "/ / " + words27 + "/ "},
        {"a limit in characters",
         "一二三四五六七八九十一二三四五",
         {.segment = true, .maxUnpunctuatedWords = 2, .boundaryUnit = BoundaryUnit::characters},
         "/ 一二/ 三四五六七八九十一二三四五/ maxCharacters:2"},
        {"each Chinese punctuation mark is one reason",
         "好。好的！不好，不要。来",
         {.segment = true, .softClauseLevel = true, .boundaryUnit = BoundaryUnit::characters},
         "不好， | 不要。/ 好。 | 好的！ | 不好，不要。/ 来/ "
         "clausePunctuation:， punctuation:。 punctuation:！"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parts(HeuristicBoundaryEngine().ingestPartial(c.text, c.context, 1)), c.parts)
            << c.name;
}

TEST(HeuristicBoundaryEngineTests, AFinalOmitsSentencesFrozenFromPartials) {
    HeuristicBoundaryEngine engine;
    const BoundaryContext context = live();
    engine.ingestPartial("One is here. Two", context, 0);
    const auto frozen = engine.ingestPartial("One is here. Two, and so", context, 1);
    EXPECT_EQ(frozen.hardPieces, Texts{"One is here."});
    EXPECT_EQ(frozen.softPieces, Texts());
    EXPECT_EQ(labels(frozen), "localAgreement punctuation:.");

    // The soft pieces omit sentences that lead or freeze in this call, but not one that froze
    // earlier.
    const auto later = engine.ingestPartial("One is here. Two, and so on, then", context, 2);
    EXPECT_EQ(later.softPieces, (Texts{"One is here.", "Two, and so on,"}));
    EXPECT_EQ(later.leading, Texts());

    const auto known = engine.ingestFinal("one is here!", context);
    EXPECT_EQ(known, BoundaryDecision());
    const auto rest = engine.ingestFinal("One is here. Two", context);
    EXPECT_EQ(rest.hardPieces, Texts{"Two"});
    EXPECT_EQ(labels(rest), "engineFinal");
    EXPECT_EQ(engine.ingestFinal("", {.segment = false}), BoundaryDecision());
    EXPECT_EQ(labels(engine.ingestFinal("Is it so?\" ", {.segment = false})),
              "engineFinal punctuation:?");

    engine.reset();
    EXPECT_EQ(engine.ingestFinal("One is here. Two", context).hardPieces.size(), 2u);
}

TEST(HeuristicBoundaryEngineTests, HandlesManyPieces) {
    // Every piece is a leading sentence and a clause, so each is looked up among all others.
    const int pieces = 100'000;
    std::string text;
    for (int i = 0; i < pieces; ++i)
        text += "number " + std::to_string(i) + ". ";
    const auto decision = HeuristicBoundaryEngine().ingestPartial(text + "a, b", live(), 0);
    EXPECT_EQ(decision.leading.size(), static_cast<std::size_t>(pieces));
    EXPECT_EQ(decision.softPieces, Texts());
}

TEST(HeuristicBoundaryEngineTests, SentencesOfASelfSegmentingRecogniserFreezeOnlyWithEarlyCuts) {
    for (const bool early : {false, true}) {
        BoundaryContext context = live();
        context.caps.selfSegments = true;
        context.earlyCutSelfSegmenting = early;
        context.freezeStableSeconds = 0.2;
        HeuristicBoundaryEngine engine;
        engine.ingestPartial("One is here. Two", context, 0);
        const auto decision = engine.ingestPartial("One is here. Two", context, 0.3);
        EXPECT_EQ(decision.hardPieces.size(), early ? 1u : 0u);
        EXPECT_EQ(decision.leading.size(), early ? 0u : 1u);
        EXPECT_EQ(decision.softPieces, Texts());
        EXPECT_EQ(engine.ingestFinal("One is here. Two", context).hardPieces.size(),
                  early ? 1u : 2u);
    }
}

} // namespace
} // namespace tessarune
