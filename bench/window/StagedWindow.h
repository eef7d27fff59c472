#pragma once

#include "Tessarune/display/LiveCaptionDisplayCache.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/ui/captions/CaptionWindow.h"
#include "tests/support/MemoryUserDefaults.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace tessarune {

/// The real caption window over captions of any number of rows, which go the way from the engine's
/// lists over cache, frame and view models to the screen.
class StagedWindow {
  public:
    StagedWindow(QtHost& host, std::size_t rows);

    /// A word of the open sentence.
    void speak();
    /// The open sentence settles, with its translation, and another one begins.
    void settle();
    /// Publishes the change. Gives the seconds until the window has shown it.
    double show();
    std::size_t rows() const { return committed_.size(); }

  private:
    void commit();

    testing::MemoryUserDefaults defaults_;
    AppSettings settings_{defaults_};
    std::vector<CaptionSegment> committed_;
    CaptionSegment partial_;
    std::unordered_set<UUID> cleared_;
    UUIDSource newID_ = countingUUIDSource();
    LiveCaptionDisplayCache cache_;
    LiveCaptionDisplayStore store_;
    SessionTranslation noTranslation_;
    CaptionCore core_;
    SessionView session_;
    Published<std::string> nothing_;
    Published<bool> reducesMotion_{false};
    CaptionWindow window_;
    std::size_t words_ = 0;
};

} // namespace tessarune
