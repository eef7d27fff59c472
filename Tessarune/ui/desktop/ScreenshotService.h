#pragma once

#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"
#include "Tessarune/session/SessionView.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/NotificationCenter.h"
#include "TessaruneCore/observation/Observations.h"

#include <QImage>
#include <filesystem>
#include <functional>
#include <memory>

namespace tessarune {

/// Saves pictures of the caption window to the folder "screenshots" of a session's diagnostics run,
/// if the user wants that and the run contains the spoken text anyway. A picture equal to the
/// previous one is skipped; one that cannot be written is lost.
///
/// Main queue; pictures are compressed and written on a separate queue. All references must outlive
/// it.
class ScreenshotService {
  public:
    struct Environment {
        Host& host;
        FileSystem& files;
        AppSettings& settings;
        NotificationCenter& notifications;
        const SessionView& session;
        std::function<bool()> keepsTexts; ///< whether the open run contains the spoken text
        std::function<QImage()> picture;  ///< of the window now; null while it is not shown
    };
    explicit ScreenshotService(Environment environment);
    ~ScreenshotService() { timer_.cancel(); }
    ScreenshotService(const ScreenshotService&) = delete;

  private:
    bool isWanted() const;
    void arm();
    void take();

    const Environment environment_;
    const std::shared_ptr<SerialQueue> queue_;
    std::filesystem::path run_; ///< the run that was announced last
    QImage last_;
    DelayedCall timer_;
    Observations observations_;
    NotificationCenter::Observation runs_;
};

} // namespace tessarune
