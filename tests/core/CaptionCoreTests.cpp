#include "tests/core/CaptionCoreFixture.h"

#include <gtest/gtest.h>

#include <functional>

namespace tessarune {
namespace {

using Lines = std::vector<std::string>;

struct Step {
    double at;
    enum { partial, final, reset, cancel } kind;
    const char* text = "";
};

TEST(CaptionCoreTests, PartialsAreThinnedOutAndOnlyTheNewestIsFlushed) {
    struct Case {
        const char* name;
        double start;
        std::vector<Step> steps;
        Lines expected; // when and how something was shown, and the open text
        int timers;
    };
    const Case cases[] = {
        {"the newest of those within the interval",
         100,
         {{100, Step::partial, "a"},
          {100.01, Step::partial, " a b "},
          {100.03, Step::partial, "a b c"}},
         {"100.00 applied a", "100.06 applied a b c"},
         1},
        {"a clock that begins below the interval",
         0,
         {{0.02, Step::partial, "a"}},
         {"0.06 applied a"},
         1},
        {"a final supersedes what waits",
         100,
         {{100, Step::partial, "a"},
          {100.01, Step::partial, "a b"},
          {100.02, Step::final, "Other."}},
         {"100.00 applied a", "100.02 final "},
         1},
        {"a partial after a final waits for the timer that runs",
         100,
         {{100, Step::partial, "a"},
          {100.01, Step::partial, "a b"},
          {100.02, Step::final, "Other."},
          {100.03, Step::partial, "c"}},
         {"100.00 applied a", "100.02 final ", "100.06 applied c"},
         1},
        {"a blank final is nothing, and what waits still comes",
         100,
         {{100, Step::partial, "a"}, {100.01, Step::partial, "a b"}, {100.02, Step::final, " \n"}},
         {"100.00 applied a", "100.06 applied a b"},
         1},
        {"a blank partial neither clears nor replaces",
         100,
         {{100, Step::partial, "a"}, {100.01, Step::partial, "a b"}, {100.02, Step::partial, "\t"}},
         {"100.00 applied a", "100.06 applied a b"},
         1},
        {"reset while a flush is outstanding",
         100,
         {{100, Step::partial, "a"}, {100.01, Step::partial, "a b"}, {100.02, Step::reset}},
         {"100.00 applied a"},
         1},
        {"cancelled",
         100,
         {{100, Step::partial, "a"}, {100.01, Step::partial, "a b"}, {100.02, Step::cancel}},
         {"100.00 applied a"},
         1},
        {"a repeated text counts as a flush",
         100,
         {{100, Step::partial, "a"}, {100.07, Step::partial, "a"}, {100.10, Step::partial, "b"}},
         {"100.00 applied a", "100.07 deduped a", "100.13 applied b"},
         1},
        {"the same text composed differently is the same text",
         100,
         {{100, Step::partial, "caf\u00e9"}, {101, Step::partial, "cafe\u0301"}},
         {"100.00 applied caf\u00e9", "101.00 deduped caf\u00e9"},
         0},
    };
    for (const Case& c : cases) {
        CaptionCoreFixture f(c.start);
        Lines log;
        f.core->onActivity = [&](CaptionCore::Activity activity) {
            log.push_back(Text::fixed(f.host.now(), 2) + " " + word(activity) + " " +
                          f.core->currentPartial->sourceText);
        };
        for (const Step& step : c.steps) {
            f.host.advanceTo(step.at);
            if (step.kind == Step::partial)
                f.partial(step.at, step.text);
            if (step.kind == Step::final)
                f.final(step.at, step.text);
            if (step.kind == Step::reset)
                f.core->reset(step.at);
            if (step.kind == Step::cancel)
                f.core->cancelPendingPartial();
        }
        f.host.runUntilIdle();
        EXPECT_EQ(log, c.expected) << c.name;
        EXPECT_EQ(f.timersStarted, c.timers) << c.name;
    }
}

TEST(CaptionCoreTests, AFlushThatOutlivesTheCoreDoesNothing) {
    CaptionCoreFixture f;
    int activities = 0;
    f.core->onActivity = [&](auto) { ++activities; };
    f.partial(100, "a");
    f.partial(100.01, "a b");
    f.core.reset();
    f.host.runUntilIdle();
    EXPECT_EQ(activities, 1);
}

TEST(CaptionCoreTests, ACallbackMayClearItselfWhileItRuns) {
    CaptionCoreFixture f;
    const auto calls = std::make_shared<int>(0);
    f.core->onActivity = [&core = *f.core, calls](auto) {
        core.onActivity = nullptr;
        ++*calls;
    };
    f.partial(100, "a");
    f.partial(101, "b");
    EXPECT_EQ(*calls, 1);
}

/// Writes down every change and callback in the order in which they come.
void traceInto(Lines& trace, CaptionCore& core) {
    const auto note = [&trace](std::string line) {
        return [&trace, line](const auto&) { trace.push_back(line); };
    };
    core.committedSegments.onDidChange(note("committed"));
    core.liveLeadingSentences.onDidChange(note("leading"));
    core.softCaptionSegments.onDidChange(note("soft"));
    core.currentPartial.onDidChange(note("open"));
    core.lockCount.onDidChange(note("locks"));
    core.finalCount.onDidChange(note("finals"));
    core.debugEvents.onDidChange([&](const auto& events) {
        trace.push_back("debug " + events.back().kind + " " + events.back().text);
    });
    core.onCommit = [&](const auto& rows) {
        trace.push_back("onCommit " + std::to_string(rows.size()));
    };
    core.onActivity = [&](auto activity) { trace.push_back(word(activity)); };
    core.onBoundaryDecision = [&](const BoundaryObservation& o) {
        trace.push_back("boundary " + std::string(name(o.phase)) + " " +
                        std::to_string(o.decision.hardPieces.size()) + "+" +
                        std::to_string(o.decision.leading.size()));
    };
    core.onSoftCaptionChange = [&](const SoftCaptionObservation& o) {
        trace.push_back("soft " + std::string(name(o.phase)) + " " + o.resetReason.value_or("-") +
                        " " + std::to_string(o.visibleCount) + "/" +
                        std::to_string(o.candidateCount) + (o.changed ? " changed " : " same ") +
                        o.sample);
    };
    core.onCorrection = [&](const CorrectionObservation& o) {
        trace.push_back("correction '" + o.shownText + "' -" + std::to_string(o.droppedWords) +
                        " +" + std::to_string(o.addedWords) + " =" + std::to_string(o.commonWords));
    };
}

TEST(CaptionCoreTests, ChangesAndCallbacksComeInOneFixedOrder) {
    CaptionCoreFixture f;
    Lines trace;
    traceInto(trace, *f.core);
    const auto since = [&] { return std::exchange(trace, {}); };

    f.partial(100, "One two three. four");
    EXPECT_EQ(since(), (Lines{"boundary partial 0+1", "locks", "leading", "open", "applied"}));

    f.partial(100.3, "One two three. four");
    EXPECT_EQ(since(), (Lines{"locks", "deduped"})) << "an unchanged picture is not reported";

    f.partial(100.7, "One two three. four");
    EXPECT_EQ(
        since(),
        (Lines{"boundary partial 1+0", "committed", "locks", "debug 🔒 One two three.", "onCommit 1",
               "soft hardLock localAgreement 0/0 same ", "leading", "open", "applied"}));

    f.final(101, "One two three. Four five. Six");
    EXPECT_EQ(since(),
              (Lines{"correction 'four' -0 +5 =1", "boundary final 2+0", "committed", "committed",
                     "finals", "debug 🏁 Four five.", "debug 🏁 Six", "onCommit 2", "leading",
                     "soft engineFinal engineFinal 0/0 same ", "open", "final"}));

    f.core->resetFreezeState();
    EXPECT_EQ(since(), (Lines{"soft reset resetFreezeState 0/0 same "}));

    f.core->reset(102);
    EXPECT_EQ(since(), (Lines{"committed", "leading", "soft reset core.reset 0/0 same ", "open"}));

    f.partial(103, "seven");
    since();
    f.core->sealLiveIntoHistory(104);
    EXPECT_EQ(since(),
              (Lines{"leading", "soft seal sealLiveIntoHistory 0/0 same ", "committed", "open"}));
}

TEST(CaptionCoreTests, AFinalThatAddsNothingStillEndsTheUtterance) {
    CaptionCoreFixture f;
    f.partial(100, "One two three. four");
    f.partial(100.7, "One two three. four");
    Lines trace;
    traceInto(trace, *f.core);
    f.final(101, "one two three");
    EXPECT_EQ(trace, (Lines{"correction 'four' -1 +3 =0", "finals", "leading",
                            "soft engineFinal engineFinal 0/0 same ", "open", "final"}));
    EXPECT_EQ(f.shown(), "One two three. 🔒 /  /  / ");
    EXPECT_EQ(*f.core->finalCount, 0);
    EXPECT_EQ(f.core->currentPartial->startedAt, 2) << "the next utterance begins where this ended";
}

TEST(CaptionCoreTests, SoftCaptionsAppearAndAreWithdrawn) {
    CaptionCoreFixture f;
    Lines trace;
    traceInto(trace, *f.core);
    const auto since = [&] {
        Lines soft;
        for (const std::string& line : std::exchange(trace, {})) {
            if (line.starts_with("soft"))
                soft.push_back(line);
        }
        return soft;
    };

    f.partial(100, "if it rains today, we stay at home, then");
    EXPECT_EQ(since(), Lines{});
    f.partial(100.4, "if it rains today, we stay at home, then we");
    EXPECT_EQ(since(), (Lines{"soft partial - 2/2 changed we stay at home,", "soft"}));
    EXPECT_EQ(f.shown(), " /  / if it rains today, ◌|we stay at home, ◌ / then we");

    f.partial(100.5, "If it rains today, we stay at home, then we sleep");
    EXPECT_EQ(since(), Lines{"soft"}) << "case alone changes the text, not what is visible";

    // The second clause stands, but the first is new: what is visible no longer begins the tail.
    f.partial(100.6, "If it snows today, we stay at home, then we sleep");
    EXPECT_EQ(since(),
              (Lines{"soft reset softPrefixMismatch 0/2 changed If it snows today, we stay "
                     "at home,",
                     "soft"}));
    EXPECT_EQ(f.shown(), " /  /  / If it snows today, we stay at home, then we sleep");

    f.partial(100.7, "If it snows today, we stay at home, then we eat");
    f.partial(101.1, "If it snows today, we stay at home, then we eat");
    since();
    f.config.softCaptionEnabled = false;
    f.partial(101.2, "If it snows today, we stay at home, then we eat");
    EXPECT_EQ(since(), (Lines{"soft partial - 0/2 changed we stay at home,", "soft"}));
    EXPECT_EQ(f.shown(), " /  /  / If it snows today, we stay at home, then we eat");
}

TEST(CaptionCoreTests, LeadingRowsKeepTheirIdentity) {
    CaptionCoreFixture f;
    f.caps.selfSegments = true;
    int changes = 0;
    f.core->liveLeadingSentences.onDidChange([&](const auto&) { ++changes; });
    const auto ids = [&] {
        std::vector<UUID> all;
        for (const auto& row : *f.core->liveLeadingSentences)
            all.push_back(row.id);
        return all;
    };
    struct Case {
        const char* text;
        const char* shown;
        int changes;
        std::size_t kept;
    };
    const Case cases[] = {
        {"A one. B two. C three. x", " / A one.|B two.|C three. /  / x", 1, 0},
        {"A one. B too. C tree. x", " / A one.|B too.|C tree. /  / x", 2, 3},
        {"A one. B too. x", " / A one.|B too. /  / x", 1, 2},
        {"A one. B too. x y", " / A one.|B too. /  / x y", 0, 2},
        {"A one. B two. D four. E five. x", " / A one.|B two.|D four.|E five. /  / x", 1, 2},
    };
    double t = 100;
    for (const Case& c : cases) {
        const auto before = ids();
        const UUID open = f.core->currentPartial->id;
        changes = 0;
        f.partial(t += 1, c.text);
        const auto after = ids();
        EXPECT_EQ(f.shown(), c.shown);
        EXPECT_EQ(changes, c.changes) << c.text;
        std::size_t kept = 0;
        while (kept < std::min(before.size(), after.size()) && before[kept] == after[kept])
            ++kept;
        EXPECT_EQ(kept, c.kept) << c.text;
        EXPECT_EQ(f.core->currentPartial->id, open);
    }
    const CaptionSegment last = f.core->liveLeadingSentences->back();
    EXPECT_EQ(last.startedAt, t);
    EXPECT_EQ(last.state, CaptionSegmentState::final);
    EXPECT_EQ(last.revision, 0);
}

TEST(CaptionCoreTests, TheRevisionJumpsToTheRecognisersAndNeverBack) {
    CaptionCoreFixture f;
    struct Case {
        const char* text;
        std::int64_t given, expected;
    };
    const Case cases[] = {
        {"a", 11, 11},
        {"a b", 3, 12},
        {"a b", 90, 12},
        {"a b c", 13, 13},
        {"d", INT64_MAX, INT64_MAX},
        {"e", 5, INT64_MAX},
    };
    double t = 100;
    for (const Case& c : cases) {
        f.partial(t += 1, c.text, c.given);
        EXPECT_EQ(f.core->revision(), c.expected) << c.text;
    }
}

TEST(CaptionCoreTests, ANewUtteranceBeginsWhenTheOpenRowIsOver) {
    CaptionCoreFixture f;
    Lines resets;
    f.core->onSoftCaptionChange = [&](const auto& o) { resets.push_back(*o.resetReason); };
    Lines activity;
    f.core->onActivity = [&](auto a) { activity.push_back(word(a)); };
    f.core->reset(50);
    f.partial(100, "a");
    EXPECT_EQ(f.core->currentPartial->startedAt, 50)
        << "the first row keeps the start of the session";
    EXPECT_EQ(resets, Lines{"core.reset"});

    const UUID id = f.core->currentPartial->id;
    f.core->currentPartial.mutate([](auto& row) { row.state = CaptionSegmentState::final; });
    f.partial(101, "a");
    EXPECT_EQ(resets, (Lines{"core.reset", "newUtterance"}));
    EXPECT_EQ(activity, (Lines{"applied", "applied"})) << "the first text is never a repetition";
    EXPECT_NE(f.core->currentPartial->id, id);
    EXPECT_EQ(f.core->currentPartial->startedAt, 101);

    f.core->committedSegments.mutate([&](auto& rows) { rows.push_back(*f.core->currentPartial); });
    f.partial(102, "a");
    EXPECT_EQ(resets.size(), 3u);
}

TEST(CaptionCoreTests, SettingsAreAskedAfreshAndDebugEventsAreBounded) {
    CaptionCoreFixture f;
    f.partial(100, "One two. x");
    f.config.freezeStableSeconds = 0.2;
    f.partial(100.25, "One two. x");
    EXPECT_EQ(f.shown(), "One two. 🔒 /  /  / x");

    f.core->clearDebugEvents();
    for (int i = 0; i < 301; ++i)
        f.core->logEvent("⇄", std::to_string(i));
    EXPECT_EQ(f.core->debugEvents->size(), 300u);
    EXPECT_EQ(f.core->debugEvents->front().text, "1");
    EXPECT_EQ(f.core->debugEvents->back().text, "300");
    EXPECT_EQ(f.core->debugEvents->back().time, f.host.now());

    f.core->resetCounters();
    EXPECT_EQ(*f.core->lockCount, 0);
    EXPECT_EQ(f.core->committedSegments->size(), 1u);
    EXPECT_GT(f.core->revision(), 0);
}

TEST(CaptionCoreTests, TwoResetsLeaveTwoFreshRows) {
    CaptionCoreFixture f;
    f.final(100, "One.");
    f.core->reset(7);
    const CaptionSegment first = *f.core->currentPartial;
    f.core->reset(7);
    EXPECT_NE(f.core->currentPartial->id, first.id);
    CaptionSegment expected;
    expected.id = first.id;
    expected.startedAt = 7;
    EXPECT_EQ(first, expected);
    EXPECT_EQ(f.shown(), " /  /  / ");
    EXPECT_EQ(f.core->revision(), 0);
    EXPECT_EQ(*f.core->finalCount, 1) << "counters have their own reset";
}

} // namespace
} // namespace tessarune
