#pragma once

#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/observation/Observations.h"

#include <QQuickWindow>
#include <optional>
#include <string>

namespace tessarune {

/// Announces committed captions, notices and problems to a screen reader, which speaks them after
/// its current text. A setting switches off the announcement of captions; notices and problems are
/// always announced. Main thread; environment and window must outlive it.
class CaptionAnnouncer {
  public:
    CaptionAnnouncer(const CaptionWindowEnvironment& environment, QQuickWindow& window);
    CaptionAnnouncer(const CaptionAnnouncer&) = delete;

  private:
    void announceNewest();
    void announce(const std::string& text);

    const CaptionWindowEnvironment& environment_;
    QQuickWindow& window_;
    std::optional<UUID> announced_; // the newest row so far, announced or skipped
    Observations observations_;
};

} // namespace tessarune
