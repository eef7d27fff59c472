#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/captions/CorrectionObservation.h"
#include "TessaruneCore/captions/SoftCaptionObservation.h"
#include "TessaruneCore/captions/SoftCaptionTracker.h"
#include "TessaruneCore/captions/UtteranceTracker.h"
#include "TessaruneCore/captions/WordEvent.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"
#include "TessaruneCore/recognition/ASREvent.h"
#include "TessaruneCore/recognition/EngineCapabilities.h"
#include "TessaruneCore/segmentation/HeuristicBoundaryEngine.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// The caption state machine: recognition events in, three lists of rows and one open row out. It
/// has no access to sound, windows, files or clocks. Time and the one delayed call come through
/// closures, so the core behaves the same live and in a replay.
///
/// Text moves through the lists in this order: `currentPartial`, then `softCaptionSegments` or
/// `liveLeadingSentences`, then `committedSegments`. Until text is committed, a rewrite by the
/// recogniser can move it back. A flush updates the lists one after the other, committed rows
/// first, so views should read them only after the activity callback.
///
/// Main thread only, no locks. No operation fails. Callbacks run synchronously within the operation
/// that causes them and must not call `ingest`. The cost of an event does not depend on the length
/// of `committedSegments`, which is never truncated.
class CaptionCore {
  public:
    struct Config {
        Config(bool segmentText, bool freezeStable, bool hardClauses)
            : segment(segmentText), freeze(freezeStable), clauseLevel(hardClauses) {}

        bool segment;                     ///< split text into sentences at all
        bool freeze;                      ///< freeze sentences before their final arrives
        bool clauseLevel;                 ///< committed pieces may end at clause punctuation
        bool softClauseLevel = true;      ///< find the clauses of the open sentence
        double freezeStableSeconds = 0.6; ///< a sentence unchanged for this long is frozen
        /// How long a committed row suppresses its repetition by a freeze or a seal. There is no
        /// such limit for a final that repeats a frozen row.
        double duplicateCommitWindowSeconds = 4.0;
        bool softCaptionEnabled = true;
        double softCaptionStableSeconds = 0.3; ///< a clause unchanged for this long is shown
        bool earlyCutSelfSegmenting = false;   ///< freeze even if the recogniser segments by itself

        bool operator==(const Config&) const = default;
    };

    enum class Activity {
        partialDeduped, ///< a partial left the open text unchanged
        partialApplied,
        finalApplied
    };

    struct DebugEvent {
        UUID id;
        double time = 0; ///< wall clock, seconds since 1970
        std::string kind;
        std::string text;
    };

    using WordEvent = tessarune::WordEvent;
    using DebugEvents = std::deque<DebugEvent>;
    using Rows = std::vector<CaptionSegment>;
    using WordEvents = std::unordered_map<UUID, std::vector<WordEvent>>;
    using ConfigProvider = std::function<Config()>;
    using CapabilitiesProvider = std::function<EngineCapabilities()>;
    using Clock = std::function<double()>;
    /// Runs the block on the main thread after at least the given delay in seconds.
    using DelayedCallScheduler = std::function<void(double delay, Block block)>;

    /// `config` and `caps` are called at each use, so changed settings take effect at once.
    /// `wallClock` dates the debug events and defaults to `now`.
    CaptionCore(ConfigProvider config, CapabilitiesProvider caps, Clock now,
                DelayedCallScheduler scheduleFlush, UUIDSource newUUID = UUID::random,
                const Clock& wallClock = {});
    CaptionCore(const CaptionCore&) = delete;
    CaptionCore& operator=(const CaptionCore&) = delete;

    /// A core that uses the clock and main queue of `host`, which must outlive it.
    static CaptionCore onHost(ConfigProvider config, CapabilitiesProvider caps, Host& host,
                              UUIDSource newUUID = UUID::random);

    // Callbacks; each may be set or cleared at any time.
    std::function<void(const Rows&)> onCommit;
    std::function<void(Activity)> onActivity;
    std::function<void(const BoundaryObservation&)> onBoundaryDecision;
    std::function<void(const SoftCaptionObservation&)> onSoftCaptionChange;
    std::function<void(const CorrectionObservation&)> onCorrection;

    // The lists and the open row. The owner may assign them; the core never edits a committed row.
    Published<Rows> committedSegments;        ///< rows whose source text is fixed, oldest first
    Published<Rows> liveLeadingSentences;     ///< complete sentences that may still change
    Published<Rows> softCaptionSegments;      ///< stable clauses of the open sentence
    Published<CaptionSegment> currentPartial; ///< the rest of the open text, perhaps empty
    Published<std::int64_t> lockCount;        ///< rows frozen since `resetCounters`
    Published<std::int64_t> finalCount;       ///< rows committed by finals since `resetCounters`
    Published<DebugEvents> debugEvents;       ///< at most 300, newest last

    /// The last revision number assigned.
    std::int64_t revision() const { return revision_; }
    /// The words of committed rows, except sealed ones; cleared only when `committedSegments`
    /// becomes empty.
    const WordEvents& wordEvents() const { return wordEvents_; }

    /// Accepts an event; ignores one without text. A partial replaces the pending one, and pending
    /// partials are applied (flushed) at least 0.06 seconds apart. A final is processed at once and
    /// ends the utterance.
    void ingest(const ASREvent& event);

    /// Drops the pending partial; a scheduled flush then does nothing.
    void cancelPendingPartial();

    /// Called when the recogniser withdraws its hypothesis without a final: resets the open text as
    /// after a final, but commits nothing.
    void withdrawOpenText();

    /// Resets the state; the open row begins at `startedAt`. Keeps counters and debug events.
    void reset(double startedAt);
    /// Resets stability tracking and drops the soft captions; keeps all other rows and the
    /// revision.
    void resetFreezeState();
    void resetCounters();
    void clearDebugEvents();
    void logEvent(std::string_view kind, std::string_view text);

    /// Ends a session: commits everything live as rows that end at `t`, except repeats of rows that
    /// were committed within the duplicate window. Returns the ids of the new rows. Updates no
    /// counters; the only callback is `onSoftCaptionChange`. Call `cancelPendingPartial` first.
    std::vector<UUID> sealLiveIntoHistory(double t);

    /// Called by a display that reveals text gradually: the first `count` characters of the open
    /// row are now visible. A word keeps the time of its first reveal.
    void recordRevealedPrefix(std::int64_t count);

  private:
    struct PendingPartial {
        std::string text;
        std::int64_t revision;
        double timestamp;
    };
    struct SegmentMeta {
        std::optional<double> firstSeenAt;
        std::int64_t revisionCount = 0;
        std::vector<WordEvent> words;
    };
    /// The tail without the soft captions at its start.
    struct LiveTail {
        std::string text; ///< the entire tail if it does not begin with the soft captions
        bool matchedAllSoftPrefixes;
    };
    /// The soft captions to show, and the open text after them.
    struct SoftUpdate {
        Rows visible;
        std::string liveText;
    };
    using Sentences = std::vector<std::string>;

    // CaptionCore.cpp: ingest, resets, observations
    void ingestPartial(const ASREvent::Partial& partial);
    void ingestFinal(const ASREvent::Final& final);
    void schedulePartialFlush();
    void runDelayedFlush();
    BoundaryContext boundaryContext(const Config& cfg) const;
    CaptionSegment freshPartial(double startedAt) const;
    std::int64_t nextRevision() const;
    void resetBoundaries();
    void resetSoftCaptions(SoftCaptionObservation::Phase phase, std::string_view reason,
                           const std::optional<Config>& cfg);
    SoftCaptionObservation softCaptionObservation(SoftCaptionObservation::Phase phase,
                                                  const Config& cfg) const;
    void announceCommit(FreezeKind kind, const Rows& committed);
    void emitPartialBoundaryObservation(const std::string& inputText,
                                        const BoundaryDecision& decision);
    void emitCorrectionObservation(const std::string& finalText);
    /// Calls `callback` if it is set. Calls a copy, because a callback may replace itself.
    template <typename Argument>
    static void report(const std::function<void(Argument)>& callback,
                       std::type_identity_t<Argument> argument) {
        if (const std::function<void(Argument)> current = callback)
            current(argument);
    }

    // CaptionCore+Flush.cpp: updates the lists from the newest partial
    void flushPartial();
    bool utteranceIsOver() const;
    void beginUtterance(double timestamp, const Config& cfg);
    void commitFrozen(const std::string& text, const BoundaryDecision& decision, const Config& cfg);
    SoftUpdate advanceSoftCaptions(const BoundaryDecision& decision, const Config& cfg);
    void withdrawSoftCaptions(const BoundaryDecision& decision, const Config& cfg, bool changed);
    bool isAlreadyShown(const SoftUpdate& softUpdate, const Sentences& leading) const;
    void setLiveLeading(const Sentences& sentences);

    // CaptionCore+Commit.cpp: committed rows and duplicate suppression
    std::vector<SegmentMeta> consumeMeta(const Sentences& sentences,
                                         const std::vector<std::int64_t>& churn,
                                         const std::vector<ASRWordTiming>* audioTimings);
    Rows commitSentences(const Sentences& sentences, FreezeKind kind, double startedAt,
                         std::optional<double> endedAt, const std::vector<SegmentMeta>& meta);
    std::size_t committedOverlapPrefixCount(const Sentences& sentences, FreezeKind kind,
                                            double t) const;
    std::size_t recentLocalAgreementOverlapPrefixCount(const Sentences& sentences, double t) const;
    std::size_t sealedLiveOverlapPrefixCount(const Rows& segments, double t) const;
    template <typename MayMatch>
    std::size_t overlapPrefixCount(const Sentences& keys, MayMatch mayMatch) const;
    bool committedWithinWindow(const CaptionSegment& row, double t) const;
    static LiveTail liveTail(const Rows& segments, std::string_view tail);

    const ConfigProvider config_;
    const CapabilitiesProvider caps_;
    const Clock now_;
    const DelayedCallScheduler scheduleDelayedFlush_;
    const UUIDSource newUUID_;
    const Clock wallClock_;

    std::int64_t revision_ = 0;
    WordEvents wordEvents_;
    UtteranceTracker tracker_;
    SoftCaptionTracker softCaptionTracker_;
    HeuristicBoundaryEngine boundaryEngine_;
    Sentences lastBoundaryLeading_;
    std::optional<PendingPartial> pendingPartial_;
    bool partialFlushScheduled_ = false;
    double lastPartialFlush_ = 0;

    /// Held weakly by the delayed block; expires with the core.
    std::shared_ptr<CaptionCore*> self_;
};

} // namespace tessarune
