#include "TessaruneCore/CaptionCore.h"

#include "TessaruneCore/captions/CorrectionDiff.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <iterator>
#include <limits>
#include <utility>

namespace tessarune {

namespace {

/// The minimum time between two flushes, in seconds; partials arrive at any rate.
constexpr double partialMinInterval = 0.06;
constexpr std::size_t maxDebugEvents = 300;

} // namespace

CaptionCore::CaptionCore(ConfigProvider config, CapabilitiesProvider caps, Clock now,
                         DelayedCallScheduler scheduleFlush, UUIDSource newUUID,
                         const Clock& wallClock)
    : config_(std::move(config)),
      caps_(std::move(caps)),
      now_(std::move(now)),
      scheduleDelayedFlush_(std::move(scheduleFlush)),
      newUUID_(std::move(newUUID)),
      wallClock_(wallClock ? wallClock : now_),
      boundaryEngine_(config_().freezeStableSeconds),
      self_(std::make_shared<CaptionCore*>(this)) {
    committedSegments.onDidChange([this](const Rows& rows) {
        if (rows.empty() && !wordEvents_.empty())
            wordEvents_.clear();
    });
    currentPartial = freshPartial(0);
}

CaptionCore CaptionCore::onHost(ConfigProvider config, CapabilitiesProvider caps, Host& host,
                                UUIDSource newUUID) {
    return CaptionCore(
        std::move(config), std::move(caps), [&host] { return host.now(); },
        [&host](double delay, Block block) { host.after(delay, std::move(block)); },
        std::move(newUUID), [&host] { return host.wallClock(); });
}

void CaptionCore::ingest(const ASREvent& event) {
    if (const auto* partial = std::get_if<ASREvent::Partial>(&event.value)) {
        ingestPartial(*partial);
    } else {
        ingestFinal(std::get<ASREvent::Final>(event.value));
    }
}

void CaptionCore::ingestPartial(const ASREvent::Partial& partial) {
    // An empty partial does not clear the caption.
    const std::string_view text = Text::trimmed(partial.text);
    if (text.empty())
        return;
    pendingPartial_ = PendingPartial{std::string(text), partial.revision, partial.timestamp};
    schedulePartialFlush();
}

void CaptionCore::schedulePartialFlush() {
    if (partialFlushScheduled_)
        return;
    const double elapsed = now_() - lastPartialFlush_;
    if (elapsed >= partialMinInterval) {
        flushPartial();
        return;
    }
    partialFlushScheduled_ = true;
    scheduleDelayedFlush_(partialMinInterval - elapsed, [weak = std::weak_ptr(self_)] {
        if (const auto core = weak.lock())
            (*core)->runDelayedFlush();
    });
}

void CaptionCore::runDelayedFlush() {
    partialFlushScheduled_ = false;
    flushPartial();
}

void CaptionCore::ingestFinal(const ASREvent::Final& final) {
    const std::string text(Text::trimmed(final.text));
    if (text.empty())
        return;
    pendingPartial_.reset();
    // Must run while the tracker still knows what was on screen.
    emitCorrectionObservation(text);

    const Config cfg = config_();
    const BoundaryDecision decision = boundaryEngine_.ingestFinal(text, boundaryContext(cfg));
    const bool anyPieces =
        !decision.softPieces.empty() || !decision.hardPieces.empty() || !decision.leading.empty();
    if (anyPieces && onBoundaryDecision)
        report(onBoundaryDecision, {BoundaryObservation::Phase::final, now_(), text, decision});

    tracker_.alignWords(text, final.end);
    // If there are more or fewer timings than words, they cannot be assigned to the words.
    const bool timingsFit = final.words && final.words->size() == Text::countOfBlankSeparated(text);
    const auto meta = consumeMeta(decision.hardPieces, tracker_.leadingChangeCounts,
                                  timingsFit ? &*final.words : nullptr);
    const Rows committed =
        commitSentences(decision.hardPieces, FreezeKind::engine, final.start, final.end, meta);
    finalCount = *finalCount + std::ssize(committed);
    announceCommit(FreezeKind::engine, committed);

    liveLeadingSentences = Rows();
    resetSoftCaptions(SoftCaptionObservation::Phase::engineFinal, "engineFinal", cfg);
    resetBoundaries();
    tracker_ = UtteranceTracker();
    currentPartial = freshPartial(final.end);
    report(onActivity, Activity::finalApplied);
}

void CaptionCore::announceCommit(FreezeKind kind, const Rows& committed) {
    if (committed.empty())
        return;
    const bool isFreeze = kind == FreezeKind::ours;
    for (const CaptionSegment& row : committed) {
        if (isFreeze) {
            TessaruneLog::asr.verbose(
                [&] { return "Tessarune B2b FREEZE 🔒 -> '" + row.sourceText + "'"; });
        }
        logEvent(isFreeze ? "🔒" : "🏁", row.sourceText);
    }
    report(onCommit, committed);
}

void CaptionCore::cancelPendingPartial() {
    pendingPartial_.reset();
}

void CaptionCore::withdrawOpenText() {
    pendingPartial_.reset();
    liveLeadingSentences = Rows();
    resetFreezeState();
    tracker_ = UtteranceTracker();
    currentPartial = freshPartial(now_());
}

void CaptionCore::reset(double startedAt) {
    pendingPartial_.reset();
    committedSegments = Rows();
    liveLeadingSentences = Rows();
    resetSoftCaptions(SoftCaptionObservation::Phase::reset, "core.reset", std::nullopt);
    resetBoundaries();
    tracker_ = UtteranceTracker();
    revision_ = 0;
    currentPartial = freshPartial(startedAt);
}

void CaptionCore::resetFreezeState() {
    resetBoundaries();
    resetSoftCaptions(SoftCaptionObservation::Phase::reset, "resetFreezeState", std::nullopt);
}

void CaptionCore::resetCounters() {
    lockCount = 0;
    finalCount = 0;
}

void CaptionCore::clearDebugEvents() {
    debugEvents = DebugEvents();
}

void CaptionCore::logEvent(std::string_view kind, std::string_view text) {
    debugEvents.mutate([&](DebugEvents& events) {
        events.push_back({newUUID_(), wallClock_(), std::string(kind), std::string(text)});
        while (events.size() > maxDebugEvents)
            events.pop_front();
    });
}

BoundaryContext CaptionCore::boundaryContext(const Config& cfg) const {
    const EngineCapabilities caps = caps_();
    return {
        .caps = caps,
        .segment = cfg.segment,
        .freeze = cfg.freeze,
        .clauseLevel = cfg.clauseLevel,
        .softClauseLevel = cfg.softClauseLevel,
        .freezeStableSeconds = cfg.freezeStableSeconds,
        .maxUnpunctuatedWords = caps.maxUnpunctuatedUnits,
        .boundaryUnit = caps.boundaryUnit,
        .earlyCutSelfSegmenting = cfg.earlyCutSelfSegmenting,
    };
}

CaptionSegment CaptionCore::freshPartial(double startedAt) const {
    CaptionSegment row;
    row.id = newUUID_();
    row.startedAt = startedAt;
    return row;
}

std::int64_t CaptionCore::nextRevision() const {
    // A recogniser's revision is adopted unchecked, so `revision_` may already be the largest
    // possible number.
    return revision_ == std::numeric_limits<std::int64_t>::max() ? revision_ : revision_ + 1;
}

void CaptionCore::resetBoundaries() {
    boundaryEngine_.reset();
    lastBoundaryLeading_.clear();
}

void CaptionCore::resetSoftCaptions(SoftCaptionObservation::Phase phase, std::string_view reason,
                                    const std::optional<Config>& cfg) {
    const Config used = cfg ? *cfg : config_();
    const bool hadAny = !softCaptionTracker_.isEmpty();
    softCaptionTracker_.clear();
    if (!softCaptionSegments->empty())
        softCaptionSegments = Rows();
    // A reset is reported even if it changes nothing, a partial only if it changes something.
    if (!onSoftCaptionChange || (!hadAny && phase == SoftCaptionObservation::Phase::partial))
        return;
    SoftCaptionObservation observation = softCaptionObservation(phase, used);
    observation.changed = hadAny;
    observation.resetReason = reason;
    report(onSoftCaptionChange, observation);
}

SoftCaptionObservation CaptionCore::softCaptionObservation(SoftCaptionObservation::Phase phase,
                                                           const Config& cfg) const {
    SoftCaptionObservation observation;
    observation.phase = phase;
    observation.t = now_();
    observation.enabled = cfg.softCaptionEnabled;
    observation.stableSeconds = cfg.softCaptionStableSeconds;
    return observation;
}

void CaptionCore::emitPartialBoundaryObservation(const std::string& inputText,
                                                 const BoundaryDecision& decision) {
    // Unchanged state is not reported again.
    if (decision.hardPieces.empty() && Text::equal(decision.leading, lastBoundaryLeading_))
        return;
    lastBoundaryLeading_ = decision.leading;
    if (decision.softPieces.empty() && decision.hardPieces.empty() && decision.leading.empty())
        return;
    if (onBoundaryDecision)
        report(onBoundaryDecision,
               {BoundaryObservation::Phase::partial, now_(), inputText, decision});
}

void CaptionCore::emitCorrectionObservation(const std::string& finalText) {
    if (!onCorrection)
        return;
    Sentences parts = tracker_.prevDisplayLeading;
    parts.push_back(tracker_.prevTail);
    const std::string joined = Text::joined(parts, " ");
    const std::string_view shown = Text::trimmed(joined);
    if (shown.empty())
        return;
    const auto counts = CorrectionDiff::wordCounts(shown, finalText);
    if (counts.dropped == 0 && counts.added == 0)
        return;
    report(onCorrection, {
                             .t = now_(),
                             .shownText = std::string(shown),
                             .finalText = finalText,
                             .droppedWords = counts.dropped,
                             .addedWords = counts.added,
                             .commonWords = counts.common,
                         });
}

} // namespace tessarune
