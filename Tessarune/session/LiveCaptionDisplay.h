#pragma once

#include "Tessarune/display/LiveCaptionDisplayCache.h"
#include "Tessarune/display/LiveCaptionDisplaySettingsObserver.h"
#include "Tessarune/display/LiveCaptionDisplayStore.h"
#include "Tessarune/session/SessionDiagnostics.h"
#include "Tessarune/session/SessionView.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/host/Host.h"

#include <cstddef>
#include <span>
#include <string>

namespace tessarune {

/// Makes the frame of a session out of its captions, its texts and the settings, and reports each
/// refresh to the diagnostics. What it costs does not grow with the session.
///
/// Main queue; all that it is given outlives it.
class LiveCaptionDisplay {
  public:
    /// Without `notifications` a published frame is announced to its observers alone.
    LiveCaptionDisplay(Host& host, AppSettings& settings, SessionDiagnostics& diagnostics,
                       const NotificationCenter* notifications);

    LiveCaptionDisplayStore& store() { return store_; }
    /// Publishes what `view` has to show now, if it differs from the frame of before.
    void refresh(const std::string& reason, const SessionView& view,
                 const LiveCaptionDisplayTranslationPatch* patch);
    /// What the refreshes since the last reset cost.
    PerfStats perfStats() const;
    void resetPerfCounters();

  private:
    SubtitleTranslationStatusViewState translationStatus(std::span<const CaptionSegment> committed,
                                                         const std::string& message, bool force);

    Host& host_;
    AppSettings& settings_;
    SessionDiagnostics& diagnostics_;
    LiveCaptionDisplayCache cache_;
    LiveCaptionDisplayStore store_;
    LiveCaptionDisplaySettingsObserver settingsObserver_;
    std::size_t translatedRows_ = 0; // so many rows from the first on have a translation
    double buildSeconds_ = 0;
    double buildMaxMS_ = 0;
    double sourceSeconds_ = 0;
    double translationSeconds_ = 0;
};

} // namespace tessarune
