#include "Tessarune/display/SubtitleChromeState.h"

namespace tessarune {

void SubtitleChromeState::setBodyHovering(bool hovering) {
    bodyHovering_ = hovering;
    pointerMoved();
}

void SubtitleChromeState::setChromeHovering(bool hovering) {
    chromeHovering_ = hovering;
    pointerMoved();
}

void SubtitleChromeState::presentForAWhile() {
    present();
    scheduleHide(lookDelay);
}

void SubtitleChromeState::menuDidBeginTracking() {
    menuTracking_ = true;
    present();
}

void SubtitleChromeState::menuDidEndTracking() {
    menuTracking_ = false;
    if (!isPointerInside())
        scheduleHide(hideDelay);
}

void SubtitleChromeState::pointerMoved() {
    if (isPointerInside())
        present();
    else
        scheduleHide(hideDelay);
}

void SubtitleChromeState::present() {
    ++hideToken_;
    if (!*isPresented)
        isPresented = true;
}

void SubtitleChromeState::scheduleHide(double delay) {
    pendingHide_.cancel();
    pendingHide_ = host_.after(delay, [this, token = ++hideToken_] {
        if (token == hideToken_ && !menuTracking_ && !isPointerInside() && *isPresented)
            isPresented = false;
    });
}

} // namespace tessarune
