#include "tests/core/CaptionCoreFixture.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Lines = std::vector<std::string>;

struct Committed {
    const char* text;
    FreezeKind kind;
    std::optional<double> age; // seconds before the commit that is tried; absent in sealed rows
};
constexpr auto ours = FreezeKind::ours;
constexpr auto engine = FreezeKind::engine;
constexpr auto none = FreezeKind::none;

enum class Road { final, freeze, seal };

/// Brings `text` to the end of `committed` on the given road at 200 and returns the rows added.
CaptionCore::Rows bring(CaptionCoreFixture& f, Road road, const std::string& text,
                        const std::vector<Committed>& committed) {
    f.caps.selfSegments = road == Road::seal;
    if (road == Road::freeze)
        f.partial(199.3, text + " tail");
    CaptionCore::Rows rows;
    for (const Committed& c : committed) {
        CaptionSegment row;
        row.id = UUID::random();
        row.sourceText = c.text;
        row.freezeKind = c.kind;
        if (c.age)
            row.committedAt = 200 - *c.age;
        rows.push_back(row);
    }
    f.core->committedSegments = rows;
    if (road == Road::freeze)
        f.partial(200, text + " tail");
    if (road == Road::final)
        f.final(200, text);
    if (road == Road::seal) {
        f.partial(200, text);
        f.core->sealLiveIntoHistory(200);
    }
    const CaptionCore::Rows& all = *f.core->committedSegments;
    return {all.begin() + static_cast<std::ptrdiff_t>(rows.size()), all.end()};
}

TEST(CaptionCoreCommitTests, EachRoadHasItsOwnIdeaOfWhatIsARepetition) {
    struct Case {
        const char* name;
        Road road;
        std::vector<Committed> committed;
        const char* text;
        Lines added;
        double window = 4.0;
    };
    const Case cases[] = {
        {"a final confirms a freeze of any age",
         Road::final,
         {{"Hello there.", ours, 10}},
         "Hello there. How are you?",
         {"How are you? 🏁"}},
        {"finals do not suppress finals",
         Road::final,
         {{"Hello there.", engine, 1}},
         "Hello there.",
         {"Hello there. 🏁"}},
        {"one frozen row among those that match is enough",
         Road::final,
         {{"A one.", ours, 50}, {"B two.", engine, 1}},
         "A one. B two. C.",
         {"C. 🏁"}},
        {"a shorter match needs a frozen row of its own",
         Road::final,
         {{"A one.", ours, 5}, {"B two.", engine, 1}},
         "B two. C.",
         {"B two. 🏁", "C. 🏁"}},
        {"a final against a sealed row",
         Road::final,
         {{"A one.", none, std::nullopt}},
         "A one.",
         {"A one. 🏁"}},
        {"a comma goes without leaving a blank",
         Road::final,
         {{"你好，World  one", ours, 1}},
         "你好 world ONE! Two.",
         {"你好 world ONE! 🏁", "Two. 🏁"}},
        {"case, spacing and punctuation do not count",
         Road::final,
         {{"HELLO,  world one", ours, 1}},
         "hello world ONE! Two.",
         {"Two. 🏁"}},
        {"a freeze within the window", Road::freeze, {{"A one.", ours, 3.9}}, "A one.", {}},
        {"a freeze after the window",
         Road::freeze,
         {{"A one.", ours, 4.1}},
         "A one.",
         {"A one. 🔒"}},
        {"a freeze is no repetition of a final",
         Road::freeze,
         {{"A one.", engine, 1}},
         "A one.",
         {"A one. 🔒"}},
        {"every row must be recent",
         Road::freeze,
         {{"A one.", ours, 9}, {"B two.", ours, 1}},
         "A one. B two.",
         {"A one. 🔒", "B two. 🔒"}},
        {"a negative window is none",
         Road::freeze,
         {{"A one.", ours, 0.5}},
         "A one.",
         {"A one. 🔒"},
         -1},
        {"with no window the same instant still matches",
         Road::freeze,
         {{"A one.", ours, 0}},
         "A one.",
         {},
         -1},
        {"the end of the history against the beginning of what comes",
         Road::freeze,
         {{"A one.", ours, 1}, {"B two.", ours, 1}},
         "b TWO! C three.",
         {"C three. 🔒"}},
        {"no match in the middle",
         Road::freeze,
         {{"A one.", ours, 1}, {"B two.", ours, 1}},
         "A one. C three.",
         {"A one. 🔒", "C three. 🔒"}},
        {"at the seal rows of any kind match",
         Road::seal,
         {{"A one.", ours, 2}, {"B two.", engine, 2}},
         "A one. B two. the rest",
         {"the rest"}},
        {"at the seal, too, only recent ones",
         Road::seal,
         {{"A one.", ours, 5}, {"B two.", engine, 5}},
         "A one. B two. the rest",
         {"A one.", "B two.", "the rest"}},
        {"a sealed row has no time and matches nothing",
         Road::seal,
         {{"A one.", none, std::nullopt}},
         "A one.",
         {"A one."}},
    };
    for (const Case& c : cases) {
        CaptionCoreFixture f;
        f.config.duplicateCommitWindowSeconds = c.window;
        std::size_t announced = 0;
        f.core->onCommit = [&](const auto& rows) { announced += rows.size(); };
        const auto added = bring(f, c.road, c.text, c.committed);
        EXPECT_EQ(CaptionCoreFixture::texts(added), c.added) << c.name;
        const auto count = static_cast<std::int64_t>(c.added.size());
        EXPECT_EQ(*f.core->lockCount, c.road == Road::freeze ? count : 0) << c.name;
        EXPECT_EQ(*f.core->finalCount, c.road == Road::final ? count : 0) << c.name;
        EXPECT_EQ(announced, c.road == Road::seal ? 0 : c.added.size()) << c.name;
    }
}

/// "word firstSeen revealed start-end", what is absent as "_".
Lines wordsOf(const CaptionCore& core, std::size_t row) {
    const auto time = [](const std::optional<double>& t) { return t ? Text::fixed(*t, 1) : "_"; };
    Lines lines;
    const auto found = core.wordEvents().find(core.committedSegments->at(row).id);
    if (found != core.wordEvents().end()) {
        for (const WordEvent& w : found->second)
            lines.push_back(w.word + " " + time(w.firstSeenAt) + " " + time(w.revealedAt) + " " +
                            time(w.audioStart) + "-" + time(w.audioEnd));
    }
    return lines;
}

std::vector<ASRWordTiming> timings(std::size_t count) {
    std::vector<ASRWordTiming> words;
    for (std::size_t i = 0; i < count; ++i) {
        const auto start = static_cast<double>(i);
        words.push_back({"w", start, start + 0.5});
    }
    return words;
}

TEST(CaptionCoreCommitTests, WordEventsFollowTheWordsOfTheWholeUtterance) {
    for (const bool timed : {true, false}) {
        CaptionCoreFixture f;
        f.partial(100, "one two");
        f.partial(100.5, "one two three. four");
        f.partial(101.2, "one two three. four");
        f.final(102, "one two three. four five.", 1, 103, timings(timed ? 5 : 4));
        EXPECT_EQ(f.shown(), "one two three. 🔒|four five. 🏁 /  /  / ");
        EXPECT_EQ(wordsOf(*f.core, 0),
                  (Lines{"one 100.0 _ _-_", "two 100.0 _ _-_", "three. 100.5 _ _-_"}));
        EXPECT_EQ(wordsOf(*f.core, 1),
                  timed ? (Lines{"four 100.5 _ 3.0-3.5", "five. 103.0 _ 4.0-4.5"})
                        : (Lines{"four 100.5 _ _-_", "five. 103.0 _ _-_"}))
            << "timings of another length than the text are dropped as a whole";

        const CaptionSegment frozen = f.core->committedSegments->at(0);
        EXPECT_EQ(frozen.startedAt, 101.2);
        EXPECT_FALSE(frozen.endedAt);
        EXPECT_EQ(frozen.firstSeenAt, 100);
        EXPECT_EQ(frozen.revisionCount, 0);
        const CaptionSegment final = f.core->committedSegments->at(1);
        EXPECT_EQ(final.startedAt, 1);
        EXPECT_EQ(final.endedAt, 103);
        EXPECT_EQ(final.committedAt, 102);
        EXPECT_EQ(final.firstSeenAt, 100.5);
        EXPECT_EQ(final.revisionCount, 1) << "never a leading sentence: the changes of the tail";
        EXPECT_EQ(final.revision, f.core->revision());
    }
}

TEST(CaptionCoreCommitTests, SkippedSentencesUseUpTheirWordsAndTheirMeta) {
    CaptionCoreFixture f;
    f.partial(100, "A one. B");
    f.partial(100.7, "A one. B");
    f.core->resetFreezeState();
    // B changes as a leading sentence, C never does.
    f.partial(101, "A one. B twa. C three. x");
    f.partial(101.1, "A one. B two. C three. x");
    f.final(102, "A one. B two. C three.", 1, 2, timings(6));
    EXPECT_EQ(f.shown(), "A one. 🔒|B two. 🏁|C three. 🏁 /  /  / ");
    // The frozen sentence took the first two positions, and the skipped one took two more.
    EXPECT_EQ(wordsOf(*f.core, 1), (Lines{"B 101.0 _ 4.0-4.5", "two. 101.0 _ 5.0-5.5"}));
    EXPECT_EQ(f.core->committedSegments->at(1).revisionCount, 1);
    EXPECT_EQ(f.core->committedSegments->at(2).revisionCount, 0);
}

TEST(CaptionCoreCommitTests, WordEventsGoWithTheLastCommittedRow) {
    CaptionCoreFixture f;
    f.final(100, "One two.");
    f.final(101, "Three.");
    ASSERT_EQ(f.core->wordEvents().size(), 2u);
    f.core->committedSegments.mutate([](auto& rows) { rows.pop_back(); });
    EXPECT_EQ(f.core->wordEvents().size(), 2u);
    f.core->committedSegments = CaptionCore::Rows();
    EXPECT_TRUE(f.core->wordEvents().empty());
}

TEST(CaptionCoreCommitTests, ARevealedWordKeepsItsFirstTime) {
    CaptionCoreFixture f;
    f.caps.selfSegments = true;
    f.partial(100, "One one. two three");
    f.host.advanceTo(100.2);
    f.core->recordRevealedPrefix(0);
    f.core->recordRevealedPrefix(3);
    f.host.advanceTo(100.5);
    f.core->recordRevealedPrefix(1000);
    f.final(101, "One one. two three");
    EXPECT_EQ(wordsOf(*f.core, 0), (Lines{"One 100.0 _ _-_", "one. 100.0 _ _-_"}));
    EXPECT_EQ(wordsOf(*f.core, 1), (Lines{"two 100.0 100.2 _-_", "three 100.0 100.5 _-_"}));
}

TEST(CaptionCoreCommitTests, TheSealMovesWhatIsLiveWithItsIdentity) {
    CaptionCoreFixture f;
    f.caps.selfSegments = true;
    f.partial(100, "One two. if it rains today, we stay");
    f.partial(100.4, "One two. if it rains today, we stay");
    ASSERT_EQ(f.shown(), " / One two. / if it rains today, ◌ / we stay");
    const std::vector<UUID> live = {f.core->liveLeadingSentences->front().id,
                                    f.core->softCaptionSegments->front().id,
                                    f.core->currentPartial->id};
    const std::int64_t revision = f.core->revision();

    EXPECT_EQ(f.core->sealLiveIntoHistory(105), live);
    EXPECT_EQ(f.shown(), "One two.|if it rains today,|we stay /  /  / ");
    for (const CaptionSegment& row : *f.core->committedSegments) {
        EXPECT_EQ(row.state, CaptionSegmentState::final);
        EXPECT_EQ(row.endedAt, 105);
        EXPECT_FALSE(row.committedAt);
    }
    EXPECT_EQ(f.core->revision(), revision);
    EXPECT_EQ(f.core->currentPartial->startedAt, 105);

    const UUID open = f.core->currentPartial->id;
    EXPECT_TRUE(f.core->sealLiveIntoHistory(106).empty());
    EXPECT_NE(f.core->currentPartial->id, open);

    f.partial(107, "One two. next");
    EXPECT_EQ(f.shown(), "One two.|if it rains today,|we stay / One two. /  / next");
}

} // namespace
} // namespace tessarune
