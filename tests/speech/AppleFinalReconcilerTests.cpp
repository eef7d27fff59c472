#include "Tessarune/speech/AppleFinalReconciler.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>

namespace tessarune {
namespace {

using namespace AppleFinalReconciler;
using Decision = AppleFinalReconcileDecisionRecord::Decision;

const std::string partialOfEight = "we are going to talk about it now";
const std::string partialOfNine = "we are going to talk about it now then";

constexpr auto useFinal = Decision::useFinal;
constexpr auto usePartial = Decision::useLastPartial;
constexpr auto drop = Decision::dropSuppressedFinal;
constexpr auto none = std::nullopt;

using Candidate = AppleFinalReconcileCandidate;

Candidate said(const std::string& text, std::optional<double> end,
               std::optional<double> confidence = {}, bool alternatives = false) {
    Candidate value;
    value.setText(text);
    value.audioEndSeconds = end;
    if (end)
        value.audioStartSeconds = *end - 1;
    value.minConfidence = confidence;
    if (alternatives)
        value.requestedSpeechOptions = {"reporting.alternativeTranscriptions"};
    return value;
}

/// One letter per reason, to keep the cases readable.
std::string letters(const std::vector<std::string>& reasons) {
    const std::map<std::string, std::string> letter{
        {"finalPunctuationOnly", "A"},
        {"finalLooksGarbled", "B"},
        {"finalCollapsedAgainstLastPartial", "C"},
        {"finalStartsWithJunkPunctuation", "D"},
        {"finalLongPunctuationRun", "E"},
        {"finalRepeatedOpeningToken", "F"},
        {"finalLowSimilarityToLastPartial", "S"},
        {"finalExtremelyLowConfidence", "X"},
        {"finalVeryLowConfidence", "V"},
        {"alternativeTranscriptionsMode", "M"},
        {"dropPunctuationOnlyFinal", "p"},
        {"insideLastPartialReplacementWindow", "w"},
        {"noLastPartial", "n"},
        {"finalAccepted", "a"},
        {"suppressFollowingFinalFragments", "s"},
    };
    std::string all;
    for (const auto& reason : reasons)
        all += letter.at(reason);
    return all;
}

/// `mark`: the audio time up to which finals are suppressed.
void expect(const char* description, const Candidate& final,
            const std::optional<Candidate>& partial, std::optional<double> mark, Decision decision,
            const char* reasons, std::optional<double> markAfter = {}) {
    SCOPED_TRACE(description);
    const auto outcome = reconcile(final, partial, mark);
    const auto& record = outcome.record;
    EXPECT_EQ(record.decision, decision) << name(record.decision);
    EXPECT_EQ(letters(record.reasons), reasons);
    EXPECT_EQ(record.suppressedFinalsUntilAudioTime, markAfter);
    const Candidate chosen = decision == useFinal     ? final
                             : decision == usePartial ? *partial
                                                      : Candidate();
    EXPECT_EQ(outcome.text, chosen.text);
    EXPECT_EQ(record.outputTextHash, fnv1a64Hex(chosen.text));
    EXPECT_EQ(record.outputWordCount, chosen.wordCount);
    EXPECT_EQ(outcome.selectedAudioEndSeconds, chosen.audioEndSeconds);
    EXPECT_EQ(outcome.shouldKeepFinalWordTimings, decision == useFinal);
    EXPECT_EQ(record.finalLastPartialSimilarity.has_value(), partial && decision != drop);
    EXPECT_EQ(record.lastPartial, partial);
}

TEST(AppleFinalReconcilerTests, PunctuationAndSuppressedFinalsAreDecidedWithoutComparison) {
    const auto partial = said(partialOfEight, 20.0);
    expect("punctuation only, the mark survives", said("，。", 20.0), partial, 10.0, drop, "Ap",
           10.0);
    expect("white space without a partial", said("  ", 1.0), none, none, useFinal, "n");
    expect("0.12 s after the mark", said("it is", 10.12), partial, 10.0, drop, "w", 10.0);
    expect("more than 0.12 s after the mark", said("it is", 10.13), none, 10.0, useFinal, "n");
    expect("a final without an end", said("it is", none), none, 10.0, useFinal, "n");
}

TEST(AppleFinalReconcilerTests, DecidesBetweenAFinalAndItsLastPartial) {
    const auto eight = said(partialOfEight, 5.0);
    const auto nine = said(partialOfNine, 5.0);
    const std::string other = "completely different words were heard here";
    expect("the same text", said(partialOfEight, 5.0), eight, none, useFinal, "a");
    expect("a final well after the mark", said(partialOfEight, 5.0), eight, 4.0, useFinal, "a");
    expect("white space", said("  ", 1.0), eight, none, usePartial, "ACSs", 5.0);
    expect("collapsed, confidence 0.4", said("we", 5.0, 0.4), eight, none, usePartial, "CS");
    expect("collapsed, confidence 0.6", said("we", 5.0, 0.6), eight, none, useFinal, "CS");
    expect("collapsed, with alternatives", said("we", 5.0, 0.6, true), eight, none, usePartial,
           "CSM");
    expect("a third of nine words", said("we are going", 5.0, 0.5), nine, none, usePartial, "CS");
    expect("four of nine words", said("we are going to", 5.0, 0.5), nine, none, useFinal, "S");
    expect("collapsed, with alternatives, four words", said("a b c d", 5.0, 0.6, true),
           said("one two three four five six seven eight nine ten eleven twelve", 5.0), none,
           useFinal, "CSM");
    expect("garbled, no confidence", said("(-a-)", 5.0), eight, none, usePartial, "BCDES");
    expect("garbled, with a blank", said("(ab .)", 5.0), eight, none, usePartial, "BCDES");
    expect("a partial of five letters", said("  ", 5.0), said("ab cde", 5.0), none, useFinal, "AS");
    expect("a partial of one word", said("  ", 5.0), said("abcdefgh", 5.0), none, useFinal, "AS");
    expect("junk before the text, confidence 0.05", said("— " + partialOfEight, 5.0, 0.05), eight,
           none, usePartial, "DXV");
    expect("junk before the text, confidence 0.06", said("— " + partialOfEight, 5.0, 0.06), eight,
           none, useFinal, "DV");
    expect("repeated opening, confidence 0.01", said("we We " + partialOfEight, 5.0, 0.01), eight,
           none, usePartial, "FXV");
    expect("another text, confidence 0.05", said(other, 5.0, 0.05), eight, none, usePartial, "SXV");
    expect("another text, confidence 0.9", said(other, 5.0, 0.9), eight, none, useFinal, "S");
    expect("two words for three, confidence 0.12", said("going now", 5.0, 0.12),
           said("going by now", 5.0), none, usePartial, "V");
    expect("the partial ends 0.3 s later", said("we", 5.0, 0.4), said(partialOfEight, 5.3), none,
           usePartial, "CSs", 5.3);
    expect("the partial ends 0.2 s later", said("we", 1.0, 0.4), said(partialOfEight, 1.2), none,
           usePartial, "CS");
}

TEST(AppleFinalReconcilerTests, APartialWithoutTimesTakesThoseOfTheFinal) {
    const auto outcome = reconcile(said("we", 5.0, 0.4), said(partialOfEight, none), none);
    EXPECT_EQ(outcome.record.decision, Decision::useLastPartial);
    EXPECT_EQ(outcome.selectedAudioStartSeconds, 4.0);
    EXPECT_EQ(outcome.selectedAudioEndSeconds, 5.0);
}

TEST(AppleFinalReconcilerTests, SimilarityIsTheShareOfCharactersThatStay) {
    std::string longer, other;
    for (int i = 0; i < 240; ++i)
        longer += "é"; // one character of two code points
    other = longer + std::string(100, 'x');
    const struct {
        std::string a, b;
        double expected;
    } cases[] = {
        {"", "...", 1},
        {"a", "", 0},
        {"kitten", "sitting", 1 - 3.0 / 7},
        {"abc", "xyz", 0},
        {"Caf\u00e9!", "cafe\u0301", 1},
        {"Don't  stop", "dont stop", 1},
        {"你好，世界。", "你好世界", 1},
        {longer, other, 1}, // nothing after 240 characters counts
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(normalizedSimilarity(c.a, c.b), c.expected) << c.a << " / " << c.b;
}

TEST(AppleFinalReconcilerTests, HashesAndPreviewsHaveFixedForms) {
    EXPECT_EQ(fnv1a64Hex(""), "cbf29ce484222325");
    EXPECT_EQ(fnv1a64Hex("a"), "af63dc4c8601ec8c");
    EXPECT_EQ(fnv1a64Hex("foobar"), "85944171f73967e8");
    EXPECT_EQ(truncated("ab", 2), "ab");
    EXPECT_EQ(truncated("ae\u0301io", 2), "ae\u0301...<truncated 2 chars>");
}

TEST(AppleFinalReconcilerTests, ARecordIsWrittenInTheOrderOfItsFieldsWithoutAbsentOnes) {
    const auto outcome = reconcile(said("we", 5.0, 0.4), said(partialOfEight, 5.3), none);
    nlohmann::ordered_json json = outcome.record;
    std::string keys;
    for (const auto& [key, value] : json.items())
        keys += key + " ";
    EXPECT_EQ(keys, "schemaVersion kind sequence receivedAt decision reasons final lastPartial "
                    "outputTextHash outputTextPreview outputCharacterCount outputWordCount "
                    "finalLastPartialSimilarity finalToLastPartialWordRatio "
                    "alternativeTranscriptionsRequested shouldKeepFinalWordTimings "
                    "suppressedFinalsUntilAudioTime ");
    EXPECT_EQ(json["kind"], "appleFinalReconcile");
    EXPECT_EQ(json["decision"], "useLastPartial");
    EXPECT_EQ(json["finalToLastPartialWordRatio"], 0.125);
    EXPECT_EQ(json["final"]["minConfidence"], 0.4);
    EXPECT_FALSE(json["final"].contains("avgConfidence"));
    EXPECT_EQ(json["lastPartial"]["wordCount"], 8);
}

} // namespace
} // namespace tessarune
