#include "Tessarune/display/CaptionFollowDriver.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

namespace {

// Seconds
constexpr double scrollSampleInterval = 2.0;
constexpr double recentLiveScroll = 0.75;
constexpr double shortestIdleReturn = 0.25;
constexpr double idleReturnTolerance = 0.05;
constexpr double healDelay = 3.0;
constexpr double stallThreshold = 10.0;
constexpr double nudgeCooldown = 30.0;
constexpr double preventiveNudgeInterval = 45.0;
constexpr double layoutFreezeThreshold = 30.0;
constexpr double breadcrumbInterval = 5.0;

constexpr int stallMinHeartbeats = 5;
constexpr int layoutFreezeMinRevisions = 8;
/// In points: a list that is this close to its end is not scrolled.
constexpr double settledDistance = 0.5;

/// Whether `since` is at least `seconds` ago; true if there is no such time.
bool hasPassed(double seconds, const std::optional<double>& since, double now) {
    return !since || now - *since >= seconds;
}

const char* word(bool value) {
    return value ? "true" : "false";
}

} // namespace

CaptionFollowDriver::CaptionFollowDriver(Host& host, CaptionListView& view,
                                         CaptionFollowState& follow, Recorder recorder)
    : host_(host),
      view_(view),
      follow_(follow),
      recorder_(std::move(recorder)),
      lastDocFrameChangeAt_(host.now()) {}

CaptionFollowDriver::~CaptionFollowDriver() {
    idleTimer_.cancel();
    followSync_.cancel();
    pendingHeal_.cancel();
    landing_.cancel();
    record("teardown");
}

void CaptionFollowDriver::attached() {
    TessaruneLog::ui.notice([] { return std::string("caption follow: attached"); });
    lastDocFrameChangeAt_ = now();
    revisionsSinceDocFrameChange_ = 0;
    record("attached");
    scheduleFollowSync();
}

void CaptionFollowDriver::update(std::uint64_t contentRevision, double idleReturnDelay) {
    const double delay = std::clamp(idleReturnDelay, 1.0, 60.0);
    if (delay != idleReturnDelay_) {
        idleReturnDelay_ = delay;
        if (!isPinned_ && idleTimerArmedAt_)
            armIdleReturn("delayChanged");
    }
    noteViewChannelAlive();
    if (lastContentRevision_ != contentRevision) {
        lastContentRevision_ = contentRevision;
        if (view_.geometry()) {
            ++revisionsSinceDocFrameChange_;
            markContentDirty();
        }
    }
    scheduleFollowSync();
}

void CaptionFollowDriver::documentFrameChanged() {
    noteViewChannelAlive();
    lastDocFrameChangeAt_ = now();
    revisionsSinceDocFrameChange_ = 0;
    markContentDirty();
    scheduleFollowSync();
}

void CaptionFollowDriver::becameVisible(const char* why) {
    scheduleFollowSync();
    redrawViewport();
    TessaruneLog::ui.notice([&] { return std::string("caption follow: ") + why + " heal"; });
}

// Scrolling by the user

void CaptionFollowDriver::userWillStartLiveScroll() {
    userLiveScrollActive_ = true;
    lastLiveScrollNotificationAt_ = now();
    gestureHadMeaningfulScroll_ = false;
    if (const auto geometry = view_.geometry()) {
        lastUserClipY_ = geometry->clipY;
        lastUserLegalBottomDelta_ = geometry->legalBottomDelta();
    }
    record("scrollWillStart");
}

CaptionFollowDriver::UserScrollMotion
CaptionFollowDriver::noteUserScrollMotion(const Geometry& geometry) {
    UserScrollMotion motion;
    motion.deltaY = geometry.clipY - lastUserClipY_.value_or(geometry.clipY);
    motion.legalDeltaChange = geometry.legalBottomDelta() -
                              lastUserLegalBottomDelta_.value_or(geometry.legalBottomDelta());
    lastUserClipY_ = geometry.clipY;
    lastUserLegalBottomDelta_ = geometry.legalBottomDelta();
    motion.meaningfulUserScroll = std::abs(motion.deltaY) >= meaningfulScrollThreshold;
    if (motion.meaningfulUserScroll) {
        gestureHadMeaningfulScroll_ = true;
        lastMeaningfulUserScrollAt_ = now();
    }
    return motion;
}

/// The two thresholds differ, so that the list does not switch back and forth.
bool CaptionFollowDriver::shouldBePinned(const Geometry& geometry, bool meaningful) const {
    if (!geometry.overflowing())
        return true;
    if (!isPinned_)
        return geometry.legalBottomDelta() <= followResumeThreshold;
    return !meaningful || geometry.legalBottomDelta() < reviewEnterThreshold;
}

void CaptionFollowDriver::userDidLiveScroll() {
    lastLiveScrollNotificationAt_ = now();
    const auto geometry = view_.geometry();
    if (!geometry)
        return;
    if (!userLiveScrollActive_ && !lastUserClipY_)
        record("didLiveScrollWithoutStart");
    const UserScrollMotion motion = noteUserScrollMotion(*geometry);
    setPinned(shouldBePinned(*geometry, gestureHadMeaningfulScroll_ || motion.meaningfulUserScroll),
              "didLiveScroll",
              {{"deltaY", motion.deltaY}, {"legalDeltaChange", motion.legalDeltaChange}});
    maybeRecordScrollSample();
}

void CaptionFollowDriver::userDidEndLiveScroll() {
    lastLiveScrollNotificationAt_ = now();
    if (const auto geometry = view_.geometry()) {
        noteUserScrollMotion(*geometry);
        // A pinned list stays pinned after a touch that did not scroll, even far from its end.
        setPinned(shouldBePinned(*geometry, gestureHadMeaningfulScroll_), "didEndLiveScroll");
        if (isPinned_)
            scrollToBottom();
    }
    userLiveScrollActive_ = false;
    if (!isPinned_)
        armIdleReturn("scrollEnded");
    record("scrollDidEnd");
}

void CaptionFollowDriver::returnToNewest() {
    userLiveScrollActive_ = false;
    land("userReturn");
}

void CaptionFollowDriver::maybeRecordScrollSample() {
    if (!hasPassed(scrollSampleInterval, lastScrollSampleAt_, now()))
        return;
    lastScrollSampleAt_ = now();
    record("scrollSample");
}

void CaptionFollowDriver::setPinned(bool next, const std::string& reason, const LogFields& fields) {
    if (isPinned_ == next)
        return;
    isPinned_ = next;
    follow_.isReviewing = !next;
    if (next)
        cancelIdleReturn("pinned." + reason);
    LogFields all{{"nextPinned", next},
                  {"reason", reason},
                  {"reviewEnterThreshold", reviewEnterThreshold},
                  {"followResumeThreshold", followResumeThreshold}};
    record("pinnedChanged", all.add(fields), true);
    if (!next)
        armIdleReturn("enteredReview." + reason);
    TessaruneLog::ui.notice([&] { return std::string("caption follow: pinned=") + word(next); });
}

// The return to the newest line

void CaptionFollowDriver::armIdleReturn(const std::string& reason) {
    if (isPinned_)
        return;
    const double quietFor = now() - lastMeaningfulUserScrollAt_.value_or(now());
    const double fireIn = std::max(idleReturnDelay_ - quietFor, shortestIdleReturn);
    cancelIdleReturn("rearm." + reason);
    idleTimer_ = host_.after(fireIn, [this] { handleIdleReturnFired(); });
    idleTimerArmedAt_ = now();
    record("idleReturnArmed", {{"reason", reason},
                               {"delaySeconds", idleReturnDelay_},
                               {"fireInSeconds", fireIn},
                               {"quietForSeconds", quietFor},
                               {"userLiveScrollActive", userLiveScrollActive_}});
}

void CaptionFollowDriver::cancelIdleReturn(const std::string& reason) {
    if (!idleTimerArmedAt_)
        return;
    idleTimer_.cancel();
    const double armedFor = now() - *std::exchange(idleTimerArmedAt_, std::nullopt);
    record("idleReturnCancelled",
           {{"reason", reason},
            {"armedForSeconds", armedFor},
            {"userLiveScrollActive", userLiveScrollActive_}},
           reason.starts_with("pinned"));
}

void CaptionFollowDriver::handleIdleReturnFired() {
    idleTimerArmedAt_.reset();
    if (isPinned_ || !view_.geometry())
        return;
    const auto ageOf = [this](const std::optional<double>& time) {
        return time ? std::max(now() - *time, 0.0) : idleReturnDelay_;
    };
    const double quietFor = ageOf(lastMeaningfulUserScrollAt_);
    const double recentLiveScrollSeconds =
        lastLiveScrollNotificationAt_ ? ageOf(lastLiveScrollNotificationAt_) : recentLiveScroll;
    const bool liveScrollIsRecent = recentLiveScrollSeconds < recentLiveScroll;
    record("idleReturnFired", {{"quietForSeconds", quietFor},
                               {"recentLiveScrollSeconds", recentLiveScrollSeconds},
                               {"liveScrollIsRecent", liveScrollIsRecent},
                               {"delaySeconds", idleReturnDelay_},
                               {"userLiveScrollActive", userLiveScrollActive_}});
    if (liveScrollIsRecent || quietFor + idleReturnTolerance < idleReturnDelay_) {
        armIdleReturn(liveScrollIsRecent ? "recentScroll" : "quietTooShort");
        return;
    }
    land("idleReturn");
}

void CaptionFollowDriver::land(const std::string& reason) {
    setPinned(true, reason);
    lastUserClipY_.reset();
    lastUserLegalBottomDelta_.reset();
    gestureHadMeaningfulScroll_ = false;
    const double jump = scrollToBottom();
    landing_ = host_.after(0, [this, reason, jump] {
        record(reason + "Landed", {{"jumpDelta", jump}});
    });
}

// Following

/// A burst of changes causes one scroll.
void CaptionFollowDriver::scheduleFollowSync() {
    if (std::exchange(followSyncScheduled_, true))
        return;
    followSync_ = host_.after(0, [this] { followSync(); });
}

void CaptionFollowDriver::followSync() {
    followSyncScheduled_ = false;
    const auto geometry = view_.geometry();
    // No list is on the screen, or all its rows fit: there is nothing to review.
    if (!(geometry && geometry->overflowing()) && !userLiveScrollActive_)
        setPinned(true, "contentFits");
    if (!isPinned_ || !geometry)
        return;
    const double jump = scrollToBottom();
    if (jump <= geometry->clipHeight)
        return;
    redrawViewport();
    record("largeJumpHeal", {{"jumpDelta", jump}});
    TessaruneLog::ui.notice(
        [&] { return "caption follow: large-jump heal (" + Text::fixed(jump, 1) + ")"; });
}

double CaptionFollowDriver::scrollToBottom() {
    const auto geometry = view_.geometry();
    if (!geometry)
        return 0;
    const double distance = std::abs(geometry->legalBottomDelta());
    if (distance > settledDistance) {
        view_.scrollToEnd();
        if (!geometry->overflowing()) {
            TessaruneLog::ui.notice([&] {
                return "caption follow: re-homed viewport to legal rest (" +
                       Text::fixed(distance, 1) + ")";
            });
        }
    }
    return distance;
}

void CaptionFollowDriver::redrawViewport() {
    view_.redraw();
    contentDirtySinceRedraw_ = false;
}

// Heal paths

void CaptionFollowDriver::markContentDirty() {
    contentDirtySinceRedraw_ = true;
    if (std::exchange(healScheduled_, true))
        return;
    pendingHeal_ = host_.after(healDelay, [this] { healTick(); });
}

void CaptionFollowDriver::healTick() {
    healScheduled_ = false;
    if (!contentDirtySinceRedraw_ || !isPinned_)
        return;
    scrollToBottom();
    redrawViewport();
}

void CaptionFollowDriver::noteViewChannelAlive() {
    if (std::exchange(stallSuspected_, false)) {
        TessaruneLog::ui.notice([&] {
            return "caption follow: view channel resumed after " +
                   Text::fixed(now() - lastViewSignalAt_.value_or(now()), 1) + "s (" +
                   std::to_string(heartbeatsSinceViewSignal_) + " heartbeats)";
        });
    }
    lastViewSignalAt_ = now();
    heartbeatsSinceViewSignal_ = 0;
}

/// A published frame proves that there is something new to draw; the view's own signals prove that
/// the view noticed it. A list that is not on the screen has nothing to draw.
void CaptionFollowDriver::frameHeartbeat() {
    if (!view_.geometry())
        return;
    markContentDirty();
    scheduleFollowSync();
    ++heartbeatsSinceViewSignal_;
    preventiveNudgeIfNeeded();
    checkLayoutFreeze();
    checkStall();
}

void CaptionFollowDriver::preventiveNudgeIfNeeded() {
    if (!hasPassed(preventiveNudgeInterval, lastPreventiveNudgeAt_, now()) || view_.isFullScreen())
        return;
    lastPreventiveNudgeAt_ = now();
    nudgeWindow("preventive");
}

void CaptionFollowDriver::checkLayoutFreeze() {
    const double unchangedFor = now() - lastDocFrameChangeAt_;
    if (!isPinned_ || revisionsSinceDocFrameChange_ < layoutFreezeMinRevisions ||
        unchangedFor < layoutFreezeThreshold)
        return;
    if (mayLogBreadcrumb()) {
        TessaruneLog::ui.notice([&] {
            return "caption follow: LAYOUT-FREEZE suspected — doc frame static " +
                   Text::fixed(unchangedFor, 0) + "s across " +
                   std::to_string(revisionsSinceDocFrameChange_) + " revisions";
        });
    }
    if (hasPassed(nudgeCooldown, lastNudgeAt_, now()))
        nudgeWindow("layout-freeze");
}

void CaptionFollowDriver::checkStall() {
    if (heartbeatsSinceViewSignal_ < stallMinHeartbeats ||
        !hasPassed(stallThreshold, lastViewSignalAt_, now()))
        return;
    stallSuspected_ = true;
    if (mayLogBreadcrumb()) {
        TessaruneLog::ui.notice([&] {
            const Geometry geometry = view_.geometry().value_or(Geometry());
            return "caption follow: STALL suspected — view silent " +
                   Text::fixed(now() - lastViewSignalAt_.value_or(now()), 0) + "s, " +
                   std::to_string(heartbeatsSinceViewSignal_) + " heartbeats, document " +
                   Text::fixed(geometry.documentHeight, 0) + ", clipY " +
                   Text::fixed(geometry.clipY, 0) + ", rows " + std::to_string(geometry.rows) +
                   ", pinned=" + word(isPinned_);
        });
    }
    if (hasPassed(nudgeCooldown, lastNudgeAt_, now()))
        nudgeWindow("stall");
}

void CaptionFollowDriver::nudgeWindow(const std::string& reason) {
    if (reason != "preventive")
        lastNudgeAt_ = now();
    TessaruneLog::ui.notice([&] { return "caption follow: window nudge heal [" + reason + "]"; });
    view_.nudgeWindow();
}

bool CaptionFollowDriver::mayLogBreadcrumb() {
    if (!hasPassed(breadcrumbInterval, lastBreadcrumbAt_, now()))
        return false;
    lastBreadcrumbAt_ = now();
    return true;
}

void CaptionFollowDriver::record(const std::string& name, const LogFields& fields, bool important) {
    if (!recorder_)
        return;
    LogFields all = fields;
    all.add("isPinned", isPinned_).add("isReviewing", *follow_.isReviewing);
    if (const auto geometry = view_.geometry()) {
        all.add("overflowing", geometry->overflowing())
            .add("clipY", geometry->clipY)
            .add("clipHeight", geometry->clipHeight)
            .add("clipMaxY", geometry->clipMaxY())
            .add("documentHeight", geometry->documentHeight)
            .add("legalBottomY", geometry->legalBottomY)
            .add("legalBottomDelta", geometry->legalBottomDelta())
            .add("legacyDistanceFromBottom", geometry->documentHeight - geometry->clipMaxY())
            .add("rows", std::int64_t{geometry->rows});
    }
    recorder_(name, all, important);
}

} // namespace tessarune
