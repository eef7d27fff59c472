#include "Tessarune/history/HistoryWordTimeline.h"
#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Timeline = HistoryWordTimeline;

constexpr double base = 1'700'000'000;

CaptionSegment row(std::string text, double startedAt, std::optional<double> endedAt,
                   std::optional<double> firstSeenAt = std::nullopt) {
    CaptionSegment segment;
    segment.id = UUID::random();
    segment.sourceText = std::move(text);
    segment.startedAt = startedAt;
    segment.endedAt = endedAt;
    segment.firstSeenAt = firstSeenAt;
    return segment;
}

WordEvent heard(std::optional<double> start, std::optional<double> end,
                std::optional<double> firstSeen = std::nullopt) {
    WordEvent event;
    event.audioStart = start;
    event.audioEnd = end;
    event.firstSeenAt = firstSeen;
    return event;
}

/// "start-end: word times (timing kind of the sentence, timing kind of the timeline)", for the
/// first sentence
std::string summary(const Timeline& timeline) {
    const auto& sentence = timeline.sentences.at(0);
    std::string text = Text::shortest(sentence.start) + "-" + Text::shortest(sentence.end) + ":";
    for (const auto& word : timeline.words)
        text += " " + Text::shortest(word.t);
    return text + " (" + sentence.timingKind + ", " + timeline.timingKind + ")";
}

TEST(HistoryWordTimelineTests, BuildsTimesFromWordTimesRowTimesOrArrivalTimes) {
    const auto none = std::nullopt;
    const auto check = [](const char* name, const char* option, const CaptionSegment& segment,
                          std::vector<WordEvent> events, std::string_view expected) {
        const std::vector rows{segment, row(" ", 0, 1)};
        const auto timeline =
            Timeline::build(base, option, rows, {{segment.id, std::move(events)}});
        ASSERT_TRUE(timeline) << name;
        EXPECT_EQ(timeline->sentences.size(), 1u) << name << ": a blank row has no sentence";
        EXPECT_EQ(summary(*timeline), expected) << name;
        EXPECT_EQ(timeline->words.front().segmentID, segment.id) << name;
        EXPECT_EQ(Timeline::decoded(timeline->encoded()), timeline) << name;
    };
    check("wall-clock words", "apple-en", row("a b", 0, none),
          {heard(base + 2, base + 3), heard(base + 3, base + 4)},
          "2.0-4.0: 2.0 3.0 (audioWord, audioWord)");
    check("relative words", "apple-en", row("a b", base, base + 9), {heard(2, 3), heard(3.5, 4)},
          "2.0-4.0: 2.0 3.5 (audioWord, audioWord)");
    check("words before the recording began", "apple-en", row("a", 0, none),
          {heard(base - 60, base - 59)}, "0.0-0.0: 0.0 (audioWord, audioWord)");
    check("a word without times", "apple-en", row("a b c", 0, none),
          {heard(1, 2), heard(none, none), heard(3, 5)},
          "1.0-5.0: 1.0 3.0 3.0 (audioWord, audioWord)");
    check("fewer words than tokens", "other", row("a b c", 1, 7), {heard(1, 2)},
          "1.0-2.0: 1.0 1.5 2.0 (audioWord, audioWord)");
    check("a word without an end", "apple-en", row("a b", 0, base + 8), {heard(4, none)},
          "4.0-8.0: 4.0 8.0 (audioSegment, audioWord)");
    check("no word times, from the first guess on", "apple-en",
          row(" a  b\nc ", 0, base + 14, base + 10), {},
          "10.0-14.0: 10.0 12.0 14.0 (audioSegment, segmentInterpolated)");
    check("no word times, spread over the row", "apple-en", row("a b", base + 5, base + 6), {},
          "5.0-6.0: 5.0 6.0 (audioSegment, segmentInterpolated)");
    check("no word times, one token", "apple-en", row("a", 5, 9), {},
          "5.0-9.0: 5.0 (audioSegment, segmentInterpolated)");
    check("a row without an end", "apple-en", row("a b", 5, none), {},
          "5.0-5.0: 5.0 5.0 (audioSegment, segmentInterpolated)");
    check("a row that ends before it starts", "apple-en", row("a b", 5, 2), {},
          "5.0-5.0: 5.0 5.0 (audioSegment, segmentInterpolated)");
    check("a row seen before the recording began", "other", row("a", 0, 3, base - 5), {},
          "0.0-3.0: 0.0 (asrSegment, asrFirstSeen)");
    check("arrival times of words", "other", row("a b c", 1, 9),
          {heard(none, none, base + 4), heard(0, none, base - 1), heard(none, none)},
          "1.0-9.0: 4.0 0.0 9.0 (asrSegment, asrFirstSeen)");
    check("arrival times are ignored if the engine reports word times", "apple-en",
          row("a b", 1, 9), {heard(none, none, base + 4)},
          "1.0-9.0: 1.0 9.0 (audioSegment, segmentInterpolated)");
    EXPECT_FALSE(Timeline::build(none, "apple-en", std::vector{row("a", 0, 1)}, {}));
    EXPECT_FALSE(Timeline::build(base, "apple-en", std::vector{row(" \n", 0, 1)}, {}));
}

TEST(HistoryWordTimelineTests, DerivesSentencesFromWordsAndFindsTheOneAtATime) {
    const auto a = UUID::random(), b = UUID::random();
    Timeline timeline;
    timeline.words = {{"One,", 1, a},
                      {"two.", 2, a},
                      {"Three", 4, b},
                      {"back", 3, b},
                      {"four", 5, std::nullopt},
                      {"five.", 6, std::nullopt},
                      {"Six.", 7, a}};
    const auto derived = timeline.derivedSentencesFromWords();
    ASSERT_EQ(derived.size(), 4u);
    EXPECT_EQ(derived[0], (Timeline::Sentence{"One, two.", 1, 2, a, "derivedFromWords"}));
    EXPECT_EQ(derived[1], (Timeline::Sentence{"Three back", 4, 4, b, "derivedFromWords"}));
    EXPECT_EQ(derived[2].source, "four five.");
    EXPECT_EQ(derived[3].segmentID, a) << "only adjacent words of a segment form a sentence";

    using Index = std::optional<std::size_t>;
    const auto check = [&](double time, Index index) {
        EXPECT_EQ(timeline.activeSentenceIndex(time), index) << "at " << time << " s";
    };
    check(0.5, std::nullopt);
    check(1, 0);
    check(4.5, 1);
    check(99, 3);
    timeline.sentences = {{"a", 2, 3, {}, ""}, {"b", 4, 5, {}, ""}, {"c", 4, 5, {}, ""}};
    EXPECT_EQ(timeline.sentenceStarts(), (std::vector<double>{2, 4, 4}));
    check(1.9, std::nullopt);
    check(3.9, 0);
    check(4, 2);
    timeline = Timeline();
    check(1, std::nullopt);
}

TEST(HistoryWordTimelineTests, WritesAndReadsItsFileFormat) {
    Timeline timeline;
    timeline.words = {{"é", 0.1, std::nullopt}};
    timeline.sentences = {{"é", 0.1, 2, UUID::parse("00000000-0000-4000-8000-00000000000a"), "k"}};
    const std::string file = timeline.encoded();
    std::string flat;
    for (const auto line : Text::splitOnWhiteSpace(file))
        flat += line;
    EXPECT_EQ(flat,
              R"({"recognitionOptionID":"","schemaVersion":2,"sentences":[{"end":2.0,)"
              R"("segmentID":"00000000-0000-4000-8000-00000000000A","source":"é",)"
              R"("start":0.1,"timingKind":"k"}],"timingKind":"","words":[{"t":0.1,"w":"é"}]})");
    EXPECT_EQ(file.find("{\n  \"recognitionOptionID\""), 0u) << "the file is pretty-printed";

    const auto old = Timeline::decoded(
        R"({"recognitionOptionID":"x","timingKind":"k","words":[{"w":"a","t":1,"later":[]}]})");
    ASSERT_TRUE(old);
    EXPECT_EQ(old->schemaVersion, 1);
    EXPECT_EQ(old->words.size(), 1u);
    EXPECT_TRUE(old->sentences.empty());
    EXPECT_TRUE(Timeline::decoded(
        R"({"recognitionOptionID":"","timingKind":"","words":null,"schemaVersion":7.0})"));

    const std::string_view broken[] = {
        "",
        "[]",
        "null",
        "\xFF",
        R"({"recognitionOptionID":"x"})",
        R"({"recognitionOptionID":"x","timingKind":1})",
        R"({"recognitionOptionID":"x","timingKind":"k","schemaVersion":1.5})",
        R"({"recognitionOptionID":"x","timingKind":"k","schemaVersion":1e300})",
        R"({"recognitionOptionID":"x","timingKind":"k","words":"a"})",
        R"({"recognitionOptionID":"x","timingKind":"k","words":[{"w":"a"}]})",
        R"({"recognitionOptionID":"x","timingKind":"k","words":[{"w":"a","t":1e999}]})",
        R"({"recognitionOptionID":"x","timingKind":"k","words":[{"w":"a","t":1,"segmentID":"?"}]})",
    };
    for (const auto json : broken)
        EXPECT_FALSE(Timeline::decoded(json)) << json;
}

TEST(HistoryWordTimelineTests, OnlyTheSentenceThatIsOpenAtTheEndIsLimited) {
    Timeline timeline;
    const UUID open = UUID::random();
    const UUID later = UUID::random();
    timeline.sentences = {{"Open.", 5, 9, open, "audioWord"},
                          {"Later.", 20, 22, later, "audioWord"}};
    timeline.words = {{"Open.", 8, open}, {"Later.", 20, later}};
    const Timeline cut = timeline.endingBy(7);
    EXPECT_EQ(cut.sentences.at(0).end, 7);
    EXPECT_EQ(cut.words.at(0).t, 7);
    // The recording broke off before the later sentence, which therefore keeps its times.
    EXPECT_EQ(cut.sentences.at(1), timeline.sentences.at(1));
    EXPECT_EQ(cut.words.at(1).t, 20);
}

} // namespace
} // namespace tessarune
