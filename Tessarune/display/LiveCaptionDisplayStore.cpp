#include "Tessarune/display/LiveCaptionDisplayStore.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

LiveCaptionDisplayStore::LiveCaptionDisplayStore(std::function<double()> now,
                                                 const NotificationCenter* notifications)
    : frame(LiveCaptionDisplayFrame::empty()),
      now_(std::move(now)),
      notifications_(notifications) {}

LiveCaptionDisplayUpdateResult LiveCaptionDisplayStore::update(LiveCaptionDisplayFrame newFrame) {
    ++perf.updateRequests;
    const double before = now_();
    const bool isChanged = !(newFrame == *frame);
    const double seconds = now_() - before;
    perf.frameCompareSeconds += seconds;
    perf.frameCompareMaxMS = std::max(perf.frameCompareMaxMS, seconds * 1000);
    if (isChanged) {
        frame = std::move(newFrame);
        ++perf.publishedFrames;
        if (notifications_)
            notifications_->post(liveCaptionFramePublished);
    } else {
        ++perf.skippedFramePublishes;
    }
    return {perf.updateRequests, perf.publishedFrames, seconds * 1000, isChanged};
}

bool shouldRecordDisplayDiagnostics(std::string_view reason, double publishedFrameIndex,
                                    bool isPublished, AppleAnalyzerDiagnosticsMode mode) {
    constexpr double firstFrames = 4;
    constexpr double oneInFrames = 12;
    if (mode == AppleAnalyzerDiagnosticsMode::fullRaw)
        return true;
    if (reason != "asr.partial" && reason != "core.activity")
        return true;
    return isPublished &&
           (publishedFrameIndex < firstFrames || std::fmod(publishedFrameIndex, oneInFrames) == 0);
}

} // namespace tessarune
