#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "tests/core/CaptionCoreFixture.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Lines = std::vector<std::string>;

TEST(CaptionCoreTests, PartialsAreThinnedOutAndOnlyTheNewestIsFlushed) {
    struct Case {
        const char* name;
        const char* script;
        const char* expected; // the time and open text of each activity, then the number of timers
    };
    const Case cases[] = {
        {"one timer flushes the newest partial", "100 p a;100.01 p  a b ;100.03 p a b c",
         "100.00 applied a, 100.06 applied a b c, timers 1"},
        {"a first partial near time zero waits", "0.02 p a", "0.06 applied a, timers 1"},
        {"a final replaces the pending partial", "100 p a;100.01 p a b;100.02 f Other.",
         "100.00 applied a, 100.02 final , timers 1"},
        {"a partial after a final waits for the running timer",
         "100 p a;100.01 p a b;100.02 f Other.;100.03 p c",
         "100.00 applied a, 100.02 final , 100.06 applied c, timers 1"},
        {"a blank final does not drop the pending partial", "100 p a;100.01 p a b;100.02 f  \n",
         "100.00 applied a, 100.06 applied a b, timers 1"},
        {"a blank partial does not replace the pending one", "100 p a;100.01 p a b;100.02 p \t",
         "100.00 applied a, 100.06 applied a b, timers 1"},
        {"a reset drops the pending partial", "100 p a;100.01 p a b;100.02 r",
         "100.00 applied a, timers 1"},
        {"a cancelled partial", "100 p a;100.01 p a b;100.02 c", "100.00 applied a, timers 1"},
        {"a repeated text restarts the interval", "100 p a;100.07 p a;100.1 p b",
         "100.00 applied a, 100.07 deduped a, 100.13 applied b, timers 1"},
        {"a canonically equivalent text is a repeated text", "100 p caf\u00e9;101 p cafe\u0301",
         "100.00 applied caf\u00e9, 101.00 deduped caf\u00e9, timers 0"},
    };
    for (const Case& c : cases) {
        CaptionCoreFixture f(0);
        Lines log;
        f.core->onActivity = [&](auto activity) {
            log.push_back(Text::fixed(f.host.now(), 2) + " " + name(activity) + " " +
                          f.core->currentPartial->sourceText);
        };
        f.play(c.script);
        f.host.runUntilIdle();
        log.push_back("timers " + std::to_string(f.timersStarted));
        EXPECT_EQ(Text::joined(log, ", "), c.expected) << c.name;
    }
}

TEST(CaptionCoreTests, CallbacksMayClearThemselvesAndAFlushMayOutliveTheCore) {
    CaptionCoreFixture f;
    const auto calls = std::make_shared<int>(0);
    f.core->onActivity = [&core = *f.core, calls](auto) {
        core.onActivity = nullptr;
        ++*calls;
    };
    f.play("100 p a;101 p b");
    EXPECT_EQ(*calls, 1);
    f.core->onActivity = [calls](auto) { ++*calls; };
    f.play("101.01 p c");
    f.core.reset();
    f.host.runUntilIdle();
    EXPECT_EQ(*calls, 1);
}

/// Records every change and callback in order.
class Trace {
  public:
    explicit Trace(CaptionCore& core) {
        const auto note = [this](const char* line) {
            return [this, line](const auto&) { lines_.emplace_back(line); };
        };
        core.committedSegments.onDidChange(note("committed"));
        core.liveLeadingSentences.onDidChange(note("leading"));
        core.softCaptionSegments.onDidChange(note("soft"));
        core.currentPartial.onDidChange(note("open"));
        core.lockCount.onDidChange(note("locks"));
        core.finalCount.onDidChange(note("finals"));
        core.debugEvents.onDidChange(
            [this](const auto& all) { add("debug", all.back().kind, all.back().text); });
        core.onCommit = [this](const auto& rows) { add("onCommit", rows.size()); };
        core.onActivity = [this](auto activity) { add(name(activity)); };
        core.onBoundaryDecision = [this](const BoundaryObservation& o) {
            add("boundary", name(o.phase), o.decision.hardPieces.size(), o.decision.leading.size());
        };
        core.onSoftCaptionChange = [this](const SoftCaptionObservation& o) {
            add("soft", name(o.phase), o.resetReason.value_or("-"), o.visibleCount,
                o.candidateCount, o.changed ? "changed" : "same", "'" + o.sample + "'");
        };
        core.onCorrection = [this](const CorrectionObservation& o) {
            add("correction '" + o.shownText + "'", o.droppedWords, o.addedWords, o.commonWords);
        };
    }

    /// Returns the recorded lines that begin with `start`, and clears the record.
    std::string since(std::string_view start = "") {
        Lines chosen;
        for (const std::string& line : std::exchange(lines_, {})) {
            if (line.starts_with(start))
                chosen.push_back(line);
        }
        return Text::joined(chosen, ", ");
    }

  private:
    template <typename First, typename... Rest>
    void add(const First& first, const Rest&... rest) {
        std::ostringstream line;
        line << first;
        ((line << " " << rest), ...);
        lines_.push_back(line.str());
    }
    Lines lines_;
};

TEST(CaptionCoreTests, ChangesAndCallbacksComeInOneFixedOrder) {
    CaptionCoreFixture f;
    Trace trace(*f.core);
    f.play("100 p One two three. four");
    EXPECT_EQ(trace.since(), "boundary partial 0 1, locks, leading, open, applied");
    f.play("100.3 p One two three. four");
    EXPECT_EQ(trace.since(), "locks, deduped") << "an unchanged text changes no row";
    f.play("100.7 p One two three. four");
    EXPECT_EQ(trace.since(),
              "boundary partial 1 0, committed, locks, debug 🔒 One two three., onCommit 1, "
              "soft hardLock localAgreement 0 0 same '', leading, open, applied");
    f.play("101 f One two three. Four five. Six");
    EXPECT_EQ(trace.since(),
              "correction 'four' 0 5 1, boundary final 2 0, committed, committed, finals, "
              "debug 🏁 Four five., debug 🏁 Six, onCommit 2, leading, "
              "soft engineFinal engineFinal 0 0 same '', open, final");
    f.core->resetFreezeState();
    EXPECT_EQ(trace.since(), "soft reset resetFreezeState 0 0 same ''");
    f.play("102 p Seven eight nine. ten;102.7 p Seven eight nine. ten");
    trace.since();
    f.play("103 f seven eight nine");
    EXPECT_EQ(trace.since(), "correction 'ten' 1 3 0, finals, leading, "
                             "soft engineFinal engineFinal 0 0 same '', open, final")
        << "a final that adds nothing still ends the utterance";
    f.play("104 p eleven");
    trace.since();
    f.core->sealLiveIntoHistory(105);
    EXPECT_EQ(trace.since(), "leading, soft seal sealLiveIntoHistory 0 0 same '', committed, open");
    f.core->reset(106);
    EXPECT_EQ(trace.since(), "committed, leading, soft reset core.reset 0 0 same '', open");
}

TEST(CaptionCoreTests, AVerboseLogContainsFreezesAndSkippedRepeats) {
    struct Verbosity {
        explicit Verbosity(TessaruneLog::Sink sink) {
            TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::verbose);
            TessaruneLog::setSink(std::move(sink));
        }
        ~Verbosity() {
            TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::core);
            TessaruneLog::setSink({});
        }
    };
    CaptionCoreFixture f;
    Lines lines;
    f.core->debugEvents.onDidChange([&](const auto& all) { lines.push_back(all.back().kind); });
    {
        const Verbosity verbosity([&](auto, auto, const auto& line) { lines.push_back(line); });
        f.play("100 p A one. B two. c;100.7 p A one. B two. c");
        f.core->resetFreezeState();
        f.play("101 p A one. B two. c d;101.7 p A one. B two. c d");
        f.core->resetFreezeState();
        f.play("102 p A one. B two. c");
        f.core->sealLiveIntoHistory(102);
    }
    f.core->committedSegments.mutate([](auto& rows) { rows.pop_back(); });
    f.play("103 f A one. B two.");
    EXPECT_EQ(
        lines,
        (Lines{"Tessarune B2b FREEZE 🔒 -> 'A one.'", "🔒", "Tessarune B2b FREEZE 🔒 -> 'B two.'", "🔒",
               "Tessarune skipped 2 duplicate local agreement segment(s) already "
               "committed",
               "Tessarune skipped 2 duplicate live seal segment(s) already committed"}));
}

TEST(CaptionCoreTests, SoftCaptionsAppearAndAreWithdrawn) {
    CaptionCoreFixture f;
    Trace trace(*f.core);
    f.play("100 p if it rains today, we stay at home, then");
    EXPECT_EQ(trace.since("soft"), "");
    f.play("100.4 p if it rains today, we stay at home, then we");
    EXPECT_EQ(trace.since("soft"), "soft partial - 2 2 changed 'we stay at home,', soft");
    EXPECT_EQ(f.shown(), " /  / if it rains today, ◌|we stay at home, ◌ / then we");
    f.play("100.5 p If it rains today, we stay at home, then we sleep");
    EXPECT_EQ(trace.since("soft"), "soft") << "a change of case alone is not reported";
    // The second clause is stable, but the first is new: the visible rows no longer match the tail.
    f.play("100.6 p If it snows today, we stay at home, then we sleep");
    EXPECT_EQ(trace.since("soft"), "soft reset softPrefixMismatch 0 2 changed "
                                   "'If it snows today, we stay at home,', soft");
    EXPECT_EQ(f.shown(), " /  /  / If it snows today, we stay at home, then we sleep");
    f.play("100.7 p If it snows today, we stay at home, then we eat");
    EXPECT_EQ(trace.since("soft"), "") << "after a withdrawal every clause waits again";
    f.play("100.8 p It rained, we stayed at home, then;101.2 p It rained, we stayed at home, then");
    trace.since();
    f.config.softCaptionEnabled = false;
    f.play("101.3 p It rained, we stayed at home, then");
    EXPECT_EQ(trace.since("soft"),
              "soft partial - 0 1 changed 'It rained, we stayed at home,', soft");
    EXPECT_EQ(f.shown(), " /  /  / It rained, we stayed at home, then");
}

TEST(CaptionCoreTests, LeadingRowsKeepTheirIdentity) {
    CaptionCoreFixture f;
    f.caps.selfSegments = true;
    int changes = 0;
    f.core->liveLeadingSentences.onDidChange([&](const auto&) { ++changes; });
    struct Case {
        const char* step;
        const char* shown;
        int changes;
        std::size_t kept; // rows at the start that have the same id as before
    };
    const Case cases[] = {
        {"101 p A one. B two. C three. x", " / A one.|B two.|C three. /  / x", 1, 0},
        {"102 p A one. B too. C tree. x", " / A one.|B too.|C tree. /  / x", 2, 3},
        {"103 p A one. B too. x", " / A one.|B too. /  / x", 1, 2},
        {"104 p A one. B too. x y", " / A one.|B too. /  / x y", 0, 2},
        {"105 p A one. B. Two. Four. x", " / A one.|B. Two.|Four. /  / x", 1, 2},
    };
    for (const Case& c : cases) {
        const CaptionCore::Rows before = *f.core->liveLeadingSentences;
        changes = 0;
        f.play(c.step);
        const CaptionCore::Rows& after = *f.core->liveLeadingSentences;
        EXPECT_EQ(f.shown(), c.shown);
        EXPECT_EQ(changes, c.changes) << c.step;
        std::size_t kept = 0;
        while (kept < std::min(before.size(), after.size()) && before[kept].id == after[kept].id)
            ++kept;
        EXPECT_EQ(kept, c.kept) << c.step;
    }
    EXPECT_EQ(f.core->liveLeadingSentences->back().startedAt, 105);
    EXPECT_EQ(f.core->liveLeadingSentences->back().state, CaptionSegmentState::final);
}

TEST(CaptionCoreTests, TheRevisionAdoptsALargerOneOfTheRecogniserAndNeverDecreases) {
    CaptionCoreFixture f;
    struct Case {
        const char* text;
        std::int64_t given, expected;
    };
    const Case cases[] = {{"a", 11, 11},
                          {"a b", 3, 12},
                          {"a b", 90, 12},
                          {"a b c", 13, 13},
                          {"d", INT64_MAX, INT64_MAX},
                          {"e", 5, INT64_MAX}};
    for (const Case& c : cases) {
        f.host.advanceBy(1);
        f.core->ingest(ASREvent::partial(c.text, c.given, 0));
        EXPECT_EQ(f.core->revision(), c.expected) << c.text;
    }
}

TEST(CaptionCoreTests, ANewUtteranceBeginsWhenTheOpenRowIsFinalOrCommitted) {
    CaptionCoreFixture f;
    Trace trace(*f.core);
    f.core->reset(50);
    f.play("100 p a");
    EXPECT_EQ(f.core->currentPartial->startedAt, 50) << "the first row keeps the session's start";
    trace.since();
    f.core->currentPartial.mutate([](auto& row) { row.state = CaptionSegmentState::final; });
    f.play("101 p a");
    EXPECT_EQ(trace.since(),
              "open, open, soft reset newUtterance 0 0 same '', locks, open, applied")
        << "the first text of an utterance is always applied";
    EXPECT_EQ(f.core->currentPartial->startedAt, 101);
    f.core->committedSegments.mutate([&](auto& rows) { rows.push_back(*f.core->currentPartial); });
    f.play("102 p a");
    EXPECT_EQ(trace.since("soft"), "soft reset newUtterance 0 0 same ''");
}

TEST(CaptionCoreTests, EachResetClearsOnlyItsOwnState) {
    CaptionCoreFixture f;
    f.play("100 p One two. x");
    f.config.freezeStableSeconds = 0.2;
    f.play("100.25 p One two. x");
    EXPECT_EQ(f.shown(), "One two. 🔒 /  /  / x") << "a changed setting applies to the next partial";
    f.play("101 f Three.");
    f.core->resetCounters();
    EXPECT_EQ(*f.core->lockCount + *f.core->finalCount, 0);
    EXPECT_EQ(f.core->committedSegments->size(), 2u);

    f.core->clearDebugEvents();
    for (int i = 0; i < 301; ++i) // one more than are kept
        f.core->logEvent("⇄", std::to_string(i));
    EXPECT_EQ(f.core->debugEvents->size(), 300u);
    EXPECT_EQ(f.core->debugEvents->front().text, "1");

    f.play("102 f Four.");
    f.core->reset(7);
    CaptionSegment fresh = *f.core->currentPartial;
    f.core->reset(7);
    EXPECT_NE(f.core->currentPartial->id, fresh.id);
    fresh.id = f.core->currentPartial->id;
    EXPECT_EQ(*f.core->currentPartial, fresh);
    EXPECT_EQ(fresh.startedAt, 7);
    EXPECT_EQ(f.shown(), " /  /  / ");
    EXPECT_EQ(f.core->revision(), 0);
    EXPECT_EQ(*f.core->finalCount, 1);
    EXPECT_EQ(f.core->debugEvents->size(), 300u);
}

} // namespace
} // namespace tessarune
