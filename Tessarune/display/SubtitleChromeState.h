#pragma once

#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"

#include <cstdint>

namespace tessarune {

/// Whether the caption window shows its toolbar (the chrome): while the pointer is in the toolbar
/// or in the rest of the window (the body), and while a menu of the toolbar is open. The toolbar
/// hides a moment after the pointer has left.
///
/// Main queue; the host must outlive it.
class SubtitleChromeState {
  public:
    static constexpr double hideDelay = 0.16; ///< seconds

    explicit SubtitleChromeState(Host& host) : host_(host) {}
    ~SubtitleChromeState() { pendingHide_.cancel(); }
    SubtitleChromeState(const SubtitleChromeState&) = delete;
    SubtitleChromeState& operator=(const SubtitleChromeState&) = delete;

    /// Assigned only by this class.
    Published<bool> isPresented{true};

    void setBodyHovering(bool hovering);
    void setChromeHovering(bool hovering);
    void menuDidBeginTracking();
    void menuDidEndTracking();

    bool isPointerInside() const { return bodyHovering_ || chromeHovering_; }

  private:
    void pointerMoved();
    void present();
    void scheduleHide(double delay);

    Host& host_;
    bool bodyHovering_ = false;
    bool chromeHovering_ = false;
    bool menuTracking_ = false;
    std::int64_t hideToken_ = 0; // a pending hide with an older token does nothing
    DelayedCall pendingHide_;
};

} // namespace tessarune
