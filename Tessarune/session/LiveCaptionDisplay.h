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

/// Makes the frame of a session from its captions, its texts and the settings, and reports each
/// refresh to the diagnostics. The cost of a refresh does not grow with the session, unless the
/// refresh is forced to rebuild all rows.
///
/// Main queue; the references outlive it.
class LiveCaptionDisplay {
  public:
    /// Without `notifications`, only observers of the frame are notified.
    LiveCaptionDisplay(Host& host, AppSettings& settings, SessionDiagnostics& diagnostics,
                       const NotificationCenter* notifications);

    LiveCaptionDisplayStore& store() { return store_; }
    /// Publishes the current state of `view` if it differs from the last frame.
    void refresh(const std::string& reason, const SessionView& view,
                 const LiveCaptionDisplayTranslationPatch* patch);
    /// The cost of the refreshes since the last reset.
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
    std::size_t translatedRows_ = 0; // the number of rows before the first untranslated one
    double buildSeconds_ = 0;
    double buildMaxMS_ = 0;
    double sourceSeconds_ = 0;
    double translationSeconds_ = 0;
};

} // namespace tessarune
