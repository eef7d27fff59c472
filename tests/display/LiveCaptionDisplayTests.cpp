#include "Tessarune/display/LiveCaptionDisplayCache.h"
#include "Tessarune/display/LiveCaptionDisplaySettingsObserver.h"
#include "Tessarune/display/LiveCaptionDisplayStore.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace tessarune {
namespace {

double noTime() {
    return 0;
}

/// The captions of a session, and the cache that follows them.
struct Captions {
    std::vector<CaptionSegment> committed;
    std::vector<CaptionSegment> leading;
    std::vector<CaptionSegment> soft;
    CaptionSegment partial;
    std::unordered_set<UUID> cleared;
    LiveCaptionDisplayCache cache{noTime};
    UUIDSource newID = countingUUIDSource();

    CaptionSegment segment(const std::string& text,
                           CaptionSegmentState state = CaptionSegmentState::final) {
        CaptionSegment made;
        made.id = newID();
        made.sourceText = text;
        made.state = state;
        return made;
    }
    void commit(const std::string& text, std::optional<UUID> unit = {},
                CaptionSegmentState state = CaptionSegmentState::final) {
        committed.push_back(segment(text, state));
        committed.back().translationUnitID = unit;
    }
    /// Turns the rows `first` to `last` into one translated unit, as a session does.
    LiveCaptionDisplayTranslationPatch translate(std::size_t first, std::size_t last,
                                                 const std::string& text) {
        LiveCaptionDisplayTranslationPatch patch{newID(), {}, committed[last].id, text};
        for (std::size_t i = first; i <= last; ++i)
            patch.segmentIDs.push_back(committed[i].id);
        TranslationSegmentMutator::applySuccess(patch.translationUnitID, patch.segmentIDs,
                                                patch.resultSegmentID, text, committed);
        return patch;
    }
    LiveCaptionDisplayFrame refresh(bool force = false,
                                    const LiveCaptionDisplayTranslationPatch* patch = nullptr) {
        cache.update({committed, leading, soft, partial, cleared}, force, patch);
        return cache.frame();
    }
    /// The frame that a new cache makes of the same captions.
    LiveCaptionDisplayFrame rebuilt() const {
        LiveCaptionDisplayCache fresh(noTime);
        fresh.update({committed, leading, soft, partial, cleared}, true, nullptr);
        return fresh.frame();
    }
};

auto rowsOf(const LiveCaptionDisplayFrame& frame) {
    return std::tuple(frame.sourceTextTail, frame.mergedBilingualSourceTail, frame.liveTailRows,
                      frame.mergedBilingualLiveTailRows, frame.livePartialRow,
                      frame.translationTail);
}

std::string shown(const LiveCaptionDisplayRows& rows) {
    std::string text;
    for (const auto& row : rows)
        text += row.sourceText + "=" + row.translatedText + "|";
    return text;
}

/// Incremental updates show what a rebuild shows, and any visible change raises a revision. Two
/// accepted exceptions do not occur here: a committed row that changes in the middle of the list,
/// and a patch without text.
RC_GTEST_PROP(LiveCaptionDisplayTests, IncrementalUpdatesShowWhatARebuildShows, ()) {
    Captions captions;
    LiveCaptionDisplayFrame before = captions.refresh(true);
    // A plain `inRange` draws its highest values only at the largest sizes.
    const auto some = [](std::size_t limit) {
        return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange<std::size_t>(0, limit));
    };
    for (std::size_t steps = some(40); steps > 0; --steps) {
        const std::string text = *rc::gen::element<std::string>("a", " b. ", "", " \n", "Ca va?");
        const auto state = some(6) == 0 ? CaptionSegmentState::partial : CaptionSegmentState::final;
        std::optional<LiveCaptionDisplayTranslationPatch> patch;
        bool force = false;
        // Several changes may precede one refresh.
        for (std::size_t changes = 1 + some(3); changes > 0; --changes) {
            switch (some(9)) {
            case 0:
            case 1:
                for (std::size_t count = 1 + some(3); count > 0; --count)
                    captions.commit(text, {}, state);
                break;
            case 2: // a live row is committed under its id
                if (const auto& live = captions.leading;
                    !live.empty() && std::ranges::count(captions.committed, live.front().id,
                                                        &CaptionSegment::id) == 0)
                    captions.committed.push_back(live.front());
                break;
            case 3:
                captions.leading.assign(some(3), captions.segment(text));
                captions.soft.assign(some(2), captions.segment(text));
                break;
            case 4:
                captions.partial = some(3) > 0 || captions.soft.empty() ? captions.segment(text)
                                                                        : captions.soft.front();
                break;
            case 5: // rows are cleared, or shown again
                force = true;
                if (captions.committed.empty() || some(3) == 0)
                    captions.cleared.clear();
                else
                    captions.cleared.insert(captions.committed[some(captions.committed.size())].id);
                break;
            case 6:
                force = true;
                if (some(4) == 0)
                    captions.committed.clear();
                break;
            default:
                // A unit consists of adjacent pending rows, and units may finish in any order.
                if (const auto& rows = captions.committed; !patch && !rows.empty()) {
                    const std::size_t last = some(rows.size());
                    std::size_t first = last;
                    while (first > 0 && !rows[first - 1].translatedText && some(2) == 0)
                        --first;
                    if (!rows[last].translatedText)
                        patch = captions.translate(first, last, text);
                }
            }
        }
        const LiveCaptionDisplayFrame frame = captions.refresh(force, patch ? &*patch : nullptr);
        RC_ASSERT(rowsOf(frame) == rowsOf(captions.rebuilt()));
        RC_ASSERT(rowsOf(frame) == rowsOf(before) || !(frame == before));
        RC_ASSERT(frame.translationTail == before.translationTail ||
                  frame.translationRevision != before.translationRevision);
        RC_ASSERT(captions.refresh() == frame);
        before = frame;
    }
}

TEST(LiveCaptionDisplayTests, ATranslationUnitIsOneRowUnlessAnOpenRowDividesIt) {
    Captions captions;
    const UUID unit = captions.newID();
    captions.commit("Well,", unit);
    captions.commit("yes.", unit);
    captions.committed.back().translatedText = " oui ";
    captions.commit("Still", unit, CaptionSegmentState::partial);
    captions.commit("going.", unit);
    const auto merged = captions.refresh(true).mergedBilingualSourceTail;
    EXPECT_EQ(shown(merged), "Well, yes.=oui|Still=|going.=|");
    EXPECT_EQ(merged[0].id, captions.committed[1].id);
    EXPECT_EQ(merged[0].normalizedSourceKey(), "well yes");
}

TEST(LiveCaptionDisplayTests, WorkIsProportionalToTheChange) {
    Captions captions;
    captions.commit("One.");
    captions.commit("Two.");
    captions.refresh(true);
    const LiveCaptionDisplayFrame old = captions.refresh();
    captions.commit("Three.");
    captions.refresh();
    const auto patch = captions.translate(0, 1, "Un deux.");
    const auto shared = captions.refresh(false, &patch);
    EXPECT_EQ(captions.cache.sourceFullRebuildCount(), 1);
    EXPECT_EQ(captions.cache.sourceAppendUpdateCount(), 1);
    EXPECT_EQ(shown(shared.mergedBilingualSourceTail), "One. Two.=Un deux.|Three.=|");
    EXPECT_EQ(shown(old.sourceTextTail), "One.=|Two.=|") << "an older frame never changes";
    EXPECT_EQ(&shared.sourceTextTail[2], &captions.cache.frame().sourceTextTail[2]);
    // Accepted: a committed row that changes shows its old text until a rebuild. A patch without
    // text removes a row's translation, but not from the list of translations.
    captions.committed[1].sourceText = "Due.";
    auto withoutText = patch;
    withoutText.translatedText.reset();
    const auto frame = captions.refresh(false, &withoutText);
    EXPECT_EQ(shown(frame.sourceTextTail), "One.=|Two.=|Three.=|");
    EXPECT_EQ(frame.translationTail.size(), 1U);
    // A patch does not affect rows that are still live.
    captions.leading = {captions.segment("Four")};
    const auto live = captions.refresh();
    const LiveCaptionDisplayTranslationPatch ofLive{
        captions.newID(), {captions.leading[0].id}, captions.leading[0].id, "quatre"};
    EXPECT_EQ(captions.refresh(false, &ofLive), live);
    // Cleared rows cause no further work.
    captions.cleared = {captions.committed[0].id, captions.committed[1].id};
    const auto cleared = captions.refresh();
    captions.leading.clear();
    captions.commit("Five.");
    const auto after = captions.refresh();
    EXPECT_EQ(shown(after.sourceTextTail), "Three.=|Five.=|");
    EXPECT_EQ(&after.sourceTextTail[0], &cleared.sourceTextTail[0]);
}

TEST(LiveCaptionDisplayTests, OnlyAChangedFrameIsPublished) {
    NotificationCenter notifications;
    LiveCaptionDisplayStore store(noTime, &notifications);
    int posted = 0;
    int observed = 0;
    const auto observation =
        notifications.observe(liveCaptionFramePublished, [&](const auto&) { ++posted; });
    store.frame.onDidChange([&](const auto&) { ++observed; });
    auto frame = LiveCaptionDisplayFrame::empty();
    EXPECT_FALSE(store.update(frame).isPublished);
    for (const auto& change : std::vector<std::function<void()>>{
             [&] { ++frame.sourceRevision; }, [&] { ++frame.translationRevision; },
             [&] { frame.ghostTranslationText = "oui"; },
             [&] { frame.ghostTranslationSourceText = "yes"; }, [&] { frame.statusMessage = "…"; },
             [&] { frame.sessionPhase = LiveSessionPhase::listening; },
             [&] { frame.translationStatus.canRetryIncomplete = true; }}) {
        change();
        EXPECT_TRUE(store.update(frame).isPublished);
        EXPECT_FALSE(store.update(frame).isPublished);
    }
    EXPECT_EQ(posted, 7);
    EXPECT_EQ(observed, 7);
    EXPECT_EQ(store.perf.skippedFramePublishes, 8); // the empty frame and 7 repeats
    EXPECT_EQ(store.perf.updateRequests, 15);
}

TEST(LiveCaptionDisplayTests, DiagnosticsSampleFrequentUpdates) {
    using Mode = AppleAnalyzerDiagnosticsMode;
    EXPECT_TRUE(shouldRecordDisplayDiagnostics("asr.final", 4, false, Mode::summary));
    for (const auto& [index, isPublished, isRecorded] :
         {std::tuple(3, true, true), {4, true, false}, {12, true, true}, {12, false, false}}) {
        EXPECT_EQ(shouldRecordDisplayDiagnostics("asr.partial", index, isPublished, Mode::off),
                  isRecorded);
        EXPECT_TRUE(
            shouldRecordDisplayDiagnostics("core.activity", index, isPublished, Mode::fullRaw));
    }
}

TEST(LiveCaptionDisplayTests, ChangesOfCaptionSettingsAreReported) {
    testing::MemoryUserDefaults defaults;
    AppSettings settings(defaults);
    std::vector<std::string> reported;
    {
        LiveCaptionDisplaySettingsObserver observer(
            settings, [&](const std::string& name, const std::string& value) {
                reported.push_back(name + "=" + value);
            });
        settings.subtitleLayoutMode = SubtitleLayoutMode::lyrics;
        settings.reload();
        settings.keepOnTop = false;
        settings.smoothPaceMS = 130;
        settings.translationBackend = "Apple";
    }
    settings.smoothPaceMS = 100;
    EXPECT_EQ(reported, (std::vector<std::string>{"subtitleLayoutMode=lyrics", "smoothPaceMS=130",
                                                  "translationBackend=Apple"}));
}

} // namespace
} // namespace tessarune
