#pragma once

#include "Tessarune/display/LiveCaptionDisplayCache.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/ui/captions/CaptionWindow.h"
#include "tests/support/MemoryUserDefaults.h"

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tessarune {

/// The real caption window with any number of rows. As in a session, the rows pass through the
/// cache, the frame and the view models to the screen.
class StagedWindow {
  public:
    StagedWindow(QtHost& host, std::size_t rows);

    /// Adds a word to the open sentence.
    void speak();
    /// Commits the whole sentence with its translation, and begins another one.
    void settle();
    /// Publishes the rows and the open sentence. Returns the seconds until the window shows them.
    double show();
    /// Makes a change. Returns the seconds until the window has drawn the next frame, at most 5.
    double present(const std::function<void()>& change);
    /// The list of captions.
    QQuickItem* list();
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
    Published<std::string> noFile_;
    Published<CaptionNotice> noNotice_;
    Published<bool> reducesMotion_{false};
    CaptionWindow window_;
    std::size_t words_ = 0;
};

} // namespace tessarune
