#pragma once

#include "Tessarune/display/CaptionListView.h"
#include "TessaruneCore/diagnostics/LogFields.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// What the rest of the caption stage reads of the list: whether the user is reading earlier
/// captions.
struct CaptionFollowState {
    Published<bool> isReviewing{false};
};

/// Keeps a caption list at its newest line while the user follows, stops following as soon as the
/// user scrolls back, and returns after the user has not scrolled for a while.
///
/// While pinned, the list follows the newest line. While the user reviews earlier captions, the
/// list does not move, and a timer runs. Only scrolling by the user ends the pinned state; new rows
/// never do. In addition, the driver detects a list that stopped drawing although frames keep
/// coming, and redraws it.
///
/// Main queue. The view calls the `user…` operations as the user scrolls, `update` when its content
/// has changed, and `frameHeartbeat` for each published frame. Host, view and state must outlive
/// the driver.
class CaptionFollowDriver {
  public:
    // In points
    static constexpr double reviewEnterThreshold = 64;
    static constexpr double followResumeThreshold = 12;
    static constexpr double meaningfulScrollThreshold = 1.5;

    /// Receives each event; `name` is without the log's prefix. A log that leaves out routine
    /// events still gets the important ones.
    using Recorder =
        std::function<void(const std::string& name, const LogFields& fields, bool important)>;

    CaptionFollowDriver(Host& host, CaptionListView& view, CaptionFollowState& follow,
                        Recorder recorder);
    ~CaptionFollowDriver();
    CaptionFollowDriver(const CaptionFollowDriver&) = delete;
    CaptionFollowDriver& operator=(const CaptionFollowDriver&) = delete;

    bool isPinned() const { return isPinned_; }

    // The view

    /// A list has appeared.
    void attached();
    /// The content may have changed. `contentRevision` changes with every visible change;
    /// `idleReturnDelay` is in seconds, 1 to 60.
    void update(std::uint64_t contentRevision, double idleReturnDelay);
    /// The total height of the rows has changed.
    void documentFrameChanged();
    /// The window became visible again, or its screen changed.
    void becameVisible(const char* why);
    void frameHeartbeat();

    // Scrolling by the user

    void userWillStartLiveScroll();
    void userDidLiveScroll();
    void userDidEndLiveScroll();
    /// The user asks for the newest line.
    void returnToNewest();

  private:
    using Geometry = CaptionListView::Geometry;
    struct UserScrollMotion {
        double deltaY = 0;
        double legalDeltaChange = 0;
        bool meaningfulUserScroll = false;
    };

    UserScrollMotion noteUserScrollMotion(const Geometry& geometry);
    bool shouldBePinned(const Geometry& geometry, bool meaningful) const;
    void maybeRecordScrollSample();
    void setPinned(bool next, const std::string& reason, const LogFields& fields = {});

    void armIdleReturn(const std::string& reason);
    void cancelIdleReturn(const std::string& reason);
    void handleIdleReturnFired();
    void land(const std::string& reason);

    void scheduleFollowSync();
    void followSync();
    /// Returns how far the list was from its end, in points; 0 if there is no list.
    double scrollToBottom();
    void redrawViewport();

    void markContentDirty();
    void healTick();
    void noteViewChannelAlive();
    void preventiveNudgeIfNeeded();
    void checkLayoutFreeze();
    void checkStall();
    void nudgeWindow(const std::string& reason);
    bool mayLogBreadcrumb();

    void record(const std::string& name, const LogFields& fields = {}, bool important = false);
    double now() const { return host_.now(); }

    Host& host_;
    CaptionListView& view_;
    CaptionFollowState& follow_;
    const Recorder recorder_;

    bool isPinned_ = true;
    DelayedCall idleTimer_;
    std::optional<double> idleTimerArmedAt_; // set exactly while the timer runs
    DelayedCall landing_;
    double idleReturnDelay_ = 30;

    bool userLiveScrollActive_ = false;
    bool gestureHadMeaningfulScroll_ = false;
    std::optional<double> lastUserClipY_;
    std::optional<double> lastUserLegalBottomDelta_;
    std::optional<double> lastMeaningfulUserScrollAt_;
    std::optional<double> lastLiveScrollNotificationAt_;
    std::optional<double> lastScrollSampleAt_;

    DelayedCall followSync_;
    bool followSyncScheduled_ = false;

    bool contentDirtySinceRedraw_ = false;
    std::optional<std::uint64_t> lastContentRevision_;
    DelayedCall pendingHeal_;
    bool healScheduled_ = false;

    std::optional<double> lastViewSignalAt_; // the last `update` or `documentFrameChanged`
    int heartbeatsSinceViewSignal_ = 0;
    bool stallSuspected_ = false;
    std::optional<double> lastNudgeAt_;
    std::optional<double> lastPreventiveNudgeAt_;
    double lastDocFrameChangeAt_;
    int revisionsSinceDocFrameChange_ = 0;
    std::optional<double> lastBreadcrumbAt_;
};

} // namespace tessarune
