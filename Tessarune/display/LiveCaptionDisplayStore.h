#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"
#include "Tessarune/shell/SettingTypes.h"
#include "TessaruneCore/observation/NotificationCenter.h"
#include "TessaruneCore/observation/Published.h"

#include <functional>
#include <string_view>

namespace tessarune {

/// The notification that is posted after each published frame. It has no object.
inline constexpr std::string_view liveCaptionFramePublished = "TessaruneLiveCaptionFramePublished";

/// The outcome of publishing a frame.
struct LiveCaptionDisplayUpdateResult {
    double updateRequests = 0;  ///< running total, including this request
    double publishedFrames = 0; ///< likewise
    double compareMS = 0;
    bool isPublished = false;
};

/// Holds the frame that views draw. A frame that is equal to the published one is dropped, so that
/// views are not notified without a change.
///
/// Main queue. The session owns it for as long as the program runs; views observe `frame`, and read
/// elsewhere only what a frame leaves out.
class LiveCaptionDisplayStore {
  public:
    /// Set to zero by `resetPerfCounters`. The caption window increments the `captionStage…`
    /// counters when it updates its rows. The `history…` counters stay 0: nothing reads them, so
    /// the history window does not count the live rows that it shows.
    struct PerfCounters {
        double updateRequests = 0;
        double publishedFrames = 0;
        double skippedFramePublishes = 0;
        double frameCompareSeconds = 0;
        double frameCompareMaxMS = 0;
        double historyLiveRenders = 0;
        double historyLiveSourceRenders = 0;
        double historyLiveBilingualRenders = 0;
        double historyLiveLatestRowCount = 0;
        double historyLiveLatestMode = 0;
        double historySidebarLiveRowRenders = 0;
        double historySidebarLiveActiveRowRenders = 0;
        double captionStageRenders = 0;
        double captionStageSourceOnlyRenders = 0;
        double captionStageStandardRenders = 0;
        double captionStageLyricsRenders = 0;
        double captionStageBilingualCompareRenders = 0;
    };

    /// `now` returns the time in seconds; the store measures with it how long a comparison takes.
    /// `notifications` must outlive the store; if it is null, nothing is posted.
    explicit LiveCaptionDisplayStore(std::function<double()> now,
                                     const NotificationCenter* notifications = nullptr);
    LiveCaptionDisplayStore(const LiveCaptionDisplayStore&) = delete;

    /// Publishes the frame if it differs from the published one.
    LiveCaptionDisplayUpdateResult update(LiveCaptionDisplayFrame newFrame);
    void resetPerfCounters() { perf = PerfCounters(); }

    /// Assigned only by `update`.
    Published<LiveCaptionDisplayFrame> frame;
    /// Mutable because views have a const reference to the store, and count what they draw.
    mutable PerfCounters perf;

  private:
    const std::function<double()> now_;
    const NotificationCenter* const notifications_;
};

/// Whether a diagnostics run records this refresh: frequent refreshes are sampled, except in the
/// mode `fullRaw`. `publishedFrameIndex` counts from 0.
bool shouldRecordDisplayDiagnostics(std::string_view reason, double publishedFrameIndex,
                                    bool isPublished, AppleAnalyzerDiagnosticsMode mode);

} // namespace tessarune
