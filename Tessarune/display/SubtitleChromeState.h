#pragma once

#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"

#include <cstdint>

namespace tessarune {

/// Decides whether the caption window shows its toolbar (the chrome). The toolbar is shown while
/// the pointer is over it or over the rest of the window (the body), while one of the window's
/// buttons has the keyboard focus, and while a menu is open. It hides a moment after all of these
/// have ended. `presentForAWhile` shows it for some seconds even if the pointer is elsewhere.
///
/// Main queue; the host must outlive it.
class SubtitleChromeState {
  public:
    static constexpr double hideDelay = 0.16; ///< seconds
    static constexpr double lookDelay = 3;    ///< seconds; enough to see the buttons

    explicit SubtitleChromeState(Host& host) : host_(host) {}
    ~SubtitleChromeState() { pendingHide_.cancel(); }
    SubtitleChromeState(const SubtitleChromeState&) = delete;
    SubtitleChromeState& operator=(const SubtitleChromeState&) = delete;

    /// Assigned only by this class.
    Published<bool> isPresented{true};

    void setBodyHovering(bool hovering);
    /// `hovering`: the pointer is over the toolbar, or one of the window's buttons has the keyboard
    /// focus.
    void setChromeHovering(bool hovering);
    void presentForAWhile();
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
