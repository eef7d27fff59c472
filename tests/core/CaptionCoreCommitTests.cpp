#include "tests/core/CaptionCoreFixture.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

/// Reads "ours 10 A one.|none - B.": of each row the freeze kind, the age at time 200 in seconds
/// ("-": it has no commit time) and the text.
CaptionCore::Rows committedRows(const std::string& notation) {
    CaptionCore::Rows rows;
    std::istringstream all(notation);
    for (std::string each; std::getline(all, each, '|');) {
        std::istringstream in(each);
        std::string kind, age;
        CaptionSegment row;
        in >> kind >> age;
        in.get();
        std::getline(in, row.sourceText);
        row.id = UUID::random();
        for (const auto k : {FreezeKind::none, FreezeKind::ours, FreezeKind::engine}) {
            if (kind == name(k))
                row.freezeKind = k;
        }
        if (age != "-")
            row.committedAt = 200 - std::stod(age);
        rows.push_back(row);
    }
    return rows;
}

enum class Path { final, freeze, seal };

/// Commits `text` after the `committed` rows on one path, at time 200; returns the new rows.
CaptionCore::Rows added(CaptionCoreFixture& f, Path path, const std::string& text,
                        const CaptionCore::Rows& committed) {
    f.caps.selfSegments = path == Path::seal;
    if (path == Path::freeze)
        f.play("199.3 p " + text + " tail");
    f.core->committedSegments = committed;
    if (path == Path::freeze)
        f.play("200 p " + text + " tail");
    if (path == Path::final)
        f.play("200 f " + text);
    if (path == Path::seal) {
        f.play("200 p " + text);
        f.core->sealLiveIntoHistory(200);
    }
    const CaptionCore::Rows& all = *f.core->committedSegments;
    return {all.begin() + static_cast<std::ptrdiff_t>(committed.size()), all.end()};
}

TEST(CaptionCoreCommitTests, EachCommitPathDetectsRepeatsItsOwnWay) {
    struct Case {
        const char* name;
        Path path;
        const char* committed;
        const char* text;
        const char* added;
        double window = 4.0;
    };
    const Case cases[] = {
        {"a final confirms a freeze of any age", Path::final, "ours 10 Hello there.",
         "Hello there. How are you?", "How are you? 🏁"},
        {"a final does not suppress another final", Path::final, "engine 1 Hello there.",
         "Hello there.", "Hello there. 🏁"},
        {"one frozen row among those that match is enough", Path::final,
         "ours 50 A one.|engine 1 B two.", "A one. B two. C.", "C. 🏁"},
        {"a match without a frozen row does not count", Path::final,
         "ours 5 A one.|engine 1 B two.", "B two. C.", "B two. 🏁|C. 🏁"},
        {"a final does not match a sealed row", Path::final, "none - A one.", "A one.", "A one. 🏁"},
        {"case, spacing and punctuation are ignored", Path::final, "ours 1 HELLO,  world one",
         "hello world ONE! Two.", "Two. 🏁"},
        {"a removed comma leaves no blank, so the keys differ", Path::final,
         "ours 1 你好，world one", "你好 world one. Two.", "你好 world one. 🏁|Two. 🏁"},
        {"a freeze within the window is suppressed", Path::freeze, "ours 3.9 A one.", "A one.", ""},
        {"a later freeze is committed", Path::freeze, "ours 4.1 A one.", "A one.", "A one. 🔒"},
        {"a final does not suppress a freeze", Path::freeze, "engine 1 A one.", "A one.",
         "A one. 🔒"},
        {"all matched rows must be recent", Path::freeze, "ours 9 A one.|ours 1 B two.",
         "A one. B two.", "A one. 🔒|B two. 🔒"},
        {"a negative window counts as zero", Path::freeze, "ours 0.5 A one.", "A one.", "A one. 🔒",
         -1},
        {"a window of zero matches a commit of the same time", Path::freeze, "ours 0 A one.",
         "A one.", "", -1},
        {"the last row may match the first sentence of a freeze", Path::freeze,
         "ours 1 A one.|ours 1 B two.", "b TWO! C three.", "C three. 🔒"},
        {"a match must include the last row", Path::freeze, "ours 1 A one.|ours 1 B two.",
         "A one. C three.", "A one. 🔒|C three. 🔒"},
        {"a seal matches rows of any kind", Path::seal, "ours 2 A one.|engine 2 B two.",
         "A one. B two. the rest", "the rest"},
        {"a seal matches only recent rows", Path::seal, "ours 5 A one.|engine 5 B two.",
         "A one. B two. the rest", "A one.|B two.|the rest"},
        {"a sealed row has no commit time and matches nothing", Path::seal, "none - A one.",
         "A one.", "A one."},
    };
    for (const Case& c : cases) {
        CaptionCoreFixture f;
        f.config.duplicateCommitWindowSeconds = c.window;
        std::int64_t announced = 0;
        f.core->onCommit = [&](const auto& all) { announced += std::ssize(all); };
        const auto rows = added(f, c.path, c.text, committedRows(c.committed));
        EXPECT_EQ(CaptionCoreFixture::texts(rows), c.added) << c.name;
        const std::int64_t count = std::ssize(rows);
        EXPECT_EQ(*f.core->lockCount, c.path == Path::freeze ? count : 0) << c.name;
        EXPECT_EQ(*f.core->finalCount, c.path == Path::final ? count : 0) << c.name;
        EXPECT_EQ(announced, c.path == Path::seal ? 0 : count) << c.name;
    }
}

/// For each word of a committed row: "word firstSeen revealed start-end", "_" if absent.
std::string wordsOf(const CaptionCore& core, std::size_t row) {
    const auto time = [](const std::optional<double>& t) { return t ? Text::fixed(*t, 1) : "_"; };
    std::vector<std::string> words;
    for (const WordEvent& w : core.wordEvents().at(core.committedSegments->at(row).id))
        words.push_back(w.word + " " + time(w.firstSeenAt) + " " + time(w.revealedAt) + " " +
                        time(w.audioStart) + "-" + time(w.audioEnd));
    return Text::joined(words, ", ");
}

std::vector<ASRWordTiming> timings(int count) {
    std::vector<ASRWordTiming> words;
    for (int i = 0; i < count; ++i)
        words.push_back({"w", 1.0 * i, i + 0.5});
    return words;
}

TEST(CaptionCoreCommitTests, WordEventsFollowTheWordsOfTheWholeUtterance) {
    for (const bool timed : {true, false}) {
        CaptionCoreFixture f;
        f.play("100 p one two;100.5 p one two three. four;101.2 p one two three. four");
        f.final("one two three. four five.", 1, 103, timings(timed ? 5 : 4));
        EXPECT_EQ(f.shown(), "one two three. 🔒|four five. 🏁 /  /  / ");
        EXPECT_EQ(wordsOf(*f.core, 0), "one 100.0 _ _-_, two 100.0 _ _-_, three. 100.5 _ _-_");
        EXPECT_EQ(wordsOf(*f.core, 1), timed ? "four 100.5 _ 3.0-3.5, five. 103.0 _ 4.0-4.5"
                                             : "four 100.5 _ _-_, five. 103.0 _ _-_")
            << "timings are used only if there is one for each word";
        CaptionSegment frozen = f.core->committedSegments->at(0);
        EXPECT_EQ(frozen.startedAt, 101.2);
        EXPECT_FALSE(frozen.endedAt);
        EXPECT_EQ(frozen.firstSeenAt, 100);
        EXPECT_EQ(frozen.revisionCount, 0);
        const CaptionSegment final = f.core->committedSegments->at(1);
        EXPECT_EQ(final.startedAt, 1);
        EXPECT_EQ(final.endedAt, 103);
        EXPECT_EQ(final.committedAt, 101.2);
        EXPECT_EQ(final.firstSeenAt, 100.5);
        EXPECT_EQ(final.revisionCount, 1)
            << "a sentence that was never leading has the tail's change count";
        EXPECT_EQ(final.revision, f.core->revision());

        f.play("104 p one two three. x");
        EXPECT_EQ(f.shown(), "one two three. 🔒|four five. 🏁 / one two three. /  / x");
        f.final("one");
        EXPECT_EQ(wordsOf(*f.core, 2), "one 104.0 _ _-_") << "a new utterance has new times";
    }
}

TEST(CaptionCoreCommitTests, ASkippedRepeatUsesUpItsWordPositionsAndChangeCount) {
    CaptionCoreFixture f;
    f.play("100 p A one. B;100.7 p A one. B");
    f.core->resetFreezeState();
    // The leading sentence B changes, and the leading sentence C only in how its accent is written.
    f.play("101 p A one. B twa. C thr\u00E9e. x;101.1 p A one. B two. C thre\u0301e. x");
    f.final("A one. B two. C thre\u0301e.", 1, 2, timings(6));
    EXPECT_EQ(f.shown(), "A one. 🔒|B two. 🏁|C thre\u0301e. 🏁 /  /  / ");
    // The frozen sentence consumed two positions, and its skipped repeat consumed two more.
    EXPECT_EQ(wordsOf(*f.core, 1), "B 101.0 _ 4.0-4.5, two. 101.0 _ 5.0-5.5");
    EXPECT_EQ(f.core->committedSegments->at(1).firstSeenAt, 101);
    EXPECT_EQ(f.core->committedSegments->at(1).revisionCount, 1);
    EXPECT_EQ(f.core->committedSegments->at(2).revisionCount, 0);

    f.core->committedSegments.mutate([](auto& rows) { rows.pop_back(); });
    EXPECT_EQ(f.core->wordEvents().size(), 3u);
    f.core->committedSegments = CaptionCore::Rows();
    EXPECT_TRUE(f.core->wordEvents().empty()) << "an empty list of rows has no word events";
}

TEST(CaptionCoreCommitTests, AWordKeepsTheTimeOfItsFirstReveal) {
    CaptionCoreFixture f;
    f.caps.selfSegments = true;
    f.play("100 p One one. two three");
    f.host.advanceTo(100.2);
    f.core->recordRevealedPrefix(0);
    f.core->recordRevealedPrefix(3);
    f.host.advanceTo(100.5);
    f.core->recordRevealedPrefix(1000);
    f.final("One one. two three");
    EXPECT_EQ(wordsOf(*f.core, 0), "One 100.0 _ _-_, one. 100.0 _ _-_");
    EXPECT_EQ(wordsOf(*f.core, 1), "two 100.0 100.2 _-_, three 100.0 100.5 _-_");
}

TEST(CaptionCoreCommitTests, ASealCommitsLiveRowsUnderTheirIds) {
    CaptionCoreFixture f;
    f.caps.selfSegments = true;
    f.play("100 p One two. if it rains today, we stay;100.4 p One two. if it rains today, we stay");
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

    const CaptionSegment open = *f.core->currentPartial;
    EXPECT_EQ(open.startedAt, 105);
    EXPECT_TRUE(f.core->sealLiveIntoHistory(106).empty());
    EXPECT_NE(f.core->currentPartial->id, open.id);
}

} // namespace
} // namespace tessarune
