#pragma once

#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/observation/Observations.h"

#include <QQuickWindow>
#include <optional>
#include <string>

namespace tessarune {

/// Lets a screen reader speak each settled caption, after what it is speaking now, unless the user
/// has switched that off, and every problem in any case. Main thread; environment and window
/// outlive it.
class CaptionAnnouncer {
  public:
    CaptionAnnouncer(const CaptionWindowEnvironment& environment, QQuickWindow& window);
    CaptionAnnouncer(const CaptionAnnouncer&) = delete;

  private:
    void announceNewest();
    void announce(const std::string& text);

    const CaptionWindowEnvironment& environment_;
    QQuickWindow& window_;
    std::optional<UUID> announced_; // the newest row of before
    Observations observations_;
};

} // namespace tessarune
